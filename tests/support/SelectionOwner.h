// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/x11/XcbHandles.h"

#include <QByteArray>

#include <atomic>
#include <deque>
#include <thread>

namespace parlivo::desktop {

/// Another program that owns the clipboard or the primary selection, and behaves as well or as badly as a
/// test asks. It answers on its own thread.
class SelectionOwner {
  public:
    enum class Manner {
        Text,         ///< gives its text as UTF-8
        Latin1,       ///< an old program: gives its text as Latin-1 only
        Incremental,  ///< gives its text in pieces
        Image,        ///< has no text
        SameForAll,   ///< has no text, and answers every target with its picture
        Silent,       ///< never answers
        Breaking,     ///< begins to give its text in pieces and stops after the first
    };

    /// Takes the selection and returns when it owns it.
    SelectionOwner(PasteboardPlace place, Manner manner, QByteArray contents = {});
    ~SelectionOwner();
    SelectionOwner(const SelectionOwner&) = delete;
    SelectionOwner& operator=(const SelectionOwner&) = delete;

    /// Whether no other program has taken it since.
    bool ownsSelection() const;

  private:
    /// What is still to be sent, part by part.
    struct Transfer {
        xcb_window_t requestor = XCB_NONE;
        xcb_atom_t property = XCB_ATOM_NONE;
        xcb_atom_t type = XCB_ATOM_NONE;
        std::deque<QByteArray> pieces;
    };

    void serve();
    void answer(const xcb_selection_request_event_t& request);
    bool give(const xcb_selection_request_event_t& request, xcb_atom_t property);
    void begin(const xcb_selection_request_event_t& request, xcb_atom_t property);
    void giveNextPiece(const xcb_property_notify_event_t& event);
    void setProperty(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const QByteArray& bytes);
    xcb_atom_t atom(const char* name) const;

    x11::ConnectionHandle connection_;
    xcb_window_t window_;
    xcb_atom_t selection_;
    Manner manner_;
    QByteArray contents_;
    Transfer transfer_;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

}  // namespace parlivo::desktop
