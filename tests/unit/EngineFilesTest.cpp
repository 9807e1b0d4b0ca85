// SPDX-License-Identifier: MIT
#include "EngineProcessFixture.h"

#include <QDir>
#include <QFileInfo>

namespace parlivo {
namespace {

/// Engines that do not come up, with libraries of which one is missing or damaged.
class EngineFilesTest : public EngineProcessTest {
  protected:
    EngineFilesTest() {
        hurry();
        installWhisper({{QStringLiteral("exitAtStart"), 1}});
        installLlama({{QStringLiteral("exitAtStart"), 1}});
        EXPECT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("engine")));
        for (const char* name : {"server", "libggml-base.so.0", "libggml-cpu-x64.so", "libwhisper.so.1"}) {
            EXPECT_TRUE(QFile::copy(stubEngine(), path(QString::fromLatin1(name))));
        }
        // As in the bundle, where the engines are links.
        EXPECT_TRUE(QFile::link(path(QStringLiteral("server")), folder.filePath(QStringLiteral("link"))));
        for (const char* name : {"whisper-server", "llama-server"}) {
            platform.bundle().resources[QString::fromLatin1(name)] = folder.filePath(QStringLiteral("link"));
        }
    }

    QString path(const QString& name) const {
        return QDir(folder.path()).canonicalPath() + QStringLiteral("/engine/") + name;
    }
    void cut(const QString& name, qint64 length) {
        ASSERT_LT(length, wholeSize);
        ASSERT_TRUE(QFile::resize(path(name), length));
    }
    void mend(const QString& name) {
        ASSERT_TRUE(QFile::remove(path(name)) && QFile::copy(stubEngine(), path(name)));
    }
    static QString incomplete(const QString& what) {
        return QStringLiteral("motore incompleto (%1): reinstalla Parlivo").arg(what);
    }
    void expectToBeNamed(const QString& name) {
        EXPECT_EQ(transcription(), QStringLiteral("error 3"));
        EXPECT_EQ(message, incomplete(name));
        EXPECT_EQ(logged().last(), incomplete(path(name)));
    }

    const qint64 wholeSize = QFileInfo(stubEngine()).size();
};

TEST_F(EngineFilesTest, WholeFilesAreNotBlamed) {
    EXPECT_EQ(transcription(), QStringLiteral("error 3"));
    EXPECT_EQ(message, QStringLiteral("whisper-server non risponde"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
    EXPECT_TRUE(logged().filter(QStringLiteral("motore")).isEmpty());
}

TEST_F(EngineFilesTest, ALibraryThatWasCutOffIsNamed) {
    const QString name = QStringLiteral("libggml-cpu-x64.so");
    for (const qint64 length : {wholeSize - 1, wholeSize / 2, qint64{64}, qint64{63}, qint64{4}, qint64{0}}) {
        cut(name, length);
        expectToBeNamed(name);
        ASSERT_FALSE(HasFailure()) << length << " bytes left";
        mend(name);
    }
    cut(QStringLiteral("libwhisper.so.1"), 1000);
    expectToBeNamed(QStringLiteral("libwhisper.so.1"));
}

TEST_F(EngineFilesTest, ALibraryOfTheCleanupEngineIsNamedInTheLog) {
    cut(QStringLiteral("libggml-base.so.0"), 1000);
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
    EXPECT_EQ(logged().last(), incomplete(path(QStringLiteral("libggml-base.so.0"))));
}

TEST_F(EngineFilesTest, AnEngineThatWasCutOffIsNamed) {
    for (const qint64 length : {wholeSize / 2, qint64{64}, qint64{10}}) {
        cut(QStringLiteral("server"), length);
        expectToBeNamed(QStringLiteral("server"));
        ASSERT_FALSE(HasFailure()) << length << " bytes left";
        mend(QStringLiteral("server"));
    }
}

TEST_F(EngineFilesTest, MissingLibrariesAreNamed) {
    ASSERT_TRUE(QFile::remove(path(QStringLiteral("libggml-cpu-x64.so"))));
    expectToBeNamed(QStringLiteral("libggml-cpu-*.so"));
}

TEST_F(EngineFilesTest, NoDamageIsLookedForInAnEngineThatComesUp) {
    installWhisper(answering(QStringLiteral("Ciao")));
    platform.bundle().resources[QStringLiteral("whisper-server")] = folder.filePath(QStringLiteral("link"));
    cut(QStringLiteral("libwhisper.so.1"), 1000);
    Clock::setScale(1);
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(logged(), QStringList());
}

TEST_F(EngineFilesTest, ALibraryOfAnotherFormIsNotBlamed) {
    writeFile(QStringLiteral("engine/libother.so"), QByteArray(100, '.'));
    EXPECT_EQ(transcription(), QStringLiteral("error 3"));
    EXPECT_EQ(message, QStringLiteral("whisper-server non risponde"));
}

TEST_F(EngineFilesTest, AWrapperOfTheEngineIsNoDamagedEngine) {
    writeFile(QStringLiteral("wrapper"), "#!/bin/sh\nexit 1\n");
    const QString wrapper = folder.filePath(QStringLiteral("wrapper"));
    QFile::setPermissions(wrapper, QFile::ReadOwner | QFile::ExeOwner);
    platform.bundle().resources[QStringLiteral("whisper-server")] = wrapper;
    EXPECT_EQ(transcription(), QStringLiteral("error 3"));
    EXPECT_EQ(message, QStringLiteral("whisper-server non risponde"));
}

}  // namespace
}  // namespace parlivo
