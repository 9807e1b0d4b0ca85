#pragma once

#include "support/Claim.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <optional>

namespace parlivo {

/// Moves every model file ("bin", "gguf") from one folder into another under its own name. What cannot be
/// moved stays where it is, and nothing is ever overwritten.
///
/// First the new folder gets all of them while the old one keeps its own; then the caller stores the choice
/// of the new folder; then the old one's go. So the folder that is in force is complete at every moment,
/// whatever happens to the program, the disk or the power. A note among the user's data tells the next start
/// what was under way. (Only on a file system without hard links does a model that moves within it leave its
/// old place at once.)
///
/// One thread at a time, not the main one: across file systems this copies, which takes its time.
class ModelsMove {
  public:
    ModelsMove(const QString& from, const QString& to);
    /// Takes back what bring() did, unless finish() was called.
    ~ModelsMove();
    ModelsMove(const ModelsMove&) = delete;
    ModelsMove& operator=(const ModelsMove&) = delete;

    /// Puts the models into the new folder, in the order of their names. Gives up between two blocks when the
    /// program ends.
    void bring();
    /// Deletes those of the old folder that were brought. Once the new folder is the one in force.
    void finish();

    /// Ends a move that a killed program left half done: forward if its new folder is in force, else back. At
    /// start, before anybody looks for a model; takes no time without such a move.
    static void recover();

  private:
    void bringOne(const QString& name);

    const QString from_;
    const QString to_;
    QFile note_;
    std::optional<Claim> claim_;
    QStringList brought_;
    bool finished_ = false;
};

}  // namespace parlivo
