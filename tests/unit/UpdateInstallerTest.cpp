// SPDX-License-Identifier: MIT
#include "UpdateTest.h"
#include "platform/linux/base/ZipExtraction.h"
#include "support/Errors.h"
#include "support/FileSizeLimit.h"
#include "update/UpdateInstaller.h"

#include <QProcess>

#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
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
        return failureOf([&] { installUpdate(archive(zip), entryFor(zip), std::nullopt); });
    }
    std::optional<Error> install(const std::vector<ZipEntry>& entries) const {
        return install(zipOf(entries));
    }

    void expectRefusal(const std::optional<Error>& failure, ErrorCode code, const QString& text) const {
        ASSERT_TRUE(failure.has_value());
        EXPECT_TRUE(isError(*failure, code)) << failure->what();
        EXPECT_EQ(failure->localizedDescription(), text);
        EXPECT_TRUE(isUntouched());
        EXPECT_TRUE(isAlone());
    }
    void expectRefusedExtraction(const std::optional<Error>& failure) const {
        expectRefusal(failure, ErrorCode::UpdateExtractionFailed, u"Estrazione aggiornamento fallita"_s);
    }
    void expectRefusedBundle(const std::vector<ZipEntry>& entries) const {
        expectRefusal(install(entries), ErrorCode::UpdateBundleInvalid, u"Bundle aggiornamento non valido"_s);
    }
    QFileDevice::Permissions permissionsOf(const QString& name) const {
        return QFileInfo(running() + u"/Contents/"_s + name).permissions() &
               ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser);
    }
};

/// Tools that are spied on.
class WatchedTools : public LinuxBundleTools {
  public:
    using LinuxBundleTools::LinuxBundleTools;
    Outcome unpack(const QString& zip, const QString& folder, qint64 maximumSize) override {
        limits.push_back(maximumSize);
        return LinuxBundleTools::unpack(zip, folder, maximumSize);
    }
    Replacement replace(const QString& source, const QString& destination) override {
        ++replaced;
        return LinuxBundleTools::replace(source, destination);
    }

    std::vector<qint64> limits;  ///< bytes, one for each archive that was unpacked
    int replaced = 0;
};

constexpr QFileDevice::Permissions mode0755 = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                              QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther |
                                              QFile::ExeOther;
constexpr QFileDevice::Permissions mode0644 =
    QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther;

TEST_F(UpdateInstallerTest, TheNewBundleTakesThePlaceOfTheOldOne) {
    const auto failure = install(newBundle({{"Parlivo.app/Contents/Resources/link", "new", 0120777}}));
    EXPECT_FALSE(failure.has_value()) << failure->what();
    const auto after = contents(running());
    EXPECT_EQ(after.at(u"Contents/MacOS/Parlivo"_s), "new program");
    EXPECT_EQ(after.at(u"Contents/Info.plist"_s), propertyList(newVersion));
    EXPECT_EQ(after.at(u"Contents/Resources/new"_s), "here at last");
    EXPECT_EQ(after.at(u"Contents/Resources/link"_s),
              "-> " + (running() + u"/Contents/Resources/new"_s).toUtf8());
    EXPECT_FALSE(after.contains(u"Contents/Resources/old"_s)) << "the new version does not have it";
    EXPECT_TRUE(QFileInfo(running() + u"/Contents/MacOS/Parlivo"_s).isExecutable());
    EXPECT_TRUE(isAlone());
}

TEST_F(UpdateInstallerTest, AnotherSizeIsRefusedBeforeAnythingIsUnpacked) {
    WatchedTools watched;
    platform.bundleTools().real = &watched;
    const QByteArray zip = zipOf(newBundle());
    const QString text = u"Aggiornamento corrotto (dimensione inattesa)"_s;
    for (const qint64 expected : {zip.size() + 1, zip.size() - 1, qint64{0}, qint64{-1}}) {
        FeedEntry entry = entryFor(zip);
        entry.size = expected;
        expectRefusal(failureOf([&] { installUpdate(archive(zip), entry, std::nullopt); }),
                      ErrorCode::UpdateCorrupted, text);
    }
    EXPECT_TRUE(watched.limits.empty());
}

