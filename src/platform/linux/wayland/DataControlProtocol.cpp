// SPDX-License-Identifier: MIT

// What wayland-scanner generates for zwlr_data_control_v1. It is C; included here it is compiled as C++, and
// its header comes first so that the interfaces are known to the other files.
#include <wlr-data-control-client.h>
// NOLINTNEXTLINE(bugprone-suspicious-include)
#include <wlr-data-control-code.c>
