// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Speech to text through a local `whisper-server` on 127.0.0.1:8765, which is kept running between
/// dictations. A server that somebody else runs on that port is used as it is.
namespace parlivo::Transcriber {

/// Starts the server unless one answers. Never fails: what goes wrong is written to the system log. Blocks,
/// so pipeline thread only.
void ensureServer();

/// The text spoken in a WAV file of 16 kHz, mono, 16 bit. Blocks up to 30 s for the server to come up and
/// 125 s for its reply (stated times), so pipeline thread only. Throws Error WhisperNotResponding,
/// WhisperReplyInvalid, or the reason why the file cannot be read.
QString transcribe(const QString& wav);

/// Ends the server that `ensureServer` started, if any; the next use starts it again. Returns at once. Any
/// thread.
void stopServer();

}  // namespace parlivo::Transcriber
