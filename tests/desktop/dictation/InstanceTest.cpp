// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"

#include <QDBusConnection>

#include <csignal>

namespace parlivo::desktop {
namespace {

const QString idleText = QStringLiteral("Pronto — tieni premuto Alt+Spazio per dettare");

/// A session bus that lets nobody have the program's name.
class RefusingBus {
  public:
    RefusingBus() {
        QFile configuration(folder_.filePath(QStringLiteral("bus.conf")));
        EXPECT_TRUE(configuration.open(QIODevice::WriteOnly));
        configuration.write(
            "<busconfig><type>session</type><listen>unix:runtime=yes</listen><auth>EXTERNAL</auth>"
            "<policy context='default'><allow send_destination='*'/><allow receive_sender='*'/>"
            "<allow own='*'/><deny own='it.parlivo.Parlivo'/></policy></busconfig>");
        configuration.close();
        process_.start(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"), QStringLiteral("--print-address"),
             QStringLiteral("--config-file=") + configuration.fileName()});
        EXPECT_TRUE(waitFor([this] {
            process_.waitForReadyRead(10);
            return process_.canReadLine();
        }));
        address_ = QString::fromUtf8(process_.readLine()).trimmed();
    }
    ~RefusingBus() {
        process_.terminate();
        process_.waitForFinished();
    }
    RefusingBus(const RefusingBus&) = delete;
    RefusingBus& operator=(const RefusingBus&) = delete;

    /// A session with this bus.
    QProcessEnvironment environment() const {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address_);
        return environment;
    }

  private:
    QTemporaryDir folder_;
    QProcess process_;
    QString address_;
};

/// The program as others meet it: on the bus, on the command line, at its end.
class InstanceTest : public ProgramTest {
  protected:
    InstanceTest() { home::settle(); }

    static QProcessEnvironment withoutBus() {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=/nonexistent"));
        return environment;
    }

    /// What the display says of every key.
    static QByteArray keyboardMap() {
        QProcess process;
        process.start(QStringLiteral("xmodmap"), {QStringLiteral("-pke")});
        process.waitForFinished();
        return process.readAllStandardOutput();
    }
};

TEST_F(InstanceTest, TheBusTellsWhatItDoes) {
    StubRecogniser stub(QStringLiteral("dal bus"));
    const Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    EXPECT_EQ(program.state(), QStringLiteral("idle"));
    EXPECT_EQ(program.statusText(), idleText);
    EXPECT_EQ(program.version(), QStringLiteral(PARLIVO_TEST_VERSION));

    EXPECT_TRUE(program.invoke("Press"));
    EXPECT_EQ(program.state(), QStringLiteral("recording"));
    EXPECT_EQ(program.statusText(), QStringLiteral("🔴 Registrazione…"));
    letPass(std::chrono::milliseconds(400));
    EXPECT_TRUE(program.invoke("Release"));
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("dal bus"))) << qPrintable(receiver.text());
    expectNothingLeft(program);
    expectStates(program, wholeDictation);
}

TEST_F(InstanceTest, AnEngineGetsTheEnvironmentThatTheProgramWasStartedWith) {
    const QTemporaryDir folder;
    const QString seen = folder.filePath(QStringLiteral("environment"));
    const BundleCopy copy;
    copy.putEngine(
        QStringLiteral("whisper-server"),
        QStringLiteral("#!/bin/sh\nenv >'%1.part'; mv '%1.part' '%1'; exec sleep 1000\n").arg(seen).toUtf8(),
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    home::provideModels();
    const Program program(copy.path());
    ASSERT_TRUE(waitFor([&] { return QFile::exists(seen); }));
    QFile file(seen);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray environment = file.readAll();
    EXPECT_TRUE(environment.contains("\nDISPLAY=") || environment.startsWith("DISPLAY="));
    EXPECT_FALSE(environment.contains("QT_XCB_GL_INTEGRATION")) << "Qt Quick programs abort with it";
}

TEST_F(InstanceTest, ASecondStartPassesItsArgumentsOn) {
    StubRecogniser stub(QStringLiteral("dalla riga di comando"));
    Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());

    EXPECT_EQ(Program::call({QStringLiteral("--press")}).status, 0);
    EXPECT_EQ(program.state(), QStringLiteral("recording"));
    letPass(std::chrono::milliseconds(400));
    EXPECT_EQ(Program::call({QStringLiteral("--release")}).status, 0);
    EXPECT_TRUE(receiver.waitForText(QStringLiteral("dalla riga di comando"))) << qPrintable(receiver.text());
    expectNothingLeft(program);

    EXPECT_EQ(Program::call({QStringLiteral("--toggle")}).status, 0);
    EXPECT_EQ(program.state(), QStringLiteral("recording"));
    EXPECT_EQ(Program::call({}).status, 0) << "a plain second start";
    EXPECT_TRUE(program.isRunning());
    EXPECT_EQ(Program::call({QStringLiteral("--quit")}).status, 0);
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_EQ(home::recordings(), QStringList()) << "the recording that was under way";
}

