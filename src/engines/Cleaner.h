// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Dictated text made presentable by a language model.
namespace parlivo::Cleaner {

/// The text to type for a raw transcription: what the built-in engine or else a local Ollama makes of it, or
/// `raw` itself when cleanup is off, the text is short, no engine answers, or the answer looks unlike the
/// text. Never fails. Blocks as long as the engines take, so pipeline thread only.
QString clean(const QString& raw);

}  // namespace parlivo::Cleaner
