// SPDX-License-Identifier: MIT
#include "platform/macos/MacTest.h"
#include "platform/macos/base/MacBundleTools.h"
#include "platform/macos/sound/AfconvertWavConverter.h"
#include "support/ChildProcess.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace parlivo {
namespace {

/// Paths that a shell, or a program that reads options, might take for something else.
const QStringList oddPaths{QStringLiteral("/tmp/a b"), QStringLiteral("/tmp/l'app \"nuova\""),
                           QStringLiteral("/tmp/$HOME;`x`"), QStringLiteral("/tmp/-delete è 😀"),
                           QStringLiteral("/tmp/a\nb")};

/// Programs of our own in place of the system's tools. Each notes its arguments.
class ToolsTest : public MacTest {
  protected:
    ~ToolsTest() override { ChildProcess::endAll(); }

    QString tool(const char* name, const QString& script = QStringLiteral("exit 0")) const {
        const QString path = folder.filePath(QString::fromLatin1(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nprintf '%s\\0' \"$@\" >\"$0.new\"; mv \"$0.new\" \"$0.arguments\"\n");
        file.write(script.toUtf8());
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    QStringList argumentsOf(const char* name) const {
        QFile file(folder.filePath(QString::fromLatin1(name) + QStringLiteral(".arguments")));
        if (!file.open(QIODevice::ReadOnly)) return {};
        QStringList words = QString::fromUtf8(file.readAll()).split(QChar(u'\0'));
        words.removeLast();
        return words;
    }

    QTemporaryDir folder;
};

TEST_F(ToolsTest, AfconvertGetsTheseArgumentsInThisOrder) {
    AfconvertWavConverter converter(tool("afconvert"));
    for (const QString& path : oddPaths) {
        converter.convert(path + QStringLiteral(".caf"), path + QStringLiteral(".wav"));
        EXPECT_EQ(argumentsOf("afconvert"),
                  QStringList({QStringLiteral("-f"), QStringLiteral("WAVE"), QStringLiteral("-d"),
                               QStringLiteral("LEI16@16000"), QStringLiteral("-c"), QStringLiteral("1"),
                               path + QStringLiteral(".caf"), path + QStringLiteral(".wav")}));
    }
}

TEST_F(ToolsTest, OnlyTheUserCanReadWhatAfconvertMakes) {
    const QString made = folder.filePath(QStringLiteral("made.wav"));
    AfconvertWavConverter converter(tool("afconvert", QStringLiteral("umask 022; echo RIFF >\"$8\"")));
    converter.convert(QStringLiteral("/tmp/in.caf"), made);
    EXPECT_EQ(QFileInfo(made).permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther),
              QFile::Permissions());
}

/// What the converter throws.
Error failureOf(AfconvertWavConverter converter, const QString& made) {
    try {
        converter.convert(QStringLiteral("/tmp/in.caf"), made);
    } catch (const Error& error) {
        return error;
    }
    return {ErrorCode::ConversionFailed, QStringLiteral("no error")};
}

TEST_F(ToolsTest, AFailureCarriesAfconvertsOwnWordsAndLeavesNothing) {
    const QString made = folder.filePath(QStringLiteral("made.wav"));
    const Error error =
        failureOf(AfconvertWavConverter(tool(
                      "afconvert",
                      QStringLiteral("echo half >\"$8\"; printf 'Error: è ExtAudioFileOpen' >&2; exit 3"))),
                  made);
    EXPECT_EQ(error.domain(), Error::programDomain());
    EXPECT_EQ(error.code(), 2);
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("afconvert fallito: Error: è ExtAudioFileOpen"));
    EXPECT_FALSE(QFile::exists(made));
}

TEST_F(ToolsTest, WordsThatAreNoUtf8CountAsNone) {
    const Error error =
        failureOf(AfconvertWavConverter(tool("afconvert", QStringLiteral("printf 'bad \\377' >&2; exit 1"))),
                  folder.filePath(QStringLiteral("x")));
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("afconvert fallito: "));
}

TEST_F(ToolsTest, ACrashOfAfconvertIsAFailure) {
    const Error error = failureOf(AfconvertWavConverter(tool("afconvert", QStringLiteral("kill -KILL $$"))),
                                  folder.filePath(QStringLiteral("x")));
    EXPECT_EQ(error.code(), 2);
    EXPECT_EQ(error.localizedDescription(), QStringLiteral("afconvert fallito: "));
}