TEST_F(InstanceTest, WithoutARunningProgramThereIsNothingToCommand) {
    const Outcome outcome = Program::call({QStringLiteral("--toggle")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, QStringLiteral("Parlivo: non è in esecuzione\n"));
}

TEST_F(InstanceTest, AProgramThatDoesNotAnswerIsNotTakenForAMissingBus) {
    const Program program;
    ASSERT_TRUE(program.waitUntilUp());
    program.signal(SIGSTOP);
    const Outcome outcome = Program::call({QStringLiteral("--toggle")});
    program.signal(SIGCONT);
    EXPECT_EQ(outcome.status, 1);
    // At the end of a program whose call was not answered, Qt may complain of its own threads.
    EXPECT_TRUE(outcome.errors.startsWith(QStringLiteral("Parlivo: l'istanza in esecuzione non risponde\n")))
        << qPrintable(outcome.errors);
}

TEST_F(InstanceTest, AProgramThatEndsBeforeItAnswersLeavesItsPlaceToTheNext) {
    const Program first;
    ASSERT_TRUE(first.waitUntilUp());
    first.signal(SIGSTOP);
    const Program second;
    letPass(std::chrono::milliseconds(700));
    ASSERT_TRUE(second.isRunning()) << "it waits for an answer";
    first.signal(SIGKILL);
    EXPECT_TRUE(second.waitUntilUp());
    EXPECT_EQ(second.state(), QStringLiteral("idle"));
}

TEST_F(InstanceTest, TheCommandLineAnswersWithoutStartingAnything) {
    EXPECT_EQ(Program::call({QStringLiteral("--version")}).output,
              QStringLiteral("Parlivo " PARLIVO_TEST_VERSION "\n"));
    const Outcome help = Program::call({QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--press", "--release", "--toggle", "--settings", "--feedback", "--quit"}) {
        EXPECT_TRUE(help.output.contains(QLatin1String(option))) << option;
    }
    const Outcome wrong = Program::call({QStringLiteral("--pres")});
    EXPECT_EQ(wrong.status, 1);
    EXPECT_TRUE(wrong.errors.contains(QStringLiteral("--pres"))) << qPrintable(wrong.errors);
}

TEST_F(InstanceTest, WithoutABusALockKeepsItAlone) {
    StubRecogniser stub(QStringLiteral("senza bus"));
    const Program program(builtBundle(), withoutBus());
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(waitFor([] {
        return QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/Parlivo.lock"));
    }));

    for (const QStringList& arguments : {QStringList(), QStringList{QStringLiteral("--toggle")}}) {
        const Outcome second = Program::call(arguments, builtBundle(), withoutBus());
        EXPECT_EQ(second.status, 1);
        EXPECT_EQ(
            second.errors,
            QStringLiteral("Parlivo: controllo non disponibile: questa sessione non ha un bus D-Bus\n"));
    }
    // The key works without a bus. It may not have been grabbed yet when the lock was taken.
    ASSERT_TRUE(waitFor([&] {
        press();
        letPass(std::chrono::milliseconds(400));
        release();
        return stub.recordings() > 0;
    }));
    EXPECT_TRUE(waitFor([&] { return receiver.text().endsWith(QStringLiteral("senza bus")); }))
        << qPrintable(receiver.text());
}

TEST_F(InstanceTest, ABusThatRefusesTheNameIsNotTakenForAMissingInstance) {
    const RefusingBus bus;
    const Outcome alone = Program::call({QStringLiteral("--toggle")}, builtBundle(), bus.environment());
    EXPECT_EQ(alone.errors, QStringLiteral("Parlivo: non è in esecuzione\n"));

    const Program program(builtBundle(), bus.environment());
    ASSERT_TRUE(waitFor([] { return home::log().contains(QStringLiteral("sessione: ")); }));
    for (const QStringList& arguments : {QStringList(), QStringList{QStringLiteral("--toggle")}}) {
        const Outcome second = Program::call(arguments, builtBundle(), bus.environment());
        EXPECT_EQ(second.status, 1);
        EXPECT_EQ(second.errors,
                  QStringLiteral("Parlivo: controllo non disponibile: il bus D-Bus di questa sessione "
                                 "rifiuta il nome it.parlivo.Parlivo\n"));
    }
    EXPECT_TRUE(program.isRunning());
}

TEST_F(InstanceTest, AskedToEndItLeavesEverythingAsItWas) {
    const QByteArray keys = keyboardMap();
    ASSERT_FALSE(keys.isEmpty());
    home::provideModels();
    Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(Program::waitUntilServed(QStringLiteral("http://127.0.0.1:8765/")));
    dictate(program, phrase(QStringLiteral("s05")));
    ASSERT_TRUE(receiver.waitForText(QStringLiteral("La città è molto bella."), engineTimeout))
        << qPrintable(receiver.text());
    EXPECT_NE(keyboardMap(), keys) << "the accents need keys of their own";
    ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));

    press();
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(), 0);
    release();
    EXPECT_EQ(processesNamed(QStringLiteral("whisper-server")), std::vector<pid_t>());
    EXPECT_EQ(home::recordings(), QStringList());
    EXPECT_EQ(recordingStreams(), QStringList());
    EXPECT_EQ(keyboardMap(), keys);
}

TEST_F(InstanceTest, AskedToEndWhileTypingItEndsAtOnceAndHoldsNoKey) {
    const QByteArray keys = keyboardMap();
    StubRecogniser stub(QString(1500, QLatin1Char('x')));
    home::set(QStringLiteral("typingSpeed"), QStringLiteral("natural"));
    Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    dictateSilence(program);
    ASSERT_TRUE(waitFor([&] { return receiver.text().size() > 3; }));
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_LT(receiver.text().size(), 1500);
    EXPECT_EQ(keyboardMap(), keys);
    for (int key = 8; key < 256; ++key) {
        EXPECT_FALSE(keyboard_.isDown(static_cast<xcb_keycode_t>(key))) << key;
    }
}

TEST_F(InstanceTest, AnIdleProgramHoldsNoMicrophone) {
    StubRecogniser stub(QStringLiteral("zitto"));
    const Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    EXPECT_EQ(recordingStreams(), QStringList());
    press();
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
    EXPECT_EQ(recordingStreams().size(), 1);
    release();
    EXPECT_TRUE(waitFor([] { return recordingStreams().isEmpty(); }));
}

}  // namespace
}  // namespace parlivo::desktop
