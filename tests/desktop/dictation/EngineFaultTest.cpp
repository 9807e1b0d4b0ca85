// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"

#include <QDir>
#include <QFileInfo>

namespace parlivo::desktop {
namespace {

const QString invalidReply = QStringLiteral("risposta whisper-server non valida");
const QString noServer = QStringLiteral("whisper-server non risponde");
const QString whisperServer = QStringLiteral("whisper-server");

StubReply json(const QByteArray& text) {
    return StubReply::body(text);
}

struct Fault {
    const char* name;
    StubReply reply;
};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.name;
}

/// A recogniser that answers what it should not.
class ReplyFault : public ProgramTest, public testing::WithParamInterface<Fault> {};

TEST_P(ReplyFault, IsReportedAndLeavesNothing) {
    home::settle();
    StubRecogniser stub;
    const Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    stub.answer(GetParam().reply);
    expectComplaint(program, invalidReply);
    EXPECT_TRUE(home::log().contains(QStringLiteral("ERRORE pipeline: ") + invalidReply));
    expectDictation(program, receiver, stub, QStringLiteral("ora va"));
}

INSTANTIATE_TEST_SUITE_P(
    Replies, ReplyFault,
    testing::Values(Fault{"Html", StubReply::body("<html>Bad Gateway</html>", 502, "text/html")},
                    Fault{"JsonThatBreaksOff", StubReply::cutOff("{\"text\":\"ciao", 40)},
                    Fault{"JsonWithoutEnd", json("{\"text\":\"ciao")},
                    Fault{"FiftyMegabytes", json("{\"text\":\"" + QByteArray(50 << 20, 'a') + "\"}")},
                    Fault{"InvalidUtf8", json("{\"text\":\"citt\xe0\"}")},
                    Fault{"NumberAsText", json("{\"text\":42}")},
                    Fault{"NoReply", StubReply::of(StubReply::Manner::ResetAtOnce)}),
    [](const auto& fault) { return std::string(fault.param.name); });

class EngineFault : public ProgramTest {
  protected:
    EngineFault() {
        home::provideModels();
        home::settle();
    }

    /// The server is waited for in vain. Whatever is wrong with it, it may come right.
    void expectWaitForNoServer(const Program& program) {
        dictateSilence(program);
        EXPECT_TRUE(waitFor([&] { return program.statusText() == QStringLiteral("⚠️ ") + noServer; },
                            std::chrono::seconds(50)))
            << qPrintable(program.statusText());
        expectNothingLeft(program);
    }
    /// The real engine, with the demonstration's model.
    void expectRecovery(const Program& program, const Receiver& receiver) {
        dictate(program, phrase(QStringLiteral("s08")));
        EXPECT_TRUE(receiver.waitForText(QStringLiteral("Apri il documento."), engineTimeout))
            << qPrintable(program.statusText());
        expectNothingLeft(program);
    }
    /// From a start with a recogniser that cannot serve, to a dictation once there is a good one.
    void expectToldAndRecoveredFrom(const BundleCopy& bundle) {
        const Program program(bundle.path());
        const Receiver receiver(Receiver::Kind::Qt);
        ASSERT_TRUE(program.waitUntilUp());
        expectWaitForNoServer(program);
        bundle.putEngine(whisperServer, demo::engine(whisperServer));
        expectRecovery(program, receiver);
    }
};

TEST_F(EngineFault, AServerThatIsNotThereIsWaitedForAndThenTold) {
    const BundleCopy bundle;
    expectToldAndRecoveredFrom(bundle);
}

TEST_F(EngineFault, AServerThatMayNotBeRunIsWaitedForAndThenTold) {
    const BundleCopy bundle;
    bundle.putEngine(whisperServer, "#!/bin/sh\n", QFile::ReadOwner | QFile::WriteOwner);
    expectToldAndRecoveredFrom(bundle);
}

TEST_F(EngineFault, AServerThatDiesAtItsStartIsNotStartedOverAndOver) {
    const BundleCopy bundle;
    bundle.putEngine(whisperServer, "#!/bin/sh\necho >>\"$HOME/starts\"\nexit 1\n",
                     QFile::ReadOwner | QFile::ExeOwner);
    expectToldAndRecoveredFrom(bundle);
    EXPECT_EQ(QFileInfo(QDir::home().filePath(QStringLiteral("starts"))).size(), 2)
        << "once when the program started, once for the dictation";
}

/// Serves like an engine until it is asked for something, and dies of that.
const char* const dyingServer = R"(#!/usr/bin/python3
import http.server, os
class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.send_response(200)
        self.end_headers()
    def do_POST(self):
        os.kill(os.getpid(), 9)
http.server.HTTPServer.allow_reuse_port = True  # as whisper-server does
http.server.HTTPServer(("127.0.0.1", 8765), Handler).serve_forever()
)";

TEST_F(EngineFault, AServerThatDiesOfARequestIsReplaced) {
    const BundleCopy bundle;
    bundle.putEngine(whisperServer, dyingServer, QFile::ReadOwner | QFile::ExeOwner);
    const Program program(bundle.path());
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(Program::waitUntilServed(QStringLiteral("http://127.0.0.1:8765/")));
    expectComplaint(program, invalidReply);
    bundle.putEngine(whisperServer, demo::engine(whisperServer));
    expectRecovery(program, receiver);
}

TEST_F(EngineFault, AnotherProgramOnThePortIsTakenForTheServerUntilItIsGone) {
    auto other = std::make_unique<StubServer>(8765);
    const Program program;
    const Receiver receiver(Receiver::Kind::Qt);
    ASSERT_TRUE(program.waitUntilUp());
    expectComplaint(program, invalidReply);
    other.reset();
    expectRecovery(program, receiver);
}

}  // namespace
}  // namespace parlivo::desktop
