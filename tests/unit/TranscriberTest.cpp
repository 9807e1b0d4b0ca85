// SPDX-License-Identifier: MIT
#include "EngineTest.h"
#include "engines/Transcriber.h"
#include "support/Error.h"

#include <QJsonObject>
#include <QRegularExpression>

#include <random>

namespace parlivo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

StubReply textReply(const QString& text) {
    return StubReply::json({{QStringLiteral("text"), text}});
}

class TranscriberTest : public EngineTest {
  protected:
    TranscriberTest()
        : wav(writeFile(QStringLiteral("recording.wav"), golden(QStringLiteral("recording.wav")))) {
        server.on("/", StubReply::body("<html></html>", 200, "text/html"));
        server.on("/inference", textReply(QStringLiteral("Ciao")));
    }

    /// The form as it went out, its random boundary replaced by the golden files' one.
    QByteArray sentForm() {
        Transcriber::transcribe(wav);
        const auto requests = server.requests("/inference");
        if (requests.size() != 1 || requests.front().method != "POST") return "not one POST";
        static const QRegularExpression type(QStringLiteral(
            "^multipart/form-data; boundary=(Parlivo-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12})$"));
        const auto match = type.match(QString::fromLatin1(requests.front().header("Content-Type")));
        EXPECT_TRUE(match.hasMatch()) << requests.front().header("Content-Type").constData();
        QByteArray form = requests.front().body;
        return form.replace(match.captured(1).toLatin1(), "Parlivo-00000000-0000-0000-0000-000000000000");
    }

    /// The code of the failure of a transcription, 0 when it succeeds.
    int failureOf(const QString& file) {
        try {
            Transcriber::transcribe(file);
            return 0;
        } catch (const Error& error) {
            description = error.localizedDescription();
            domain = error.domain();
            return error.code();
        }
    }

    StubServer server{whisperPort};
    QString wav;
    QString description;
    QString domain;
};

TEST_F(TranscriberTest, WithoutALanguageItAsksForItalian) {
    EXPECT_EQ(sentForm(), golden(QStringLiteral("inference-it.multipart")));
}

TEST_F(TranscriberTest, TheDictionaryBecomesAGlossary) {
    store(Settings::language, QStringLiteral("it"));
    store(Settings::dictionary, QStringLiteral("Kubernetes\n Rossi\n"));
    EXPECT_EQ(sentForm(), golden(QStringLiteral("inference-it-dictionary.multipart")));
}

TEST_F(TranscriberTest, AnotherLanguageHasNoPrompt) {
    store(Settings::language, QStringLiteral("en"));
    EXPECT_EQ(sentForm(), golden(QStringLiteral("inference-en.multipart")));
}

TEST_F(TranscriberTest, AnotherLanguageHasTheGlossaryAlone) {
    store(Settings::language, QStringLiteral("en"));
    store(Settings::dictionary, QStringLiteral("Kubernetes\nRossi"));
    EXPECT_EQ(sentForm(), golden(QStringLiteral("inference-en-dictionary.multipart")));
}

TEST_F(TranscriberTest, ALanguageThatIsNoTextCountsAsAbsent) {
    store(Settings::language, 7);
    EXPECT_EQ(sentForm(), golden(QStringLiteral("inference-it.multipart")));
}

TEST_F(TranscriberTest, EveryRequestHasABoundaryOfItsOwn) {
    Transcriber::transcribe(wav);
    Transcriber::transcribe(wav);
    const auto requests = server.requests("/inference");
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_NE(requests[0].header("Content-Type"), requests[1].header("Content-Type"));
}