TEST_F(ToolsTest, AnAfconvertThatIsNotThereGivesTheLaunchError) {
    const Error error = failureOf(AfconvertWavConverter(folder.filePath(QStringLiteral("nothing"))),
                                  folder.filePath(QStringLiteral("x")));
    EXPECT_EQ(error.domain(), QStringLiteral("Process"));
}

class BundleToolsTest : public ToolsTest {
  protected:
    MacBundleTools::Paths paths{.ditto = tool("ditto"),
                                .rsync = tool("rsync"),
                                .shell = QStringLiteral("/bin/sh"),
                                .open = tool("open")};
};

TEST_F(BundleToolsTest, DittoUnpacksTheArchiveIntoTheFolder) {
    MacBundleTools tools(paths);
    for (const QString& path : oddPaths) {
        EXPECT_EQ(tools.unpack(path + QStringLiteral("/update.zip"), path, 1), BundleTools::Outcome::Done);
        EXPECT_EQ(argumentsOf("ditto"),
                  QStringList({QStringLiteral("-xk"), path + QStringLiteral("/update.zip"), path}));
    }
}

TEST_F(BundleToolsTest, RsyncCopiesTheContentsOfOneBundleOverTheOther) {
    MacBundleTools tools(paths);
    for (const QString& path : oddPaths) {
        EXPECT_EQ(tools.replace(path + QStringLiteral("/Parlivo.app"), path), BundleTools::Replacement::Done);
        EXPECT_EQ(argumentsOf("rsync"),
                  QStringList({QStringLiteral("-a"), QStringLiteral("--delete"),
                               path + QStringLiteral("/Parlivo.app/"), path + QStringLiteral("/")}));
    }
}

TEST_F(BundleToolsTest, AToolThatFailsIsToldAndOneThatIsNotThereThrows) {
    paths.ditto = tool("ditto", QStringLiteral("exit 1"));
    paths.rsync = tool("rsync", QStringLiteral("exit 23"));
    MacBundleTools tools(paths);
    EXPECT_EQ(tools.unpack(QStringLiteral("/a"), QStringLiteral("/b"), 1), BundleTools::Outcome::Failed);
    EXPECT_EQ(tools.replace(QStringLiteral("/a"), QStringLiteral("/b")), BundleTools::Replacement::Failed);
    paths.ditto = folder.filePath(QStringLiteral("nothing"));
    EXPECT_THROW(MacBundleTools(paths).unpack(QStringLiteral("/a"), QStringLiteral("/b"), 1), Error);
}

TEST_F(BundleToolsTest, AnArchiveWithMoreInItThanAllowedIsRefused) {
    paths.ditto =
        tool("ditto",
             QStringLiteral("printf 12345 >\"$3/.hidden\"; mkdir \"$3/in\"; printf 6789 >\"$3/in/side\""));
    MacBundleTools tools(paths);
    for (const qint64 maximum : {8, 9}) {
        QTemporaryDir unpacked;
        EXPECT_EQ(tools.unpack(QStringLiteral("/a"), unpacked.path(), maximum),
                  maximum < 9 ? BundleTools::Outcome::Failed : BundleTools::Outcome::Done);
    }
    EXPECT_EQ(tools.stagingPlace(QStringLiteral("/Applications/Parlivo.app")), std::nullopt);
}

TEST_F(BundleToolsTest, TheShellWaitsASecondAndOpensTheBundle) {
    MacBundleTools::Paths recorded = paths;
    recorded.shell = tool("sh");
    recorded.open = QStringLiteral("/usr/bin/open");
    MacBundleTools(recorded).startAfterEnd(QStringLiteral("/Applications/Parlivo.app"));
    ASSERT_TRUE(desktop::waitFor([this] { return !argumentsOf("sh").isEmpty(); }));
    EXPECT_EQ(argumentsOf("sh"),
              QStringList({QStringLiteral("-c"),
                           QStringLiteral("sleep 1; /usr/bin/open '/Applications/Parlivo.app'")}));
}

TEST_F(BundleToolsTest, ABundleWithAnOddPathIsOpenedAllTheSame) {
    const QString odd = oddPaths.at(1) + oddPaths.at(2);
    MacBundleTools(paths).startAfterEnd(odd);
    ASSERT_TRUE(desktop::waitFor([this] { return !argumentsOf("open").isEmpty(); }));
    EXPECT_EQ(argumentsOf("open"), QStringList(odd));
}

}  // namespace
}  // namespace parlivo
