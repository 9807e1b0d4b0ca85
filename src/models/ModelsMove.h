// SPDX-License-Identifier: MIT
#pragma once

#include "support/FileLock.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <optional>

namespace parlivo {

/// Moves every model file ("bin", "gguf") from one folder into another under its own name. What cannot be
/// moved stays where it is, and nothing is ever overwritten.
///
/// stage() puts them into the new folder while the old one keeps its own; then the caller stores the choice
/// of the new folder; then commit() deletes those in the old folder. So the folder that is in force is
/// complete at every moment, whatever happens to the program, the disk or the power. A journal in the support
/// folder tells the next start what was under way. (Only on a file system without hard links, a model that
/// moves within it leaves its old place at once.)
///
/// To be used by one thread at a time, not the main one: across file systems the files are copied, which may
/// take minutes.
class ModelsMove {
  public:
    ModelsMove(const QString& from, const QString& to);
    /// Rolls back what stage() did, unless commit() was called.
    ~ModelsMove();
    ModelsMove(const ModelsMove&) = delete;
    ModelsMove& operator=(const ModelsMove&) = delete;

    /// Puts the models into the new folder, in the order of their names. Stops between two blocks of 1 MiB
    /// when the program ends.
    void stage();
    /// Deletes the staged models from the old folder. To be called once the new folder is the one in force.
    void commit();

    /// Completes a move that a killed program left half done: commits it if its new folder is in force, rolls
    /// it back otherwise. At start, before any model is looked for; without such a move it only tests whether
    /// the journal exists.
    static void recover();

  private:
    void stageOne(const QString& name);

    const QString from_;
    const QString to_;
    QFile journal_;
    std::optional<FileLock> lock_;
    QStringList staged_;
    bool committed_ = false;
};

}  // namespace parlivo