TEST_F(TranscriberTest, ALongDictionaryIsSentWhole) {
    QStringList terms;
    for (int i = 0; i < 10'000; ++i) terms.append(QStringLiteral("termine%1").arg(i));
    store(Settings::dictionary, terms.join(QLatin1Char('\n')));
    EXPECT_TRUE(sentForm().contains("termine0, termine1,"));
    EXPECT_TRUE(server.requests("/inference").front().raw.contains("termine9999.\r\n"));
}

TEST_F(TranscriberTest, ALongRecordingIsSentWhole) {
    QByteArray samples(19'200'044, '\0');  // ten minutes
    std::mt19937 random(3);
    for (char& byte : samples) byte = static_cast<char>(random());
    Transcriber::transcribe(writeFile(QStringLiteral("long.wav"), samples));
    EXPECT_TRUE(server.requests("/inference").front().body.contains(samples));
}

TEST_F(TranscriberTest, TheReplyIsTidied) {
    const std::vector<std::pair<QString, QString>> cases = {
        {QStringLiteral(" Ciao,\n  mondo "), QStringLiteral("Ciao, mondo")},
        {QStringLiteral("uno\ndue"), QStringLiteral("unodue")},
        {QStringLiteral("uno\r\ndue\r"), QStringLiteral("unodue")},
        {QStringLiteral("uno   due"), QStringLiteral("uno due")},
        {QStringLiteral("\t uno\tdue \t"), QStringLiteral("uno\tdue")},
        {QStringLiteral(" \n \r "), QString()},
        {QString(), QString()},
        {QStringLiteral("perché\u00a0no 👍🏽"), QStringLiteral("perché\u00a0no 👍🏽")},
        {QString(100'000, QLatin1Char('a')), QString(100'000, QLatin1Char('a'))},
    };
    for (const auto& [reply, expected] : cases) {
        server.on("/inference", textReply(reply));
        EXPECT_EQ(Transcriber::transcribe(wav), expected) << qPrintable(reply.left(40));
    }
}

TEST_F(TranscriberTest, TheStatusOfTheReplyDoesNotCount) {
    server.on("/inference", StubReply::json({{QStringLiteral("text"), QStringLiteral("Ciao")}}, 500));
    EXPECT_EQ(Transcriber::transcribe(wav), QStringLiteral("Ciao"));
}

TEST_F(TranscriberTest, AReplyInChunksIsAReply) {
    server.on("/inference", StubReply{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                      "8\r\n{\"text\":\r\n7;x=y\r\n\"Ciao\"}\r\n0\r\nTrailer: x\r\n\r\n",
                                      StubReply::Manner::OneByOne, milliseconds(1)});
    EXPECT_EQ(Transcriber::transcribe(wav), QStringLiteral("Ciao"));
}

TEST_F(TranscriberTest, ABrokenReplyIsAnInvalidReply) {
    const auto replies = brokenReplies("{\"text\":\"Ciao\"}");
    for (const auto& [name, reply] : replies) {
        server.on("/inference", reply);
        EXPECT_EQ(failureOf(wav), 4) << name;
        EXPECT_EQ(description, QStringLiteral("risposta whisper-server non valida")) << name;
        EXPECT_EQ(domain, QStringLiteral("Parlivo")) << name;
    }
    EXPECT_EQ(server.requests("/inference").size(), replies.size()) << "each asked once";
}

TEST_F(TranscriberTest, AReplyWithoutATextIsAnInvalidReply) {
    for (const char* reply :
         {"{}", "{\"text\":5}", "{\"text\":null}", "{\"text\":[\"Ciao\"]}", "{\"text\":{\"text\":\"Ciao\"}}",
          "{\"Text\":\"Ciao\"}", "{\"error\":\"no\"}"}) {
        server.on("/inference", StubReply::body(reply));
        EXPECT_EQ(failureOf(wav), 4) << reply;
    }
}

TEST_F(TranscriberTest, AServerThatNeverRepliesIsGivenUp) {
    server.on("/inference", silence());
    hurry();
    int code = 0;
    EXPECT_GE(statedTimeOf([&] { code = failureOf(wav); }), seconds(114)) << "the longest silence";
    EXPECT_EQ(code, 4);
}

TEST_F(TranscriberTest, AServerThatRepliesTooSlowlyIsGivenUp) {
    server.on("/inference", StubReply{textReply(QString(100'000, QLatin1Char('a'))).bytes,
                                      StubReply::Manner::OneByOne, milliseconds(10)});
    hurry();
    int code = 0;
    // It takes 125 s, or 120 of silence where the machine itself stands still for that long in hurried time.
    EXPECT_GE(statedTimeOf([&] { code = failureOf(wav); }), seconds(120)) << "whatever the progress";
    EXPECT_EQ(code, 4);
}

TEST_F(TranscriberTest, TheEndOfTheProgramEndsTheWaitForAReply) {
    server.on("/inference", silence());
    int code = 0;
    std::thread pipeline([&] { code = failureOf(wav); });
    EXPECT_TRUE(server.waitForRequests("/inference", 1));
    Clock::interruptAll();
    pipeline.join();
    EXPECT_EQ(code, 4);
}

TEST_F(TranscriberTest, AnUnreadableRecordingIsReportedAsSuch) {
    EXPECT_NE(failureOf(folder.filePath(QStringLiteral("gone.wav"))), 0);
    EXPECT_NE(domain, QStringLiteral("Parlivo"));
    EXPECT_TRUE(description.contains(QStringLiteral("gone.wav"))) << qPrintable(description);
    EXPECT_NE(failureOf(folder.path()), 0) << "a folder";
    EXPECT_TRUE(server.requests("/inference").empty());
}

TEST_F(TranscriberTest, AServerOfOthersIsUsedWhateverItsStatus) {
    for (const int status : {200, 404, 503}) {
        server.on("/", StubReply::body("no", status, "text/plain"));
        EXPECT_EQ(Transcriber::transcribe(wav), QStringLiteral("Ciao")) << status;
    }
    EXPECT_TRUE(platform.systemLog().lines().isEmpty()) << "nothing was started";
}

TEST_F(TranscriberTest, AnyReplyGivesATextOrAnError) {
    const QByteArray valid =
        R"({"text":" Perch\u00e9 \"no\"?\n👍 ","segments":[{"id":1,"t":[0.5,-1e3,true,null]}]})";
    std::mt19937 random(20);
    for (int round = 0; round < 400; ++round) {
        QByteArray body = valid;
        for (unsigned change = 0; change <= random() % 4; ++change) {
            const auto at = static_cast<qsizetype>(random() % static_cast<unsigned>(body.size()));
            switch (random() % 4) {
                case 0:
                    body[at] = static_cast<char>(random());
                    break;
                case 1:
                    body.remove(at, static_cast<qsizetype>(random() % 9));
                    break;
                case 2:
                    body.insert(at, body.mid(at / 2, static_cast<qsizetype>(random() % 9)));
                    break;
                default:
                    body.insert(at, "\\{}[]\",:\0"[random() % 10]);
            }
            if (body.isEmpty()) body = "{";
        }
        server.on("/inference", StubReply::body(body));
        const int code = failureOf(wav);
        EXPECT_TRUE(code == 0 || code == 4) << body.constData();
    }
}

}  // namespace
}  // namespace parlivo
