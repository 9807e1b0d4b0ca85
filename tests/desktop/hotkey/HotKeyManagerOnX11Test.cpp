// SPDX-License-Identifier: MIT
#include "desktop/hotkey/HotKeyFixture.h"
#include "desktop/hotkey/OtherClient.h"
#include "input/HotKeyManager.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/FakePlatform.h"

#include <QFile>

#include <utility>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

/// The manager's platform, with real keys.
class RealHotKeys : public fake::HotKeys {
  public:
    std::unique_ptr<HotKeyHandler> installHandler(Edge pressedEdge, Edge releasedEdge,
                                                  Change change) override {
        return service_.installHandler(std::move(pressedEdge), std::move(releasedEdge), std::move(change));
    }
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override {
        return service_.registerHotKey(key, modifiers, identity);
    }

  private:
    X11HotKeyService service_;
};

class PlatformWithRealHotKeys : public FakePlatform {
  public:
    RealHotKeys& hotKeys() override { return keys_; }

  private:
    RealHotKeys keys_;
};

class HotKeyManagerOnX11Test : public testing::Test {
  public:
    HotKeyManagerOnX11Test() {
        Platform::install(std::make_unique<PlatformWithRealHotKeys>());
        formerLog_ = wholeLog().size();
        manager = std::make_unique<HotKeyManager>();
        manager->onKeyDown = [this] { ++downs; };
        manager->onKeyUp = [this] { ++ups; };
    }
    ~HotKeyManagerOnX11Test() override {
        manager.reset();
        Log::flush();
        FakePlatform::uninstall();
    }
    HotKeyManagerOnX11Test(const HotKeyManagerOnX11Test&) = delete;
    HotKeyManagerOnX11Test& operator=(const HotKeyManagerOnX11Test&) = delete;

  protected:
    void apply(const char* preset) {
        Config::set(Settings::hotkeyPreset, QString::fromLatin1(preset));
        manager->applyCurrentPreset();
    }
    bool pressed(const char* id) {
        const QString name = QString::fromLatin1(id);
        const Preset& preset = HotKeyManager::preset(name);
        const int before = ups;
        const auto chord = chordOf(preset);
        for (const auto key : chord) keyboard.press(key);
        for (auto i = chord.size(); i-- > 0;) keyboard.release(chord[i]);
        return waitFor([&] { return ups > before; }, 1s);
    }
    /// What this case has logged.
    QString log() const { return wholeLog().sliced(formerLog_); }

    Keyboard keyboard;
    std::unique_ptr<HotKeyManager> manager;
    int downs = 0;
    int ups = 0;

  private:
    static QString wholeLog() {
        Log::flush();
        QFile file(Log::path());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    qsizetype formerLog_ = 0;
};

TEST_F(HotKeyManagerOnX11Test, APresetTakenByAnotherProgramIsLoggedAndTheNextOneWorks) {
    OtherClient other;
    ASSERT_EQ(other.grabKeyEverywhere(Key::space, XCB_MOD_MASK_1 | XCB_MOD_MASK_CONTROL), 0);
    apply("opt-space");
    ASSERT_TRUE(pressed("opt-space"));
    apply("ctrl-opt-space");
    EXPECT_TRUE(
        log().endsWith(QStringLiteral("registrazione hotkey fallita (status 10) — probabilmente già in "
                                      "uso da un'altra app\n")))
        << log().toStdString();
    EXPECT_FALSE(pressed("opt-space"));
    EXPECT_FALSE(pressed("ctrl-opt-space"));
    apply("opt-backtick");
    EXPECT_TRUE(pressed("opt-backtick"));
    other.ungrabKeyEverywhere(Key::space, XCB_MOD_MASK_1 | XCB_MOD_MASK_CONTROL);
    apply("ctrl-opt-space");
    EXPECT_TRUE(pressed("ctrl-opt-space"));
    EXPECT_EQ(downs, ups);
}

TEST_F(HotKeyManagerOnX11Test, TheSamePresetAgainStaysWorking) {
    for (int i = 0; i < 5; ++i) {
        apply("opt-space");
        EXPECT_TRUE(pressed("opt-space")) << i;
    }
    EXPECT_EQ(downs, 5);
    EXPECT_EQ(log(), QString());
}

TEST_F(HotKeyManagerOnX11Test, AnUnknownPresetIsOptionSpace) {
    apply("no such preset");
    EXPECT_TRUE(pressed("opt-space"));
}

}  // namespace
}  // namespace parlivo::desktop
