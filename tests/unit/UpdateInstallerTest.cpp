#include "UpdateTest.h"
#include "support/FileSizeLimit.h"
#include "update/UpdateInstaller.h"
#include "update/ZipNames.h"

#include <QProcess>

#include <functional>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

class UpdateInstallerTest : public UpdateTest {
  protected:
    QString archive(const QByteArray& bytes) const {
        QString path = platform.directories().temporary() + u"/arrived.zip"_s;
        write(path, bytes);
        return path;
    }

    static std::optional<Error> failureOf(const std::function<void()>& job) {
        try {
            job();
        } catch (const Error& error) {
            return error;
        }
        return std::nullopt;
    }

    std::optional<Error> install(const QByteArray& zip) const {
        return failureOf([&] { installUpdate(archive(zip), zip.size()); });
    }
    std::optional<Error> install(const std::vector<ZipEntry>& entries) const {
        return install(zipOf(entries));
    }

    void expectRefusal(const std::optional<Error>& failure, ErrorCode code, const QString& text) const {
        ASSERT_TRUE(failure.has_value());
        EXPECT_TRUE(failure->is(code)) << failure->what();
        EXPECT_EQ(failure->localizedDescription(), text);
        EXPECT_TRUE(isUntouched());
    }
    void expectRefusedExtraction(const std::optional<Error>& failure) const {
        expectRefusal(failure, ErrorCode::UpdateExtractionFailed, u"Estrazione aggiornamento fallita"_s);
        EXPECT_TRUE(QDir(platform.directories().temporary())
                        .entryList({u"parlivo-update-*"_s}, QDir::AllEntries)
                        .isEmpty());
    }
    void expectRefusedBundle(const std::vector<ZipEntry>& entries) const {
        expectRefusal(install(entries), ErrorCode::UpdateBundleInvalid, u"Bundle aggiornamento non valido"_s);
        EXPECT_EQ(temporaryFiles(), QStringList());
    }
};

/// Tools of which one may be spied on.
class WatchedTools : public LinuxBundleTools {
  public:
    Outcome unpack(const QString& zip, const QString& folder) override {
        ++unpacked;
        return LinuxBundleTools::unpack(zip, folder);
    }
    Outcome mirror(const QString& source, const QString& destination) override {
        ++mirrored;
        if (!diskIsFull) return LinuxBundleTools::mirror(source, destination);
        const FileSizeLimit limit(16 << 10);
        return LinuxBundleTools::mirror(source, destination);
    }

    int unpacked = 0;
    int mirrored = 0;
    bool diskIsFull = false;
};

