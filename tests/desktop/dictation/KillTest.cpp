// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "support/KeyboardMap.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QProcess>

#include <algorithm>
#include <csignal>

namespace parlivo::desktop {
namespace {

const auto stubEngine = QStringLiteral("stub_engine");

/// The program is ended by force in the middle of something, and started again.
class KillTest : public ProgramTest {
  protected:
    KillTest() { home::settle(); }

    /// The environment of a program that stops before a step (tests/support/Halt.cpp).
    static QProcessEnvironment haltingAt(const char* step) {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(PARLIVO_HALT_LIBRARY));
        environment.insert(QStringLiteral("PARLIVO_HALT"), QString::fromLatin1(step));
        return environment;
    }

    static bool waitUntilHalted(const Program& program) {
        return waitFor([&] {
            QFile status(QStringLiteral("/proc/%1/stat").arg(program.processId()));
            return status.open(QIODevice::ReadOnly) && status.readAll().contains(") T ");
        });
    }

    /// As the system does when memory is short, or the user who has lost patience.
    void kill(Program& program) {
        program.signal(SIGKILL);
        EXPECT_EQ(program.waitForExit(), std::nullopt);
        EXPECT_FALSE(program.isRunning());
        EXPECT_TRUE(waitFor([] { return enginesAreGone(); })) << "its engines outlive it";
        EXPECT_TRUE(waitFor([] { return recordingStreams().isEmpty(); })) << "the microphone stays open";
    }

    static bool enginesAreGone() {
        return processesNamed(stubEngine).empty() &&
               processesNamed(QStringLiteral("whisper-server")).empty() &&
               processesNamed(QStringLiteral("llama-server")).empty();
    }
    /// A dying process has no name any more before it lets go of its port.
    static bool portsAreFree() {
        return std::ranges::none_of(listeners(), [](const Listener& listener) {
            return listener.port == 8765 || listener.port == 8766;
        });
    }

    /// What a start owes the user whatever there was before.
    void expectTheNextStartWorks() {
        ASSERT_TRUE(waitFor([] { return portsAreFree(); }));
        StubRecogniser stub;
        const Receiver receiver(Receiver::Kind::Qt);
        const Program program;
        ASSERT_TRUE(program.waitUntilUp());
        EXPECT_EQ(program.state(), QStringLiteral("idle"));
        EXPECT_TRUE(waitFor([] { return home::recordings().isEmpty(); }))
            << "no recording survives a start: " << qPrintable(home::recordings().join(QLatin1Char(' ')));
        const int before = home::settings().value(QLatin1String("dictationCount")).toInt();
        expectDictation(program, receiver, stub, QStringLiteral("Così va, però «domani» ç'è."));
        EXPECT_TRUE(home::waitForCount(before + 1));
        for (int key = 8; key < 256; ++key)
            EXPECT_FALSE(keyboard_.isDown(static_cast<xcb_keycode_t>(key))) << key;
    }
};

TEST_F(KillTest, WhileRecording) {
    {
        Program program;
        ASSERT_TRUE(program.waitUntilUp());
        press();
        ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
        ASSERT_EQ(home::recordings().size(), 2) << "the capture, and the WAV that grows with it";
        kill(program);
        release();
    }
    EXPECT_EQ(home::recordings().size(), 2);
    expectTheNextStartWorks();
}

/// An X server beside the test's own.
class OtherDisplay {
  public:
    OtherDisplay() {
        server_.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                               QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        EXPECT_TRUE(waitFor([this] { return server_.canReadLine(); }));
        name_ = QLatin1Char(':') + QString::fromLatin1(server_.readLine().trimmed());
    }
    QProcessEnvironment environment() const {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), name_);
        return environment;
    }
    void kill() {
        server_.kill();
        server_.waitForFinished();
    }

  private:
    QProcess server_;
    QString name_;
};

TEST_F(KillTest, TheDisplayServerWhileRecording) {
    {
        OtherDisplay display;
        Program program(builtBundle(), display.environment());
        ASSERT_TRUE(program.waitUntilUp());
        ASSERT_TRUE(program.invoke("Toggle"));
        ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
        display.kill();
        EXPECT_EQ(program.waitForExit(), 1) << "it crashes, or stays: " << qPrintable(program.errors());
        EXPECT_TRUE(waitFor([] { return enginesAreGone(); })) << "its engines outlive it";
        EXPECT_TRUE(waitFor([] { return recordingStreams().isEmpty(); })) << "the microphone stays open";
        EXPECT_TRUE(home::log().contains(QStringLiteral("il server grafico è terminato")));
    }
    expectTheNextStartWorks();
}

