// SPDX-License-Identifier: MIT
#include "AppDelegateFixture.h"
#include "settings/SettingsNotifier.h"

#include <iostream>
#include <random>

namespace parlivo {
namespace {

/// Events in any order, and the rules that hold after all of them. Each sequence is known by its seed.
class AppDelegateStorm : public AppDelegateTest {
  protected:
    AppDelegateStorm() {
        answer();
        store(Settings::overlayEnabled, false);
        launch();
    }

    void run(std::uint32_t seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random_.seed(seed);
        store(Settings::dictationMode, QStringLiteral("ptt"));
        decideWhatFails();
        for (int left = 5 + upTo(10); left > 0; --left) happen();
        waitUntilIdle();
    }

  private:
    void decideWhatFails() {
        const Error error(ErrorCode::WhisperNotResponding, QStringLiteral("guasto"));
        const auto seldom = [&] { return upTo(9) == 0 ? std::optional(error) : std::nullopt; };
        platform.audioInput().startError = seldom();
        conversionError = seldom();
        transcriptionError = seldom();
        transcript = upTo(9) == 0 ? QString() : QStringLiteral("Ciao a tutti.");
    }

    void happen() {
        switch (upTo(8)) {
            case 0:
                return platform.hotKeys().press();
            case 1:
                return platform.hotKeys().release();
            case 2:
                return delegate->perform(RemoteCommand::Press);
            case 3:
                return delegate->perform(RemoteCommand::Release);
            case 4:
                return delegate->perform(RemoteCommand::Toggle);
            case 5:
                return changeSettings();
            case 6:
                return ageRecording(std::chrono::milliseconds(upTo(600)));
            case 7:
                platform.audioInput().interrupt();
                return;
            default:
                return settle();
        }
    }

    void changeSettings() {
        const QStringList modes{QStringLiteral("ptt"), QStringLiteral("toggle"), QStringLiteral("?")};
        const QStringList presets{QStringLiteral("opt-space"), QStringLiteral("opt-backtick")};
        store(Settings::dictationMode, modes.at(upTo(2)));
        store(Settings::hotkeyPreset, presets.at(upTo(1)));
        Q_EMIT SettingsNotifier::shared().pvHotkeyChanged();
    }

    void waitUntilIdle() {
        platform.hotKeys().release();
        if (delegate->state() == State::recording) delegate->perform(RemoteCommand::Toggle);
        spinUntil([this] { return delegate->state() == State::idle; });
        EXPECT_EQ(platform.audioInput().running, 0);
        EXPECT_EQ(platform.hotKeys().registered.size(), 1U);
        spinUntil([this] { return filesLeft().isEmpty(); });
    }

    int upTo(int limit) { return static_cast<int>(random_() % (static_cast<unsigned>(limit) + 1)); }

    std::mt19937 random_;
};

TEST_F(AppDelegateStorm, EverySequenceEndsIdle) {
    const std::uint32_t fresh = std::random_device()();
    std::cout << "  seeds 0 to 499, and 500 from " << fresh << std::endl;
    for (std::uint32_t i = 0; i < 1000 && !HasFailure(); ++i) run(i < 500 ? i : fresh + i - 500);
}

}  // namespace
}  // namespace parlivo
