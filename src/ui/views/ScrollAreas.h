// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// Keeps a screen reader from crashing the program: what Qt 6.4 tells of a scroll area it looks up in a list
/// of children that shrinks with each scroll bar that goes, without regard to the list's end, and a reader
/// may still ask for a bar that has just gone. Once a QApplication exists. A second call does nothing.
void makeScrollAreasSafe();

}  // namespace parlivo
