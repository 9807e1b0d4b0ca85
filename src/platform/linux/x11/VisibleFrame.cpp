// SPDX-License-Identifier: MIT
#include "platform/linux/x11/VisibleFrame.h"

namespace parlivo {

namespace {

QRect between(int left, int top, int right, int bottom) {
    return {QPoint(left, top), QPoint(right, bottom)};
}

int whole(std::uint32_t value) {
    return static_cast<int>(value);
}

/// Takes the part of `frame` that `dock` covers at one side off it; no change if the dock lies elsewhere.
void takeLeft(QRect& frame, const QRect& dock) {
    if (dock.intersects(frame)) frame.setLeft(dock.right() + 1);
}
void takeRight(QRect& frame, const QRect& dock) {
    if (dock.intersects(frame)) frame.setRight(dock.left() - 1);
}
void takeTop(QRect& frame, const QRect& dock) {
    if (dock.intersects(frame)) frame.setTop(dock.bottom() + 1);
}
void takeBottom(QRect& frame, const QRect& dock) {
    if (dock.intersects(frame)) frame.setBottom(dock.top() - 1);
}

}  // namespace

QRect visibleFrame(const QRect& monitor, QSize wholeScreen, const std::vector<Strut>& struts) {
    QRect frame = monitor;
    const int width = wholeScreen.width();
    const int height = wholeScreen.height();
    for (const Strut& strut : struts) {
        takeLeft(frame, between(0, whole(strut.leftStart), whole(strut.left) - 1, whole(strut.leftEnd)));
        takeRight(frame, between(width - whole(strut.right), whole(strut.rightStart), width - 1,
                                 whole(strut.rightEnd)));
        takeTop(frame, between(whole(strut.topStart), 0, whole(strut.topEnd), whole(strut.top) - 1));
        takeBottom(frame, between(whole(strut.bottomStart), height - whole(strut.bottom),
                                  whole(strut.bottomEnd), height - 1));
    }
    return frame.isEmpty() ? monitor : frame;
}

}  // namespace parlivo
