// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace parlivo {

/// What an error code of PulseAudio (PA_ERR_...) means to the user, in Italian; libpulse's own texts are in
/// the language of the system. Any thread.
QString pulseReason(int code);

}  // namespace parlivo
