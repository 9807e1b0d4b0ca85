// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "desktop/tray/TrayHost.h"
#include "support/SoundServer.h"

#include <memory>

namespace parlivo::desktop {
namespace {

void run(const QString& program, const QStringList& arguments) {
    ASSERT_EQ(QProcess::execute(program, arguments), 0) << qPrintable(program);
}

/// What can happen to the desktop around the status item and the overlay. Dictation goes on every time.
class IndicatorFault : public ProgramTest {
  protected:
    // The settings must be there before a program starts.
    IndicatorFault() : stub_((home::settle(), QStringLiteral(""))) {}

    void expectDictation(const Program& program, const QString& text) {
        ProgramTest::expectDictation(program, receiver_, stub_, text);
    }

    /// Dictates, and lets `happen` while the key is held.
    void expectDictation(const Program& program, const QString& text, const std::function<void()>& happen) {
        const QString before = receiver_.text();
        stub_.setTranscript(text);
        press();
        ASSERT_TRUE(program.waitForState(QStringLiteral("recording"))) << qPrintable(program.statusText());
        happen();
        letPass(std::chrono::milliseconds(400));
        release();
        EXPECT_TRUE(receiver_.waitForText(before + text)) << qPrintable(program.statusText());
        expectNothingLeft(program);
    }

    StubRecogniser stub_;
    Receiver receiver_{Receiver::Kind::Qt};
};

TEST_F(IndicatorFault, ATrayThatDies) {
    const Program program;
    ASSERT_TRUE(program.waitUntilUp());
    expectDictation(program, QStringLiteral("senza vassoio"));
    auto tray = std::make_unique<TrayHost>();
    ASSERT_TRUE(waitFor([&] { return tray->icon().has_value(); }));
    expectDictation(program, QStringLiteral("mentre muore"), [&] { tray.reset(); });
    const TrayHost next;
    EXPECT_TRUE(waitFor([&] { return next.icon().has_value(); }));
    expectDictation(program, QStringLiteral("e poi"));
}

TEST_F(IndicatorFault, AScreenThatIsUnplugged) {
    const auto add = [](const char* name, const char* geometry, const char* output) {
        run(QStringLiteral("xrandr"), {QStringLiteral("--setmonitor"), QString::fromLatin1(name),
                                       QString::fromLatin1(geometry), QString::fromLatin1(output)});
    };
    add("left", "640/170x800/210+0+0", "screen");
    add("right", "640/170x800/210+640+0", "none");
    const Program program;
    ASSERT_TRUE(program.waitUntilUp());
    expectDictation(program, QStringLiteral("due schermi"), [] {
        run(QStringLiteral("xrandr"), {QStringLiteral("--delmonitor"), QStringLiteral("right")});
    });
    expectDictation(program, QStringLiteral("e uno"));
}

TEST_F(IndicatorFault, ACompositorThatComesAndGoes) {
    const Program program;
    ASSERT_TRUE(program.waitUntilUp());
    QProcess compositor;
    expectDictation(program, QStringLiteral("prima"), [&] {
        compositor.start(QStringLiteral("xcompmgr"), QStringList());
        ASSERT_TRUE(compositor.waitForStarted());
    });
    expectDictation(program, QStringLiteral("durante"), [&] {
        compositor.kill();
        ASSERT_TRUE(compositor.waitForFinished());
    });
    expectDictation(program, QStringLiteral("dopo"));
}

TEST_F(IndicatorFault, NoPicturesAndNoSounds) {
    const BundleCopy bundle;
    for (const char* folder : {"symbols", "icons", "sounds", "help"})
        bundle.removeResource(QString::fromLatin1(folder));
    const TrayHost tray;
    const Program program(bundle.path());
    ASSERT_TRUE(program.waitUntilUp());
    expectDictation(program, QStringLiteral("senza immagini"));
}

TEST_F(IndicatorFault, NoSessionBus) {
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=/nonexistent"));
    const TrayHost tray;
    const Program program(builtBundle(), environment);
    ASSERT_TRUE(waitFor([&] { return tray.icon().has_value(); })) << "the tray needs no bus";
    stub_.setTranscript(QStringLiteral("senza bus"));
    press();
    ASSERT_TRUE(waitFor([] { return !recordingStreams().isEmpty(); }));
    letPass(std::chrono::milliseconds(400));
    release();
    EXPECT_TRUE(receiver_.waitForText(QStringLiteral("senza bus"))) << qPrintable(receiver_.text());
}

}  // namespace
}  // namespace parlivo::desktop