TEST_F(UpdateInstallerTest, AnArchiveThatIsGoneIsTheSystemsFailure) {
    const auto failure =
        failureOf([&] { installUpdate(place.filePath(u"gone.zip"_s), entryFor("x"), std::nullopt); });
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

TEST_F(UpdateInstallerTest, NothingElseMayLieBesideTheBundle) {
    for (const QByteArray& name :
         {QByteArray("LEGGIMI"), QByteArray(".nascosto"), QByteArray("Altra.app/Contents/x"),
          QByteArray("__MACOSX/"), QByteArray("parlivo.app/Contents/x")}) {
        SCOPED_TRACE(name.toStdString());
        expectRefusedBundle(newBundle({{name, {}, name.endsWith('/') ? 040755U : 0100644U}}));
    }
}

TEST_F(UpdateInstallerTest, TheUnicodeNameOfAnEntryIsHeldToTheSameRules) {
    const QByteArray name = "Parlivo.app/Contents/Resources/innocuo";
    const auto renamed = [&](const QByteArray& other) {
        return newBundle({{name, "here I am", 0100644, unicodePath(name, other)}});
    };
    for (const QByteArray& other :
         {QByteArray("../out"), QByteArray("/tmp/out"), QByteArray("Parlivo.app/../../out"),
          QByteArray("Parlivo.app/Contents/MacOS/Parlivo")}) {
        SCOPED_TRACE(other.toStdString());
        expectRefusedExtraction(install(renamed(other)));
    }
    expectRefusedBundle(renamed("out"));
    EXPECT_FALSE(install(renamed("Parlivo.app/Contents/Resources/novità")).has_value());
    EXPECT_EQ(contents(running()).at(u"Contents/Resources/novità"_s), "here I am");
    EXPECT_FALSE(contents(running()).contains(u"Contents/Resources/innocuo"_s));
}

TEST_F(UpdateInstallerTest, NamesDoNotDependOnTheLocale) {
    const QByteArray name = "Parlivo.app/Contents/Resources/perché";
    const std::string usual = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "C");
    const auto failure = install(newBundle({{name, "yes", 0100644, unicodePath(name, name)}}));
    std::setlocale(LC_ALL, usual.c_str());
    EXPECT_FALSE(failure.has_value()) << failure->what();
    EXPECT_EQ(contents(running()).at(u"Contents/Resources/perché"_s), "yes");
}

TEST_F(UpdateInstallerTest, WhateverTheirModesFilesAndFoldersCanBeUsedAndOnlyByTheirOwnerChanged) {
    const QByteArray resources = "Parlivo.app/Contents/Resources/";
    const auto failure = install(newBundle({{resources + "closed/", {}, 040000},
                                            {resources + "closed/link", "file", 0120777},
                                            {resources + "closed/file", "x", 0100000},
                                            {resources + "listed/", {}, 040444},
                                            {resources + "listed/link", "file", 0120777},
                                            {resources + "listed/file", "x", 0100200},
                                            {resources + "open/", {}, 041777},
                                            {resources + "open/tool", "x", 0106777},
                                            {resources + "open/data", "x", 0100666}}));
    ASSERT_FALSE(failure.has_value()) << failure->what();
    for (const auto& name : {u"closed"_s, u"listed"_s, u"open"_s, u"open/tool"_s})
        EXPECT_EQ(permissionsOf(u"Resources/"_s + name), mode0755) << name.toStdString();
    for (const auto& name : {u"closed/file"_s, u"listed/file"_s, u"open/data"_s})
        EXPECT_EQ(permissionsOf(u"Resources/"_s + name), mode0644) << name.toStdString();
    struct stat status = {};
    ASSERT_EQ(::stat(QFile::encodeName(running() + u"/Contents/Resources/open/tool"_s).constData(), &status),
              0);
    EXPECT_EQ(status.st_mode & 07000U, 0U) << "it would run as its owner";
}

