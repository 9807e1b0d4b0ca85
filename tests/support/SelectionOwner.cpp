// SPDX-License-Identifier: MIT
#include "support/SelectionOwner.h"

#include "support/Error.h"
#include "support/XServer.h"

#include <QString>

#include <poll.h>

#include <utility>

namespace parlivo::desktop {

using x11::owned;

namespace {

constexpr qsizetype pieceSize = qsizetype{64} * 1024;
constexpr int pollInterval = 20;  // ms

}  // namespace

SelectionOwner::SelectionOwner(PasteboardPlace place, Manner manner, QByteArray contents)
    : connection_(xcb_connect(nullptr, nullptr)),
      window_(x11::makeInvisibleWindow(connection_.get(), rootOf(connection_.get()))),
      selection_(place == PasteboardPlace::Clipboard ? atom("CLIPBOARD") : xcb_atom_t{XCB_ATOM_PRIMARY}),
      manner_(manner),
      contents_(std::move(contents)) {
    auto* const c = connection_.get();
    xcb_set_selection_owner(c, window_, selection_, XCB_CURRENT_TIME);
    if (!ownsSelection()) throw Error(QStringLiteral("desktop test"), 3, QStringLiteral("no selection"));
    thread_ = std::thread([this] { serve(); });
}

SelectionOwner::~SelectionOwner() {
    ending_ = true;
    thread_.join();
}

bool SelectionOwner::ownsSelection() const {
    auto* const c = connection_.get();
    const auto reply =
        owned(xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, selection_), nullptr));
    return reply && reply->owner == window_;
}

void SelectionOwner::serve() {
    auto* const c = connection_.get();
    while (!ending_) {
        pollfd descriptor{xcb_get_file_descriptor(c), POLLIN, 0};
        poll(&descriptor, 1, pollInterval);
        while (const auto event = owned(xcb_poll_for_event(c))) {
            switch (event->response_type & 0x7f) {
                case XCB_SELECTION_REQUEST:
                    answer(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
                    break;
                case XCB_PROPERTY_NOTIFY:
                    giveNextPiece(reinterpret_cast<const xcb_property_notify_event_t&>(*event));
                    break;
                default:
                    break;
            }
        }
    }
}

void SelectionOwner::answer(const xcb_selection_request_event_t& request) {
    if (manner_ == Manner::Silent) return;
    const xcb_atom_t property = request.property == XCB_ATOM_NONE ? request.target : request.property;
    xcb_selection_notify_event_t notice{};
    notice.response_type = XCB_SELECTION_NOTIFY;
    notice.time = request.time;
    notice.requestor = request.requestor;
    notice.selection = request.selection;
    notice.target = request.target;
    notice.property = give(request, property) ? property : xcb_atom_t{XCB_ATOM_NONE};
    xcb_send_event(connection_.get(), 0, request.requestor, 0, reinterpret_cast<const char*>(&notice));
    xcb_flush(connection_.get());
}

bool SelectionOwner::give(const xcb_selection_request_event_t& request, xcb_atom_t property) {
    const bool asksUtf8 = request.target == atom("UTF8_STRING");
    switch (manner_) {
        case Manner::Text:
            if (asksUtf8) setProperty(request.requestor, property, request.target, contents_);
            return asksUtf8;
        case Manner::Latin1:
            if (request.target != XCB_ATOM_STRING) return false;
            setProperty(request.requestor, property, request.target, contents_);
            return true;
        case Manner::Incremental:
        case Manner::Breaking:
            if (asksUtf8) begin(request, property);
            return asksUtf8;
        case Manner::Image:
            if (request.target != atom("image/png")) return false;
            setProperty(request.requestor, property, request.target, contents_);
            return true;
        case Manner::SameForAll:
            setProperty(request.requestor, property, atom("image/png"), contents_);
            return true;
        case Manner::Silent:
            break;
    }
    return false;
}

void SelectionOwner::begin(const xcb_selection_request_event_t& request, xcb_atom_t property) {
    transfer_ = {request.requestor, property, request.target, {}};
    for (qsizetype at = 0; at < contents_.size(); at += pieceSize) {
        transfer_.pieces.push_back(contents_.mid(at, pieceSize));
    }
    transfer_.pieces.emplace_back();
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.get(), request.requestor, XCB_CW_EVENT_MASK, &events);
    const auto size = static_cast<std::uint32_t>(contents_.size());
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, request.requestor, property, atom("INCR"),
                        32, 1, &size);
}

void SelectionOwner::giveNextPiece(const xcb_property_notify_event_t& event) {
    const bool ready = event.state == XCB_PROPERTY_DELETE && event.window == transfer_.requestor &&
                       event.atom == transfer_.property;
    if (!ready || transfer_.pieces.empty()) return;
    setProperty(transfer_.requestor, transfer_.property, transfer_.type, transfer_.pieces.front());
    transfer_.pieces.pop_front();
    if (manner_ == Manner::Breaking) transfer_.pieces.clear();
    xcb_flush(connection_.get());
}

void SelectionOwner::setProperty(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                                 const QByteArray& bytes) {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.constData());
}

xcb_atom_t SelectionOwner::atom(const char* name) const {
    return x11::internAtom(connection_.get(), name);
}

}  // namespace parlivo::desktop
