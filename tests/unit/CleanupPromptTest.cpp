// SPDX-License-Identifier: MIT
#include "engines/CleanupPrompt.h"
#include "settings/Config.h"
#include "support/PlatformTest.h"

#include <QFileInfo>

namespace parlivo {
namespace {

QString golden(const QString& name) {
    QFile file(QStringLiteral(PARLIVO_GOLDEN "/") + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.fileName());
    return QString::fromUtf8(file.readAll());
}

class CleanupPromptTest : public PlatformTest {
  protected:
    static void writePrompt(const QByteArray& contents) {
        QFile file(Config::promptFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }
    static QByteArray writtenPrompt() {
        QFile file(Config::promptFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    const QString fileTemplate = golden(QStringLiteral("prompt-file.txt"));
};

TEST_F(CleanupPromptTest, EachLevelHasItsTemplate) {
    for (const auto level : {CleanupLevel::Light, CleanupLevel::Medium, CleanupLevel::High}) {
        EXPECT_EQ(Config::builtinPrompt(level), golden(QStringLiteral("prompt-%1.txt").arg(wordOf(level))));
    }
}

TEST_F(CleanupPromptTest, EachTemplateTakesInTheDictionary) {
    store(Settings::dictionary, QStringLiteral("Kubernetes\n\n Rossi "));
    for (const auto level : {CleanupLevel::Light, CleanupLevel::Medium, CleanupLevel::High}) {
        EXPECT_EQ(Config::builtinPrompt(level),
                  golden(QStringLiteral("prompt-%1-dictionary.txt").arg(wordOf(level))));
    }
}

TEST_F(CleanupPromptTest, AnyOtherLevelMeansMedium) {
    for (const char* name : {"none", "HIGH", "Light", "", " high"}) {
        store(Settings::cleanupLevel, QString::fromLatin1(name));
        EXPECT_EQ(Config::builtinPrompt(Config::get(Settings::cleanupLevel)),
                  golden(QStringLiteral("prompt-medium.txt")))
            << name;
    }
}

TEST_F(CleanupPromptTest, AMissingFileIsWrittenForItsOwnerAlone) {
    store(Settings::dictionary, QStringLiteral("Kubernetes"));
    EXPECT_EQ(Config::loadPrompt(), fileTemplate) << "the dictionary has no part in it";
    EXPECT_EQ(writtenPrompt(), fileTemplate.toUtf8());
    EXPECT_EQ(writtenPrompt().size(), 555);
    EXPECT_EQ(QFileInfo(Config::promptFile()).permissions() & 0xfff,
              QFile::Permissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser) &
                  0xfff);
}

TEST_F(CleanupPromptTest, TheUsersFileIsTakenAsItIs) {
    for (const QByteArray& own :
         {QByteArray("\n Riscrivi così: {TEXT}\n\n"), QByteArray("senza segnaposto")}) {
        writePrompt(own);
        EXPECT_EQ(Config::loadPrompt(), QString::fromUtf8(own));
        EXPECT_EQ(writtenPrompt(), own);
    }
}

TEST_F(CleanupPromptTest, ABlankOrUnreadableFileIsReplaced) {
    for (const QByteArray& useless : {QByteArray(), QByteArray(" \t\r\n\n  "), QByteArray("perch\xe9 {TEXT}"),
                                      QByteArray("{TEXT} che finisce a met\xc3")}) {
        writePrompt(useless);
        EXPECT_EQ(Config::loadPrompt(), fileTemplate) << useless.toHex().constData();
        EXPECT_EQ(writtenPrompt(), fileTemplate.toUtf8()) << useless.toHex().constData();
    }
}

TEST_F(CleanupPromptTest, WhatCannotBeWrittenIsLeft) {
    ASSERT_TRUE(QDir().mkpath(Config::promptFile() + QStringLiteral("/in the way")));
    EXPECT_EQ(Config::loadPrompt(), fileTemplate);
    EXPECT_TRUE(QFileInfo(Config::promptFile()).isDir());
}

TEST_F(CleanupPromptTest, AMissingFolderIsNoFailure) {
    QDir(QFileInfo(Config::promptFile()).path()).removeRecursively();
    EXPECT_EQ(Config::loadPrompt(), fileTemplate);
}

}  // namespace
}  // namespace parlivo