/// The moments at which a recording's files are deleted.
class KillWhileDeleting : public KillTest, public testing::WithParamInterface<std::pair<const char*, int>> {};

TEST_P(KillWhileDeleting, NoRecordingSurvivesTheNextStart) {
    const auto& [step, files] = GetParam();
    {
        const StubRecogniser stub;
        Program program(builtBundle(), haltingAt(step));
        ASSERT_TRUE(program.waitUntilUp());
        dictateSilence(program);
        ASSERT_TRUE(waitUntilHalted(program));
        EXPECT_EQ(home::recordings().size(), files);
        kill(program);
    }
    EXPECT_EQ(home::recordings().size(), files);
    expectTheNextStartWorks();
}

INSTANTIATE_TEST_SUITE_P(Moments, KillWhileDeleting,
                         testing::Values(std::pair("Parlivo:unlink:.caf", 2),
                                         std::pair("Parlivo:unlink:.wav", 1)),
                         [](const auto& moment) { return moment.param.second == 2 ? "capture" : "wav"; });

/// With engines of its own, which hang when they are asked for something.
class KillWithEngines : public KillTest {
  protected:
    KillWithEngines() {
        for (const auto& name : {QStringLiteral("whisper-server"), QStringLiteral("llama-server")})
            bundle_.putEngine(name, QStringLiteral(PARLIVO_STUB_ENGINE));
        home::settle({{QStringLiteral("cleanupTier"), QStringLiteral("light")},
                      {QStringLiteral("cleanupLevel"), QStringLiteral("medium")},
                      {QStringLiteral("cleanupMinChars"), 0}});
    }

    /// The file that an engine takes for its model tells a stub how to behave.
    static void behave(const QString& model, const QJsonObject& behaviour) {
        QFile::remove(model);
        QFile file(model);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(behaviour).toJson());
    }
    static QString recogniserModel() {
        return qEnvironmentVariable("HOME") +
               QStringLiteral("/Projects/Parlivo/models/ggml-large-v3-turbo-q8_0.bin");
    }
    static QString cleanerModel() {
        return home::dataFile(QStringLiteral("models/qwen2.5-1.5b-instruct-q4_k_m.gguf"));
    }

    /// Dictates until the engine of this model is at work, kills, and starts again.
    void killWhenAsked(const QString& model, int recordings) {
        {
            Program program(bundle_.path());
            ASSERT_TRUE(program.waitUntilUp());
            ASSERT_TRUE(Program::waitUntilServed(QStringLiteral("http://127.0.0.1:8766/health")));
            dictateSilence(program);
            ASSERT_TRUE(waitFor([&] { return QFile::exists(model + QStringLiteral(".asked")); }));
            EXPECT_EQ(processesNamed(stubEngine).size(), 2U);
            EXPECT_EQ(home::recordings().size(), recordings);
            kill(program);
        }
        home::settle();
        expectTheNextStartWorks();
    }

    BundleCopy bundle_;
};

TEST_F(KillWithEngines, WhileTheRecogniserIsAtWork) {
    behave(recogniserModel(), {{QStringLiteral("onRequest"), QStringLiteral("never")}});
    behave(cleanerModel(), {{QStringLiteral("text"), QStringLiteral("pulito")}});
    killWhenAsked(recogniserModel(), 1);
}

TEST_F(KillWithEngines, WhileTheCleanerIsAtWork) {
    behave(recogniserModel(), {{QStringLiteral("text"), QStringLiteral("grezzo, da pulire")}});
    behave(cleanerModel(), {{QStringLiteral("onRequest"), QStringLiteral("never")}});
    killWhenAsked(cleanerModel(), 0);
}

TEST_F(KillWithEngines, WhileTheyAreStarting) {
    behave(recogniserModel(), {{QStringLiteral("idle"), true}});
    behave(cleanerModel(), {});
    {
        Program program(bundle_.path());
        ASSERT_TRUE(waitFor([] { return !processesNamed(stubEngine).empty(); }));
        kill(program);
    }
    home::settle();
    expectTheNextStartWorks();
}

