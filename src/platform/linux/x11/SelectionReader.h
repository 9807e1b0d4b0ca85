// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/x11/XcbHandles.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace parlivo::x11 {

/// Asks the owners of the selections for their plain text, over an X connection of its own and in the calling
/// thread: an owner that stalls blocks the caller only. Protocol: ICCCM 2.0, section 2.
class SelectionReader {
  public:
    /// Null if there is no display.
    static std::unique_ptr<SelectionReader> open();

    /// The texts of these places, all asked at once. A place whose owner has no text, or has not given all of
    /// it within `limit`, is absent. The end of the program ends the wait.
    PasteboardTexts read(const QList<PasteboardPlace>& places, std::chrono::milliseconds limit);

  private:
    using Decode = QString (*)(const QByteArray& bytes);
    /// A type of plain text, which is also the target by which an owner is asked for it.
    struct TextType {
        xcb_atom_t atom = XCB_ATOM_NONE;
        Decode decode = nullptr;
    };
    struct Question {
        PasteboardPlace place;
        xcb_atom_t selection = XCB_ATOM_NONE;
        /// Where the owner is to leave the answer.
        xcb_atom_t property = XCB_ATOM_NONE;
        std::size_t target = 0;  ///< index into `textTypes_`
        QByteArray bytes;
        Decode decode = nullptr;  ///< of the type that the owner answered with
        /// The answer comes in pieces.
        bool incremental = false;
        enum class State { Open, Answered, Refused } state = State::Open;
    };

    SelectionReader(ConnectionHandle connection, xcb_window_t window);
    Question question(PasteboardPlace place);
    void ask(const Question& question);
    void handle(const xcb_generic_event_t& event, std::vector<Question>& questions);
    void handleNotify(const xcb_selection_notify_event_t& event, std::vector<Question>& questions);
    void handleProperty(const xcb_property_notify_event_t& event, std::vector<Question>& questions);
    void askNextTarget(Question& question);
    void takeFirstPart(Question& question);
    void takePiece(Question& question);
    /// False if the type is not one of plain text.
    bool takeType(Question& question, xcb_atom_t type) const;
    Reply<xcb_get_property_reply_t> takeProperty(xcb_atom_t property);
    bool waitForData(std::chrono::milliseconds limit);

    ConnectionHandle connection_;
    xcb_window_t window_;
    xcb_atom_t incr_;
    std::vector<TextType> textTypes_;  ///< the best one first
};

}  // namespace parlivo::x11
