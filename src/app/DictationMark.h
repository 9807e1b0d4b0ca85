// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QString>

namespace parlivo {

/// Stands for the dictation that is under way: an empty file among the temporary ones, locked while the
/// program lives. It stays behind when the program ends without its shut-down, be it killed or by a
/// compositor that is gone, so that the next start can tell the user. Nothing of what was said is in it. Main
/// thread, one at a time.
class DictationMark {
  public:
    /// Without a file where the disk takes none.
    DictationMark();
    /// Deletes the file: the dictation has come to its end, or the user has ended the program.
    ~DictationMark();
    DictationMark(const DictationMark&) = delete;
    DictationMark& operator=(const DictationMark&) = delete;

  private:
    const QString path_;
    UniqueFd file_;
};

/// Deletes the marks that no living program holds. Whether there was one. Any thread, also beside a
/// DictationMark of this process.
bool takeLeftMarks();

}  // namespace parlivo