TEST_F(KillTest, WhileTyping) {
    const QByteArray keys = keyboardMap();
    home::set(QStringLiteral("typingSpeed"), QStringLiteral("natural"));
    {
        StubRecogniser stub(QStringLiteral("Perché «così» è più ") + QString(1000, QLatin1Char('x')));
        Program program;
        const Receiver receiver(Receiver::Kind::Qt);
        ASSERT_TRUE(program.waitUntilUp());
        dictateSilence(program);
        ASSERT_TRUE(waitFor([&] { return receiver.text().size() > 20; })) << qPrintable(receiver.text());
        kill(program);
        EXPECT_LT(receiver.text().size(), 1000);
        EXPECT_NE(keyboardMap(), keys) << "nobody has given the lent keys back";
    }
    home::set(QStringLiteral("typingSpeed"), QStringLiteral("fast"));
    expectTheNextStartWorks();
    // The next program knows what the killed one had lent; one that quits before it can type does not look.
    Program program;
    ASSERT_TRUE(program.waitUntilUp());
    {
        StubRecogniser stub;
        const Receiver receiver(Receiver::Kind::Qt);
        expectDictation(program, receiver, stub, QStringLiteral("è ora"));
    }
    EXPECT_TRUE(program.invoke("Quit"));
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_EQ(keyboardMap(), keys);
}

TEST_F(KillTest, WhilePasting) {
    home::set(QStringLiteral("typingSpeed"), QStringLiteral("instant"));
    QGuiApplication::clipboard()->setText(QStringLiteral("di prima"));
    {
        StubRecogniser stub(QStringLiteral("incollato"));
        Program program;
        const Receiver receiver(Receiver::Kind::Qt);
        ASSERT_TRUE(program.waitUntilUp());
        dictateSilence(program);
        ASSERT_TRUE(receiver.waitForText(QStringLiteral("incollato")));
        kill(program);
    }
    // What the clipboard held has gone with its last owner, unless it had been put back by then; what was
    // dictated must not stay.
    EXPECT_TRUE(waitFor([] {
        const QString text = QGuiApplication::clipboard()->text();
        return text.isEmpty() || text == QLatin1String("di prima");
    })) << qPrintable(QGuiApplication::clipboard()->text());
    expectTheNextStartWorks();
}

TEST_F(KillTest, WhileASettingIsWritten) {
    const QJsonObject before = home::settings();
    const QDir folder = QFileInfo(home::settingsFile()).dir();
    {
        // It remembers its version at its start.
        Program program(builtBundle(), haltingAt("Parlivo:rename:/Parlivo.json"));
        ASSERT_TRUE(waitUntilHalted(program));
        kill(program);
    }
    EXPECT_EQ(home::settings(), before) << home::readSettings().constData();
    EXPECT_GT(folder.entryList(QDir::Files | QDir::Hidden).size(), 1) << "what it wrote lies beside it";
    expectTheNextStartWorks();
    EXPECT_EQ(home::settings().value(QLatin1String("dictationCount")).toInt(), 1);
    EXPECT_EQ(folder.entryList(QDir::Files | QDir::Hidden), QStringList(QStringLiteral("Parlivo.json")));
}

TEST_F(KillTest, ARecordingOfAnotherSessionIsNotStale) {
    auto otherSession = QProcessEnvironment::systemEnvironment();
    otherSession.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=/nonexistent"));
    StubRecogniser stub(QStringLiteral("ancora qui"));
    const Receiver receiver(Receiver::Kind::Qt);
    const Program first;
    ASSERT_TRUE(first.waitUntilUp());
    // Not by the key, of which the second program, on the same display, would take the repeats.
    ASSERT_TRUE(first.invoke("Press"));
    ASSERT_TRUE(first.waitForState(QStringLiteral("recording")));
    const QStringList recording = home::recordings();
    ASSERT_EQ(recording.size(), 2);
    // A left-over tells when the other one has looked.
    const QString stale =
        QDir::temp().filePath(QStringLiteral("parlivo-00000000-0000-4000-8000-000000000000.caf"));
    ASSERT_TRUE(QFile(stale).open(QIODevice::WriteOnly));
    const Program second(builtBundle(), otherSession);
    EXPECT_TRUE(waitFor([&] { return !QFile::exists(stale); }));
    EXPECT_EQ(home::recordings(), recording);
    letPass(std::chrono::milliseconds(400));
    EXPECT_TRUE(first.invoke("Release"));
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("ancora qui"))) << qPrintable(first.statusText());
    expectNothingLeft(first);
}

}  // namespace
}  // namespace parlivo::desktop