TEST_F(UpdateInstallerTest, TheNewBundleTakesThePlaceOfTheOldOne) {
    const auto failure = install(newBundle({{"Parlivo.app/Contents/Resources/link", "new", 0120777}}));
    EXPECT_FALSE(failure.has_value()) << failure->what();
    const auto after = contents(running());
    EXPECT_EQ(after.at(u"Contents/MacOS/Parlivo"_s), "new program");
    EXPECT_EQ(after.at(u"Contents/Info.plist"_s), "new version");
    EXPECT_EQ(after.at(u"Contents/Resources/new"_s), "here at last");
    EXPECT_EQ(after.at(u"Contents/Resources/link"_s),
              "-> " + (running() + u"/Contents/Resources/new"_s).toUtf8());
    EXPECT_FALSE(after.contains(u"Contents/Resources/old"_s)) << "the new version does not have it";
    EXPECT_TRUE(QFileInfo(running() + u"/Contents/MacOS/Parlivo"_s).isExecutable());
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(UpdateInstallerTest, AnotherSizeIsRefusedBeforeAnythingIsUnpacked) {
    WatchedTools watched;
    platform.bundleTools().real = &watched;
    const QByteArray zip = zipOf(newBundle());
    const QString text = u"Aggiornamento corrotto (dimensione inattesa)"_s;
    for (const qint64 expected : {zip.size() + 1, zip.size() - 1, qint64{0}, qint64{-1}}) {
        expectRefusal(failureOf([&] { installUpdate(archive(zip), expected); }), ErrorCode::UpdateCorrupted,
                      text);
    }
    EXPECT_EQ(watched.unpacked, 0);
}

TEST_F(UpdateInstallerTest, AnArchiveThatIsGoneIsTheSystemsFailure) {
    const auto failure = failureOf([&] { installUpdate(place.filePath(u"gone.zip"_s), 10); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->domain(), u"POSIX"_s);
    EXPECT_TRUE(isUntouched());
}

TEST_F(UpdateInstallerTest, WhatIsNoZipIsRefused) {
    const QByteArray sound = zipOf(newBundle());
    QByteArray damaged = sound;
    damaged.replace("new program", "NEW program");
    for (const QByteArray& zip : {QByteArray("<html>404</html>"), QByteArray(), QByteArray(5 << 20, 'x'),
                                  sound.first(sound.size() - 1), sound.first(sound.size() / 2), damaged}) {
        expectRefusedExtraction(install(zip));
    }
}

TEST_F(UpdateInstallerTest, APathThatLeadsOutIsRefused) {
    for (const QByteArray& name :
         {QByteArray("../out"), QByteArray("Parlivo.app/../../out"), QByteArray("Parlivo.app/Contents/.."),
          QByteArray("/tmp/out"), place.filePath(u"out"_s).toUtf8()}) {
        expectRefusedExtraction(install(newBundle({{name, "here I am"}})));
        EXPECT_FALSE(QFileInfo::exists(place.filePath(u"out"_s)));
        EXPECT_FALSE(QFileInfo::exists(platform.directories().temporary() + u"/out"_s));
    }
}

TEST_F(UpdateInstallerTest, ALinkThatLeadsOutIsRefused) {
    write(place.filePath(u"secret"_s), "mine");
    const QByteArray outside = place.path().toUtf8();
    for (const QByteArray& target :
         {outside, outside + "/secret", QByteArray("/"), QByteArray("../../../update.zip"), QByteArray(".."),
          QByteArray("nothing"), QByteArray("link")}) {
        SCOPED_TRACE(target.toStdString());
        expectRefusedBundle(newBundle({{"Parlivo.app/link", target == ".." ? "../.." : target, 0120777}}));
    }
}

TEST_F(UpdateInstallerTest, AFileBehindALinkIsNotWritten) {
    const QByteArray outside = place.path().toUtf8();
    expectRefusedExtraction(install(newBundle(
        {{"Parlivo.app/link", outside, 0120777}, {"Parlivo.app/link/planted", "here I am", 0100644}})));
    EXPECT_FALSE(QFileInfo::exists(place.filePath(u"planted"_s)));
}

TEST_F(UpdateInstallerTest, ABundleThatIsALinkIsRefused) {
    write(place.filePath(u"Other.app/Contents/MacOS/Parlivo"_s), "other");
    QFile::setPermissions(place.filePath(u"Other.app/Contents/MacOS/Parlivo"_s),
                          QFile::ReadOwner | QFile::ExeOwner);
    expectRefusedBundle({{"Parlivo.app", place.filePath(u"Other.app"_s).toUtf8(), 0120777}});
}

TEST_F(UpdateInstallerTest, WithoutABundleOrItsProgramItIsRefused) {
    const std::vector<std::vector<ZipEntry>> archives{
        {{"readme.txt", "hello"}},
        {{"Other.app/Contents/MacOS/Parlivo", "x", 0100755}},
        {{"folder/Parlivo.app/Contents/MacOS/Parlivo", "x", 0100755}},
        {{"Parlivo.app/Contents/Info.plist", "x"}},
        {{"Parlivo.app/Contents/MacOS/Parlivo/", "", 040755}},
        {{"Parlivo.app/Contents/MacOS/Parlivo", "cannot be started", 0100644}},
    };
    for (const auto& entries : archives) {
        SCOPED_TRACE(entries[0].name.toStdString());
        expectRefusedBundle(entries);
    }
}

TEST_F(UpdateInstallerTest, WithoutItsToolsItIsRefused) {
    LinuxBundleTools withoutUnzip({.unzip = u"/nonexistent/unzip"_s});
    LinuxBundleTools withoutRsync({.rsync = u"/nonexistent/rsync"_s});
    for (LinuxBundleTools* lacking : {&withoutUnzip, &withoutRsync}) {
        platform.bundleTools().real = lacking;
        const auto failure = install(newBundle());
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->domain(), u"Process"_s);
        EXPECT_TRUE(isUntouched());
        EXPECT_EQ(temporaryFiles(), QStringList());
    }
}

TEST_F(UpdateInstallerTest, AReplacementThatFailsIsTold) {
    LinuxBundleTools failing({.rsync = u"/bin/false"_s});
    platform.bundleTools().real = &failing;
    expectRefusal(install(newBundle()), ErrorCode::UpdateReplacementFailed, u"Sostituzione app fallita"_s);
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(UpdateInstallerTest, AFullDiskWhileUnpackingLeavesTheOldOne) {
    const QByteArray zip =
        zipOf(newBundle({{"Parlivo.app/Contents/Resources/big", QByteArray(64 << 10, 'x')}}));
    const QString arrived = archive(zip);
    const FileSizeLimit limit(16 << 10);
    expectRefusedExtraction(failureOf([&] { installUpdate(arrived, zip.size()); }));
}

TEST_F(UpdateInstallerTest, AFullDiskWhileReplacingLeavesWhatWasTheOldOne) {
    WatchedTools watched;
    watched.diskIsFull = true;
    platform.bundleTools().real = &watched;
    // The one that is too big comes first, and a file is replaced as a whole or not at all.
    const auto failure = install(newBundle({{"Parlivo.app/Contents/Big", QByteArray(64 << 10, 'x')}}));
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(failure->is(ErrorCode::UpdateReplacementFailed)) << failure->what();
    EXPECT_EQ(temporaryFiles(), QStringList());
    const auto after = contents(running());
    for (const auto& [name, content] : after) {
        const bool whole = !before.contains(name) || content == before.at(name) || content.startsWith("new");
        EXPECT_TRUE(whole) << name.toStdString();
    }
    EXPECT_TRUE(after.contains(u"Contents/MacOS/Parlivo"_s));
}

TEST_F(UpdateInstallerTest, WhereTheProgramStandsWithoutABundleNothingIsReplaced) {
    WatchedTools watched;
    platform.bundleTools().real = &watched;
    platform.bundle().place = place.path();
    const auto around = contents(place.path());
    expectRefusal(install(newBundle()), ErrorCode::UpdateReplacementFailed, u"Sostituzione app fallita"_s);
    EXPECT_EQ(watched.mirrored, 0);
    EXPECT_EQ(contents(place.path()), around);
}

TEST_F(UpdateInstallerTest, WithoutAPlaceForTemporaryFilesItIsTheSystemsFailure) {
    const QByteArray zip = zipOf(newBundle());
    const QString elsewhere = place.filePath(u"arrived.zip"_s);
    write(elsewhere, zip);
    const QString temporary = platform.directories().temporary();
    ASSERT_TRUE(QDir(temporary).removeRecursively());
    write(temporary, "in the way");
    const auto failure = failureOf([&] { installUpdate(elsewhere, zip.size()); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->domain(), u"POSIX"_s);
    EXPECT_TRUE(isUntouched());
    QFile::remove(temporary);
}

TEST(ZipNamesTest, AreReadFromTheDirectory) {
    const QTemporaryDir folder;
    const auto namesOf = [&](const QByteArray& zip) {
        QFile file(folder.filePath(u"a.zip"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(zip);
        file.close();
        return zipNames(file.fileName());
    };
    const QByteArray zip = zipOf({{"a", "1"}, {"b/c", "22"}, {"d/", ""}});
    EXPECT_EQ(namesOf(zip), (std::vector<QByteArray>{"a", "b/c", "d/"}));
    EXPECT_EQ(namesOf(zip + "a comment"), (std::vector<QByteArray>{"a", "b/c", "d/"}));
    EXPECT_EQ(namesOf(zipOf({})), std::vector<QByteArray>());
    // However it is cut or overwritten, it is read as something or refused, never read beyond its end.
    for (qsizetype i = 0; i < zip.size(); ++i) {
        namesOf(zip.mid(i));
        QByteArray wrong = zip;
        wrong[i] = '\xff';
        namesOf(wrong);
    }
    EXPECT_EQ(namesOf({}), std::nullopt);
    EXPECT_EQ(zipNames(folder.filePath(u"none.zip"_s)), std::nullopt);
}

/// The shell gets the bundle's path as one word, whatever is in it.
TEST(RelaunchTest, NoPathIsACommand) {
    const QTemporaryDir folder;
    const QString shell = folder.filePath(u"sh"_s);
    const QString heard = folder.filePath(u"heard"_s);
    {
        QFile script(shell);
        ASSERT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf '%s' \"$2\" >'" + heard.toUtf8() + ".part'\nmv '" + heard.toUtf8() +
                     ".part' '" + heard.toUtf8() + "'\n");
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    for (const QString& name :
         {u"Le mie app"_s, u"d'oro"_s, u"''"_s, u"\"due\""_s, u"$HOME $(touch /tmp/x) `id`"_s, u"a;b&c|d"_s,
          u"\\"_s, u"riga\nnuova"_s, u"*?[a]"_s, u"-n"_s, u"~"_s, u"città"_s}) {
        QFile::remove(heard);
        LinuxBundleTools tools({.shell = shell});
        const QString bundle = u"/tmp/"_s + name + u"/Parlivo.app"_s;
        tools.startAfterEnd(bundle);
        ASSERT_TRUE(desktop::waitFor([&] { return QFile::exists(heard); }));
        QFile file(heard);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString script = QString::fromUtf8(file.readAll());
        const auto command = script.indexOf(u"exec "_s);
        ASSERT_GE(command, 0) << script.toStdString();

        QProcess words;
        words.start(u"/bin/sh"_s, {u"-c"_s, u"printf '<%s>' "_s + script.mid(command + 5)});
        ASSERT_TRUE(words.waitForFinished());
        EXPECT_EQ(QString::fromUtf8(words.readAllStandardOutput()),
                  u'<' + bundle + u"/Contents/MacOS/Parlivo>"_s);
    }
}

}  // namespace
}  // namespace parlivo
