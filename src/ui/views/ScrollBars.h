// SPDX-License-Identifier: MIT
#pragma once

class QAbstractScrollArea;

namespace parlivo {

/// Gives an area a slim vertical scroll bar without arrow buttons, whose handle can be told apart from what
/// lies behind it, on light desktops and on dark ones. Where the desktop shows scroll bars only while one
/// scrolls, its own stay.
void useSlimScrollBar(QAbstractScrollArea& area);

}  // namespace parlivo
