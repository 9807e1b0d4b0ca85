// SPDX-License-Identifier: MIT
#include "Demo.h"
#include "RealEngineTest.h"
#include "engines/Transcriber.h"
#include "settings/Config.h"
#include "support/Error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
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

    /// Copies the engine and the libraries beside it, and cuts one off in the middle: that for the first kind
    /// of processor, or the engine itself if it was built for one kind. Returns that file.
    static QString copyAndCut(const QString& engine, const QString& folder) {
        const QFileInfo program(QFileInfo(engine).canonicalFilePath());
        const QDir copies(folder);
        QStringList names = program.dir().entryList({QStringLiteral("lib*.so*")}, QDir::Files, QDir::Name);
        names.prepend(program.fileName());
        for (const QString& name : names) {
            EXPECT_TRUE(QFile::copy(program.dir().filePath(name), copies.filePath(name)));
        }
        const QStringList kinds = names.filter(QStringLiteral("libggml-cpu-"));
        QString cut = QDir(copies.canonicalPath()).filePath(kinds.isEmpty() ? names.front() : kinds.front());
        EXPECT_TRUE(QFile::resize(cut, QFileInfo(cut).size() / 2));
        return cut;
    }

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

TEST_F(RecognitionTest, AFileOfTheEngineThatWasCutOffIsNamed) {
    const QTemporaryDir folder;
    const QString engine = demo::engine(QStringLiteral("whisper-server"));
    const QString cut = copyAndCut(engine, folder.path());
    platform.bundle().resources[QStringLiteral("whisper-server")] =
        folder.filePath(QFileInfo(QFileInfo(engine).canonicalFilePath()).fileName());
    const QString text = QStringLiteral("motore incompleto (%1): reinstalla Parlivo");
    try {
        Transcriber::transcribe(demo::speak(demo::phrases().front(), folder.path()));
        ADD_FAILURE() << "it recognises with a library that was cut off";
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::WhisperNotResponding));
        EXPECT_EQ(error.localizedDescription(), text.arg(QFileInfo(cut).fileName()));
    }
    EXPECT_EQ(logged(), QStringList{text.arg(cut)});
}

TEST_F(RecognitionTest, EveryPhraseComesOutExactWithAGlossary) {
    store(Settings::dictionary, QStringLiteral("Kubernetes\nRossi"));
    expectAllPhrases();
}

}  // namespace
}  // namespace parlivo
