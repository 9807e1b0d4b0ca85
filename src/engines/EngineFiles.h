// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"

#include <QMap>
#include <QString>

#include <optional>

namespace parlivo {

/// Throws Error (domain "Engine") if the engine could compute nothing for want of a file. Packages carry
/// engines for any processor: beside the server and its libraries lies a library libggml-cpu-*.so for each
/// kind of processor, from which ggml takes the best one that runs here. One that is missing makes way for
/// the next best, but without any of them the engine ends when it loads its model, and its reason goes to the
/// null device. Engines that were built for one processor are one file, and pass. Any thread.
void checkEngineFiles(const QString& program);

/// Why the engine's files do not let it run: one of them is missing or was cut off, as by a full disk.
/// nullopt if none is, as far as their lengths tell. For an engine that did not come up: the system's loader
/// ends it without a word. Any thread.
std::optional<ModelCatalog::Fault> engineFault(const QString& program);

/// The file with which the engine computes on a graphics processor, an absolute path; nullopt if the package
/// that has it is not installed. Any thread.
std::optional<QString> graphicsFile(const QString& program);

/// The environment variable that lets an engine load the file. ggml looks for it nowhere by itself, so that
/// an engine which is not told comes into contact with no driver.
QMap<QString, QString> withGraphics(const QString& file);

}  // namespace parlivo
