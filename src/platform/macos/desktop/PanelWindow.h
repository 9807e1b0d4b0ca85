// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace parlivo {

/// Gives the window of a view (an NSView, as the toolkit's window id is one) what makes it a panel over all
/// others: the status level, presence on all spaces and beside full-screen windows, no activation of the
/// program, no mouse, a shadow.
void makePanelOf(quintptr view);
/// Puts that window in front without activating the program.
void orderFront(quintptr view);

}  // namespace parlivo
