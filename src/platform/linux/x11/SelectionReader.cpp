// SPDX-License-Identifier: MIT
#include "platform/linux/x11/SelectionReader.h"

#include "platform/linux/x11/XcbQueries.h"
#include "support/Clock.h"

#include <poll.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace parlivo::x11 {

namespace {

using namespace std::chrono_literals;

/// How often the end of the program is looked for.
constexpr auto pollInterval = 50ms;

QString fromUtf8(const QByteArray& bytes) {
    return QString::fromUtf8(bytes);
}

QString fromLatin1(const QByteArray& bytes) {
    return QString::fromLatin1(bytes);
}

}  // namespace

SelectionReader::SelectionReader(ConnectionHandle connection, xcb_window_t window)
    : connection_(std::move(connection)),
      window_(window),
      incr_(internAtom(connection_.get(), "INCR")),
      textTypes_({{internAtom(connection_.get(), "UTF8_STRING"), fromUtf8},
                  {internAtom(connection_.get(), "text/plain;charset=utf-8"), fromUtf8},
                  {XCB_ATOM_STRING, fromLatin1}}) {}

std::unique_ptr<SelectionReader> SelectionReader::open() {
    int screen = 0;
    ConnectionHandle connection(xcb_connect(nullptr, &screen));
    if (xcb_connection_has_error(connection.get())) return nullptr;
    const xcb_window_t window = makeInvisibleWindow(
        connection.get(), screenOf(connection.get(), screen)->root, XCB_EVENT_MASK_PROPERTY_CHANGE);
    return std::unique_ptr<SelectionReader>(new SelectionReader(std::move(connection), window));
}

PasteboardTexts SelectionReader::read(const QList<PasteboardPlace>& places, std::chrono::milliseconds limit) {
    std::vector<Question> questions;
    for (const PasteboardPlace place : places) questions.push_back(question(place));
    for (const Question& question : questions) ask(question);
    const auto isOpen = [](const Question& question) { return question.state == Question::State::Open; };
    const Clock::Deadline deadline(limit);
    while (std::ranges::any_of(questions, isOpen) && !deadline.passed() && !Clock::interrupted()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline.end() - Clock::now());
        if (!waitForData(std::min<std::chrono::milliseconds>(left, pollInterval))) break;
        while (const auto event = owned(xcb_poll_for_event(connection_.get()))) handle(*event, questions);
    }
    PasteboardTexts texts;
    for (const Question& question : questions) {
        if (question.state != Question::State::Answered) continue;
        texts.insert(question.place, question.decode(question.bytes));
    }
    return texts;
}

SelectionReader::Question SelectionReader::question(PasteboardPlace place) {
    Question question{place, XCB_ATOM_PRIMARY, internAtom(connection_.get(), "PARLIVO_PRIMARY"), 0,
                      {},    nullptr};
    if (place == PasteboardPlace::Clipboard) {
        question.selection = internAtom(connection_.get(), "CLIPBOARD");
        question.property = internAtom(connection_.get(), "PARLIVO_CLIPBOARD");
    }
    return question;
}

void SelectionReader::ask(const Question& question) {
    xcb_convert_selection(connection_.get(), window_, question.selection, textTypes_.at(question.target).atom,
                          question.property, XCB_CURRENT_TIME);
    xcb_flush(connection_.get());
}

void SelectionReader::handle(const xcb_generic_event_t& event, std::vector<Question>& questions) {
    // The highest bit tells that a client sent the event, as owners do.
    switch (event.response_type & 0x7f) {
        case XCB_SELECTION_NOTIFY:
            handleNotify(reinterpret_cast<const xcb_selection_notify_event_t&>(event), questions);
            break;
        case XCB_PROPERTY_NOTIFY:
            handleProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event), questions);
            break;
        default:
            break;
    }
}

void SelectionReader::handleNotify(const xcb_selection_notify_event_t& event,
                                   std::vector<Question>& questions) {
    const auto asked = std::ranges::find(questions, event.selection, &Question::selection);
    if (asked == questions.end() || asked->state != Question::State::Open) return;
    if (event.property == XCB_ATOM_NONE) {
        askNextTarget(*asked);
    } else {
        takeFirstPart(*asked);
    }
}

void SelectionReader::handleProperty(const xcb_property_notify_event_t& event,
                                     std::vector<Question>& questions) {
    const auto asked = std::ranges::find(questions, event.atom, &Question::property);
    if (event.state != XCB_PROPERTY_NEW_VALUE || asked == questions.end()) return;
    if (asked->incremental && asked->state == Question::State::Open) takePiece(*asked);
}

void SelectionReader::askNextTarget(Question& question) {
    if (question.target + 1 == textTypes_.size()) {
        question.state = Question::State::Refused;
        return;
    }
    ++question.target;
    ask(question);
}

void SelectionReader::takeFirstPart(Question& question) {
    const auto part = takeProperty(question.property);
    if (!part || part->format == 0) {
        question.state = Question::State::Refused;
    } else if (part->type == incr_) {
        // Taking the announcement away asks for the first piece.
        question.incremental = true;
    } else if (!takeType(question, part->type)) {
        askNextTarget(question);
    } else {
        question.bytes = {static_cast<const char*>(xcb_get_property_value(part.get())),
                          xcb_get_property_value_length(part.get())};
        question.state = Question::State::Answered;
    }
}

void SelectionReader::takePiece(Question& question) {
    const auto piece = takeProperty(question.property);
    const int length = piece ? xcb_get_property_value_length(piece.get()) : 0;
    // An empty piece is the end; without one before it there was no text.
    if (length == 0) {
        question.state = question.decode ? Question::State::Answered : Question::State::Refused;
        return;
    }
    if (!takeType(question, piece->type)) {
        question.state = Question::State::Refused;
        return;
    }
    question.bytes.append(static_cast<const char*>(xcb_get_property_value(piece.get())), length);
}

/// Some owners answer every target with the one type that they have, a picture's for instance.
bool SelectionReader::takeType(Question& question, xcb_atom_t type) const {
    const auto known = std::ranges::find(textTypes_, type, &TextType::atom);
    if (known == textTypes_.end()) return false;
    question.decode = known->decode;
    return true;
}

Reply<xcb_get_property_reply_t> SelectionReader::takeProperty(xcb_atom_t property) {
    constexpr auto everything = std::numeric_limits<std::uint32_t>::max() / 4;
    const auto cookie =
        xcb_get_property(connection_.get(), 1, window_, property, XCB_GET_PROPERTY_TYPE_ANY, 0, everything);
    return owned(xcb_get_property_reply(connection_.get(), cookie, nullptr));
}

bool SelectionReader::waitForData(std::chrono::milliseconds limit) {
    pollfd descriptor{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
    poll(&descriptor, 1, static_cast<int>(limit.count()));
    return xcb_connection_has_error(connection_.get()) == 0;
}

}  // namespace parlivo::x11
