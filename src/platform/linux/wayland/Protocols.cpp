// SPDX-License-Identifier: MIT

// What wayland-scanner generates for the protocols. It is C; included here it is compiled as C++, and each
// header comes before its code so that the interfaces are known to the other files.
#include <fake-input-client.h>
#include <fractional-scale-client.h>
#include <input-method-client.h>
#include <viewporter-client.h>
#include <virtual-keyboard-client.h>
#include <wlr-data-control-client.h>
#include <wlr-layer-shell-client.h>
// NOLINTBEGIN(bugprone-suspicious-include)
#include <fake-input-code.c>
#include <fractional-scale-code.c>
#include <input-method-code.c>
#include <viewporter-code.c>
#include <virtual-keyboard-code.c>
#include <wlr-data-control-code.c>
#include <wlr-layer-shell-code.c>
// NOLINTEND(bugprone-suspicious-include)
