// SPDX-License-Identifier: MIT
#pragma once

#include "settings/Settings.h"

#include <QString>

/// The instruction around a transcription that is to be cleaned up. Any thread.
namespace parlivo::Config {

/// The place in a template where the transcription goes.
inline constexpr QLatin1String textPlaceholder{"{TEXT}"};

/// The template of a cleanup level (None has that of Medium), with the user's terms written into it.
QString builtinPrompt(CleanupLevel level);

/// The user's own template from `promptFile()`. A file that is missing, blank or not UTF-8 is written anew
/// (mode 0600) with a template to start from, which is then the result; if it cannot be written, no matter.
QString loadPrompt();

}  // namespace parlivo::Config
