// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "desktop/wayland/Hands.h"
#include "desktop/wayland/Sway.h"
#include "desktop/wayland/WaylandEnvironment.h"
#include "desktop/wayland/WaylandReceiver.h"
#include "platform/linux/desktop/OwnKeyHint.h"

#include <QFile>

#include <csignal>
#include <iostream>
#include <tuple>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;
using Kind = WaylandReceiver::Kind;

const QString spoken = QStringLiteral("Perché no? «Sì» — 12 € 👍🏽");
const QString onClipboard =
    QStringLiteral("⚠️ Testo negli appunti — la finestra attiva non lo ha preso: incollalo tu");

QString program() {
    return builtBundle() + QStringLiteral("/Contents/MacOS/Parlivo");
}

/// The whole program in a session of labwc, where the user has bound the key as the program says.
class LabwcTest : public testing::Test {
  protected:
    LabwcTest() {
        separateSpeakerFromMicrophone();
        home::settle();
        bindAsHinted();
    }
    void TearDown() override {
        if (HasFailure()) std::cerr << qPrintable(home::log());
    }

    /// Puts the lines that the settings show where they say, and does the equivalent of labwc --reconfigure.
    static void bindAsHinted() {
        const QString folder = qEnvironmentVariable("PARLIVO_LABWC");
        QString lines = ownKeyHint().lines;
        lines.replace(toggleCommand(), program() + QStringLiteral(" --toggle"));
        ASSERT_TRUE(lines.contains(QStringLiteral("A-space")));
        QFile configuration(folder + QStringLiteral("/rc.xml"));
        ASSERT_TRUE(configuration.open(QIODevice::WriteOnly));
        configuration.write(
            QStringLiteral("<labwc_config><keyboard>%1</keyboard></labwc_config>").arg(lines).toUtf8());
        configuration.close();
        QFile pid(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/desktop/labwc.pid"));
        ASSERT_TRUE(pid.open(QIODevice::ReadOnly));
        ASSERT_EQ(::kill(pid.readAll().trimmed().toInt(), SIGHUP), 0);
    }

    void pressKey() {
        hands_.press({KEY_LEFTALT, KEY_SPACE});
        hands_.release({KEY_SPACE, KEY_LEFTALT});
    }
    /// labwc reads its configuration anew in its own time.
    void startRecording(const Program& running) {
        ASSERT_TRUE(waitFor(
            [&] {
                pressKey();
                return waitFor([&] { return running.state() == QStringLiteral("recording"); }, 2s);
            },
            20s))
            << qPrintable(running.statusText());
    }
    void dictate(const Program& running) {
        startRecording(running);
        letPass(500ms);
        EXPECT_EQ(running.state(), QStringLiteral("recording")) << "the key is up, and it goes on";
        pressKey();
    }

    Hands hands_;
};

using Cell = std::tuple<Kind, const char*>;

class LabwcDictation : public LabwcTest, public testing::WithParamInterface<Cell> {};

TEST_P(LabwcDictation, ByTheBoundKeyTheTextStandsInTheFocusedWindow) {
    const auto& [kind, speed] = GetParam();
    home::set(QStringLiteral("typingSpeed"), QString::fromLatin1(speed));
    StubRecogniser stub(spoken);
    sway::copy("prima");
    const WaylandReceiver receiver(kind);
    const Program running(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(running.waitUntilUp());
    dictate(running);
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text());
    ASSERT_TRUE(running.waitForState(QStringLiteral("idle")));
    EXPECT_TRUE(waitFor([] { return sway::clipboard() == "prima"; })) << sway::clipboard().constData();
    const QString log = home::log();
    EXPECT_TRUE(log.contains(QStringLiteral("iniezione completata")));
    EXPECT_TRUE(
        log.contains(QStringLiteral("sessione: Wayland: nessun tasto globale, testo dal metodo di "
                                    "inserimento, incolla da tastiera virtuale, pannello")));
    EXPECT_FALSE(log.contains(spoken)) << "what was dictated";
}

INSTANTIATE_TEST_SUITE_P(All, LabwcDictation,
                         testing::Combine(testing::Values(Kind::Foot, Kind::Gtk3, Kind::Gtk4, Kind::Qt),
                                          testing::Values("fast", "instant")),
                         [](const auto& cell) {
                             return nameOf(std::get<Kind>(cell.param)) + "_" +
                                    std::get<const char*>(cell.param);
                         });

TEST_F(LabwcTest, TenThousandCharactersOfADictationArrive) {
    const QString sample = QStringLiteral(
        "Disse: “Andiamo — subito!” È già 12,50 €… 👨‍👩‍👧‍👦 👍🏽 日本語 שלום ");
    const QString text = sample.repeated(10'000 / sample.size() + 1).trimmed();
    StubRecogniser stub(text);
    const WaylandReceiver receiver(Kind::Gtk3);
    const Program running(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(running.waitUntilUp());
    dictate(running);
    EXPECT_TRUE(receiver.waitForText(text)) << receiver.text().size() << " of " << text.size();
}

TEST_F(LabwcTest, TheCardIsShownWhileOneSpeaks) {
    StubRecogniser stub(spoken);
    const Program running(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(running.waitUntilUp());
    const QImage before = sway::screenshot();
    ASSERT_FALSE(before.isNull());
    const QRect card((before.width() - 240) / 2, before.height() - 110 - 84, 240, 84);
    const auto isShown = [&] {
        const QImage now = sway::screenshot().copy(card);
        const QPoint middle(now.width() / 2, 10);
        return now.pixel(middle) != before.copy(card).pixel(middle) && now.pixel(middle) != now.pixel(0, 0);
    };
    EXPECT_FALSE(isShown());
    startRecording(running);
    EXPECT_TRUE(waitFor(isShown));
    letPass(500ms);
    pressKey();
    ASSERT_TRUE(running.waitForState(QStringLiteral("idle")));
    EXPECT_TRUE(waitFor([&] { return sway::screenshot() == before; }));
}

TEST_F(LabwcTest, WithoutATextFieldTheTextGoesToTheClipboardAndThatIsSaid) {
    StubRecogniser stub(spoken);
    const Program running(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(running.waitUntilUp());
    dictate(running);
    EXPECT_TRUE(waitFor([&] { return running.statusText() == onClipboard; }))
        << qPrintable(running.statusText());
    EXPECT_EQ(sway::clipboard(), spoken.toUtf8());
}

}  // namespace
}  // namespace parlivo::desktop
