// SPDX-License-Identifier: MIT
#include "platform/linux/x11/GrabProbe.h"

#include "platform/linux/x11/XcbQueries.h"

#include <cstdint>
#include <vector>

namespace parlivo::x11 {

namespace {

constexpr std::uint8_t eventsToRoot = 0;

}  // namespace

GrabProbe::GrabProbe() {
    int screenNumber = 0;
    connection_.reset(xcb_connect(nullptr, &screenNumber));
    auto* const c = connection_.get();
    if (xcb_connection_has_error(c) != 0 || !startInputExtension(c)) return;
    root_ = screenOf(c, screenNumber)->root;
    const auto keyboards = attachedKeyboards(c);
    if (!keyboards.empty()) keyboard_ = keyboards.front();
}

GrabProbe::Question GrabProbe::ask(const KeyCombination& combination) const {
    auto* const c = connection_.get();
    const std::uint32_t modifiers = combination.modifiers;
    constexpr std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const auto onMaster = xcb_grab_key_checked(c, eventsToRoot, root_, combination.modifiers, combination.key,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    xcb_ungrab_key(c, combination.key, root_, combination.modifiers);
    const auto onKeyboard = xcb_input_xi_passive_grab_device(
        c, XCB_CURRENT_TIME, root_, XCB_NONE, combination.key, *keyboard_, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
        XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC, eventsToRoot, &events, &modifiers);
    // The answer for a keyboard that is gone is an error that nobody waits for.
    const auto back = xcb_input_xi_passive_ungrab_device_checked(c, root_, combination.key, *keyboard_, 1,
                                                                 XCB_INPUT_GRAB_TYPE_KEYCODE, &modifiers);
    xcb_discard_reply(c, back.sequence);
    return {.onMaster = onMaster, .onKeyboard = onKeyboard};
}

bool GrabProbe::wasGranted(const Question& question) const {
    auto* const c = connection_.get();
    const ErrorHandle refusal(xcb_request_check(c, question.onMaster));
    xcb_generic_error_t* failure = nullptr;
    const auto reply = owned(xcb_input_xi_passive_grab_device_reply(c, question.onKeyboard, &failure));
    const ErrorHandle error(failure);
    // The answer lists the modifiers that were refused.
    const bool onKeyboard =
        reply && xcb_input_xi_passive_grab_device_modifiers_iterator(reply.get()).rem == 0;
    return !refusal || onKeyboard;
}

bool GrabProbe::anyMayBeGrabbed(std::span<const KeyCombination> combinations) const {
    if (!keyboard_) return true;
    std::vector<Question> questions;
    for (const KeyCombination& combination : combinations) questions.push_back(ask(combination));
    bool any = false;
    // Each answer is taken, also after the first that would do.
    for (const Question& question : questions) any = wasGranted(question) || any;
    return any;
}

}  // namespace parlivo::x11
