// SPDX-License-Identifier: MIT

/// Holds Alt+Space again and again under the window manager that runs, types a text into an application after
/// each hold, as a dictation does, and counts what goes wrong. Prints one row of a Markdown table; the exit
/// status is 0 if no hold was lost, no menu opened and every text arrived whole.
///
/// usage: hotkey_bench NAME [HOLDS]     (default 200)

#include "input/Injector.h"
#include "platform/linux/x11/X11HotKeyService.h"
#include "platform/linux/x11/XcbQueries.h"
#include "support/Keyboard.h"
#include "support/Receiver.h"
#include "support/SerialQueue.h"
#include "support/TypingPlatform.h"
#include "support/Waiting.h"

#include <QApplication>

#include <array>
#include <atomic>
#include <cstdio>
#include <exception>
#include <memory>

namespace parlivo::bench {
namespace {

using namespace std::chrono_literals;
using namespace desktop;

constexpr auto lostAfter = 2s;
/// Long enough for a menu to open.
constexpr auto holdTime = 60ms;

/// Every second one asks for characters that the keyboard has not, so that the map changes between the holds.
const std::array texts{
    QStringLiteral("Prima frase. "),       QStringLiteral("Perché “no”… "),
    QStringLiteral("ancora una "),         QStringLiteral("ÀÈÌÒÙ «così» "),
    QStringLiteral("e poi un'altra "),     QStringLiteral("12,50 € – già "),
    QStringLiteral("ĄĆĘŁŃÓŚŹŻąćęłńóśźż "), QStringLiteral("fine "),
    QStringLiteral("αβγδεζηθικλμνξοπρ "),  QStringLiteral("абвгдежзийклмнопрстуфхц "),
};

/// Counts windows that appear without the window manager's doing: menus.
class MenuWatch {
  public:
    MenuWatch() : connection_(xcb_connect(nullptr, nullptr)) {
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_.get(), root(), XCB_CW_EVENT_MASK, &events);
        xcb_flush(connection_.get());
    }

    int seen() {
        x11::owned(
            xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
        while (const x11::EventHandle event{xcb_poll_for_event(connection_.get())}) {
            if (event->response_type != XCB_MAP_NOTIFY) continue;
            if (reinterpret_cast<const xcb_map_notify_event_t&>(*event).override_redirect != 0) ++seen_;
        }
        return seen_;
    }

    /// Whether another client holds Alt+Space by a core grab.
    bool isHeld() const {
        auto* const c = connection_.get();
        const auto cookie = xcb_grab_key_checked(c, 0, root(), XCB_MOD_MASK_1, Key::space,
                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const x11::ErrorHandle error(xcb_request_check(c, cookie));
        xcb_ungrab_key(c, Key::space, root(), XCB_MOD_MASK_1);
        xcb_flush(c);
        return error != nullptr;
    }

  private:
    xcb_window_t root() const { return x11::screenOf(connection_.get(), 0)->root; }

    x11::ConnectionHandle connection_;
    int seen_ = 0;
};

struct Counts {
    int lostPresses = 0;
    int lostReleases = 0;
    int menus = 0;
    bool wholeText = false;
};

class Holds {
  public:
    Counts run(int holds) {
        auto result =
            service_.registerHotKey(VirtualKey::space, HotKeyModifier::option, {.signature = 1, .id = 1});
        if (!std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result))
            return {.lostPresses = holds, .lostReleases = holds};
        QString expected;
        // Some window managers draw frames with windows of this kind: KWin that of the receiver.
        const int before = menus_.seen();
        for (int i = 0; i < holds; ++i) {
            hold(i);
            const QString& text = texts.at(static_cast<std::size_t>(i) % texts.size());
            type(text);
            expected += text;
        }
        counts_.menus = menus_.seen() - before;
        counts_.wholeText = receiver_.waitForText(expected, 10s);
        return counts_;
    }
    bool isHeldByOther() const { return menus_.isHeld(); }

  private:
    void hold(int number) {
        const int before = menus_.seen();
        presses_ = 0;
        releases_ = 0;
        keyboard_.press(Key::leftAlt);
        keyboard_.press(Key::space);
        if (!waitFor([this] { return presses_ == 1; }, lostAfter)) ++counts_.lostPresses;
        letPass(holdTime);
        // Commonly the modifier comes up first, but not always.
        const bool modifierFirst = number % 2 == 0;
        keyboard_.release(modifierFirst ? Key::leftAlt : Key::space);
        keyboard_.release(modifierFirst ? Key::space : Key::leftAlt);
        if (!waitFor([this] { return releases_ == 1; }, lostAfter)) ++counts_.lostReleases;
        if (menus_.seen() > before) keyboard_.tap(escape);
    }

    void type(const QString& text) {
        std::atomic<bool> typed = false;
        pipeline_.async([&] {
            Injector::typeText(text);
            typed = true;
        });
        waitFor([&] { return typed.load(); });
    }

    static constexpr xcb_keycode_t escape = 9;

    TypingProgram program_;
    MenuWatch menus_;
    Receiver receiver_{Receiver::Kind::Gtk3};
    Keyboard keyboard_;
    X11HotKeyService service_;
    int presses_ = 0;
    int releases_ = 0;
    Counts counts_;
    std::unique_ptr<HotKeyHandler> handler_ =
        service_.installHandler([this] { ++presses_; }, [this] { ++releases_; }, [](const auto&) {});
    SerialQueue pipeline_{QStringLiteral("parlivo.pipeline")};
};

int run(const char* name, int holds) {
    Holds bench;
    const bool held = bench.isHeldByOther();
    const Counts counts = bench.run(holds);
    std::printf("| %s | %s | %d | %d | %d | %d | %s |\n", name, held ? "yes" : "no", holds,
                counts.lostPresses, counts.lostReleases, counts.menus,
                counts.wholeText ? "whole" : "damaged");
    return counts.lostPresses + counts.lostReleases + counts.menus == 0 && counts.wholeText ? 0 : 1;
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: hotkey_bench NAME [HOLDS]\n");
        return 2;
    }
    try {
        return parlivo::bench::run(argv[1], argc > 2 ? std::atoi(argv[2]) : 200);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "hotkey_bench: %s\n", error.what());
        return 2;
    }
}