/// As other tools may leave it.
TEST_F(UpdateInstallerTest, AFolderThatCannotBeSearchedIsRefusedUnlessNobodyIsKeptOut) {
    class ClosingTools : public LinuxBundleTools {
      public:
        Outcome unpack(const QString& zip, const QString& folder, qint64 maximumSize) override {
            const auto outcome = LinuxBundleTools::unpack(zip, folder, maximumSize);
            closed = folder + u"/Parlivo.app/Contents/Resources"_s;
            QFile::setPermissions(closed, QFile::ReadOwner);
            return outcome;
        }
        QString closed;
    } closing;
    platform.bundleTools().real = &closing;
    const auto failure = install(newBundle({{"Parlivo.app/Contents/Resources/link", "new", 0120777}}));
    if (::geteuid() == 0) {
        EXPECT_FALSE(failure.has_value()) << "root may search everything";
        return;
    }
    ASSERT_TRUE(failure.has_value());
    EXPECT_TRUE(isError(*failure, ErrorCode::UpdateBundleInvalid)) << failure->what();
    EXPECT_TRUE(isUntouched());
    QFile::setPermissions(closing.closed, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(UpdateInstallerTest, WhatIsNeitherFileNorFolderNorLinkIsRefused) {
    for (const unsigned kind : {0020000U, 0060000U, 0140000U}) {
        SCOPED_TRACE(kind);
        expectRefusedExtraction(install(newBundle({{"Parlivo.app/special", {}, kind | 0644U}})));
    }
    // libarchive takes a pipe in a zip archive for a file.
    EXPECT_FALSE(install(newBundle({{"Parlivo.app/pipe", "x", 0010644}})).has_value());
    EXPECT_EQ(contents(running()).at(u"pipe"_s), "x");
}

TEST_F(UpdateInstallerTest, TwoFilesOfOneNameAreRefused) {
    expectRefusedExtraction(install(newBundle({{"Parlivo.app/Contents/Info.plist", "another version"}})));
}

TEST_F(UpdateInstallerTest, AsMuchIsUnpackedAsTheNewVersionMayHave) {
    WatchedTools watched;
    platform.bundleTools().real = &watched;
    qint64 installed = 0;
    for (const auto& [name, content] : before) installed += content.size();
    EXPECT_FALSE(install(newBundle()).has_value());
    EXPECT_EQ(watched.limits, std::vector<qint64>({4 * installed + (64 << 20)}));
}

TEST_F(UpdateInstallerTest, OneByteMoreThanTheLimitIsTooMuch) {
    const QString zip = archive(zipOf({{"a", QByteArray(700, 'x')}, {"b", QByteArray(300, 'x')}}));
    for (const qint64 limit : {1000, 999, 700, 0}) {
        const QTemporaryDir folder;
        EXPECT_EQ(extractZip(zip, folder.path(), limit), limit == 1000);
        qint64 written = 0;
        for (const auto& [name, content] : contents(folder.path())) written += content.size();
        EXPECT_LE(written, limit);
    }
}

TEST_F(UpdateInstallerTest, TheProgramsEndStopsTheUnpacking) {
    Clock::interruptAll();
    const auto failure = install(newBundle());
    Clock::resume();
    expectRefusedExtraction(failure);
}

TEST_F(UpdateInstallerTest, OnlyABundleOfTheVersionThatIsOfferedIsInstalled) {
    for (const QByteArray& version :
         {QByteArray("1.2.9"), QByteArray("1.3.0"), QByteArray("1.4"), QByteArray()}) {
        SCOPED_TRACE(version.toStdString());
        expectRefusedBundle(newBundle({}, version));
    }
    std::vector<ZipEntry> withoutVersion = newBundle();
    withoutVersion[1].content = "<plist><dict/></plist>";
    expectRefusedBundle(withoutVersion);
    withoutVersion.erase(withoutVersion.begin() + 1);
    expectRefusedBundle(withoutVersion);
}

TEST_F(UpdateInstallerTest, OnlyANewerBundleIsInstalled) {
    for (const QByteArray& version :
         {QByteArray("1.2.3"), QByteArray("1.2.3.0"), QByteArray("1.2"), QByteArray("0")}) {
        const QByteArray zip = zipOf(newBundle({}, version));
        FeedEntry entry = entryFor(zip);
        entry.version = QString::fromLatin1(version);
        SCOPED_TRACE(version.toStdString());
        expectRefusal(failureOf([&] { installUpdate(archive(zip), entry, std::nullopt); }),
                      ErrorCode::UpdateBundleInvalid, u"Bundle aggiornamento non valido"_s);
    }
}

TEST_F(UpdateInstallerTest, AFullDiskWhileUnpackingLeavesTheOldOne) {
    const QByteArray zip =
        zipOf(newBundle({{"Parlivo.app/Contents/Resources/big", QByteArray(64 << 10, 'x')}}));
    const QString arrived = archive(zip);
    const FileSizeLimit limit(16 << 10);
    expectRefusedExtraction(failureOf([&] { installUpdate(arrived, entryFor(zip), std::nullopt); }));
}

TEST_F(UpdateInstallerTest, WhereTheProgramStandsWithoutABundleNothingIsReplaced) {
    WatchedTools watched;
    platform.bundleTools().real = &watched;
    platform.bundle().place = place.path();
    const auto around = contents(place.path());
    expectRefusal(install(newBundle()), ErrorCode::UpdateReplacementFailed, u"Sostituzione app fallita"_s);
    EXPECT_EQ(watched.replaced, 0);
    EXPECT_EQ(contents(place.path()), around);
}

/// The shell gets the bundle's path as one word, whatever is in it.
TEST(RelaunchTest, APathIsNeverRunAsACommand) {
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
