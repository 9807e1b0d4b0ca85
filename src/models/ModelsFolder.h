#pragma once

#include <QString>

namespace parlivo::ModelsFolder {

/// Moves every model file ("bin", "gguf") from one folder into another under its own name, in the order of
/// their names. What cannot be moved stays where it is, and nothing is ever overwritten: at every moment each
/// model is whole in one of the two places, whatever happens to the program, the disk or the power.
///
/// Across file systems this copies, which takes its time. Any thread but the main one; gives up between two
/// blocks when the program ends.
void moveModels(const QString& from, const QString& to);

}  // namespace parlivo::ModelsFolder
