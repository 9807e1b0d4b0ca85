// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/dictation/ProgramTest.h"
#include "desktop/hotkey/OtherClient.h"
#include "desktop/stress/StubEngines.h"
#include "desktop/tray/NotifierWatcher.h"

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace parlivo::desktop {

/// Random sequences of events that can happen to the program within a few seconds; the seed decides their
/// order. One process of the program goes through many sequences.
class Storm : public ProgramTest {
  protected:
    Storm();
    void SetUp() override;

    /// Runs a sequence and expects the program to be idle afterwards.
    void run(std::uint32_t seed);

    /// The texts that the program says it has typed or pasted.
    static qsizetype texts();

  private:
    struct Action {
        const char* name;
        double weight;
        void (Storm::*happen)();
    };
    static const std::vector<Action>& actions();

    // The events.
    void tap();
    void hold();
    void pressAndKeep();
    void releaseKeys();
    void busPress();
    void busRelease();
    void busToggle();
    void startSecondInstance();
    void startSecondInstanceWithoutOption();
    void changeMode();
    void changeSpeed();
    void changePreset();
    void showSettings();
    void showFeedback();
    void chooseFromMenu();
    void killEngine();
    void restartSoundServer();
    void loseKeyboards();
    void lockScreen();
    void pause();

    // The checks afterwards.
    void waitUntilIdle();
    void expectIdle();
    void expectOneOfEach();
    void expectOnlyDictatedText();

    void pressKeys();
    int randomUpTo(int limit);
    bool coinFlip() { return randomUpTo(1) == 0; }
    void findPresets();
    void stepPreset(xcb_keycode_t key);
    static int preset();  // its place in the table
    void showWindow(const char* method);
    void endRecording();
    std::mt19937 random_;
    std::string happened_;
    /// Whether a recording may be under way that no key will end.
    bool recordingMayStay_ = false;
    /// Whether keys of a text may have gone elsewhere: into a window of the program, into a lock, or nowhere.
    bool textMayBeElsewhere_ = false;
    qsizetype textsBefore_ = 0;
    Chord chord_ = optionSpace;
    bool keysDown_ = false;

    StubEngines engines_;
    OtherClient other_;
    std::unique_ptr<NotifierWatcher> panel_;
    std::unique_ptr<Program> program_;
    std::unique_ptr<Receiver> receiver_;
};

}  // namespace parlivo::desktop
