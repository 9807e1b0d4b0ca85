// SPDX-License-Identifier: MIT
#include "Demo.h"
#include "RealEngineTest.h"
#include "engines/Transcriber.h"
#include "settings/Config.h"

#include <QTemporaryDir>

namespace parlivo {
namespace {

class RecognitionTest : public RealEngineTest {
  protected:
    RecognitionTest() {
        platform.bundle().resources = {
            {QStringLiteral("whisper-server"), demo::engine(QStringLiteral("whisper-server"))},
            {QStringLiteral("ggml-model.bin"), demo::file(QStringLiteral("ggml-model.bin"))}};
    }
    ~RecognitionTest() override { Transcriber::stopServer(); }

    static void expectAllPhrases() {
        const QTemporaryDir folder;
        for (const demo::Phrase& phrase : demo::phrases()) {
            EXPECT_EQ(Transcriber::transcribe(demo::speak(phrase, folder.path())), phrase.raw)
                << qPrintable(phrase.id);
        }
    }
};

TEST_F(RecognitionTest, EveryPhraseComesOutExact) {
    expectAllPhrases();
}

TEST_F(RecognitionTest, EveryPhraseComesOutExactWithAGlossary) {
    store(Settings::dictionary, QStringLiteral("Kubernetes\nRossi"));
    expectAllPhrases();
}

}  // namespace
}  // namespace parlivo
