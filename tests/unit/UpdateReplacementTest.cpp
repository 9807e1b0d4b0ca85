// SPDX-License-Identifier: MIT
#include "UpdateTest.h"
#include "platform/linux/base/BundleReplacement.h"
#include "support/Errors.h"
#include "support/FileSizeLimit.h"
#include "update/UpdateInstaller.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <future>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// Tools that unpack on another file system than the bundle's, where nothing can be exchanged in one step.
class DistantTools : public LinuxBundleTools {
  public:
    using LinuxBundleTools::LinuxBundleTools;
    std::optional<QString> stagingPlace(const QString&) const override { return place_.path(); }

  private:
    QTemporaryDir place_{u"/dev/shm/parlivo-test-XXXXXX"_s};
};

/// Tools that look at the stored changelog when they are to replace the bundle.
class LookingTools : public LinuxBundleTools {
  public:
    explicit LookingTools(Replacement outcome) : outcome_(outcome) {}
    Replacement replace(const QString& source, const QString& destination) override {
        changelog = Config::get(Settings::pendingChangelog);
        flushes = static_cast<fake::UserDefaults&>(Platform::current().userDefaults()).flushes;
        return outcome_ == Replacement::Done ? LinuxBundleTools::replace(source, destination) : outcome_;
    }

    std::optional<QString> changelog;
    int flushes = 0;

  private:
    Replacement outcome_;
};

/// How the running bundle is replaced, and what is left when the program ends meanwhile.
class UpdateReplacementTest : public UpdateTest {
  protected:
    ~UpdateReplacementTest() override { Clock::resume(); }
    UpdateReplacementTest() = default;
    UpdateReplacementTest(const UpdateReplacementTest&) = delete;
    UpdateReplacementTest& operator=(const UpdateReplacementTest&) = delete;

    void install() const {
        const QByteArray zip = zipOf(newBundle());
        const QString archive = place.filePath(u"arrived.zip"_s);
        write(archive, zip);
        FeedEntry entry = entryFor(zip);
        entry.changelog = u"Più veloce."_s;
        installUpdate(archive, entry, std::nullopt);
    }
    std::optional<Error> failure() const {
        try {
            install();
        } catch (const Error& error) {
            return error;
        }
        return std::nullopt;
    }

    bool isNew() const {
        const auto now = contents(running());
        return now.size() == 6 && now.at(u"Contents/MacOS/Parlivo"_s) == "new program" &&
               now.at(u"Contents/Info.plist"_s) == propertyList(newVersion) &&
               now.at(u"Contents/Resources/new"_s) == "here at last";
    }

    static QStringList filesIn(const std::optional<QString>& folder) {
        return QDir(folder.value()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    /// A program in rsync's place that says that it has begun, and copies when it is told to go on.
    QString hesitantRsync() const {
        QString path = place.filePath(u"rsync"_s);
        write(path, "#!/bin/sh\n: >'" + begun().toUtf8() + "'\nwhile [ ! -e '" + goOn().toUtf8() +
                        "' ]; do sleep 0.01; done\nexec /usr/bin/rsync \"$@\"\n");
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }
    QString begun() const { return place.filePath(u"begun"_s); }
    QString goOn() const { return place.filePath(u"go on"_s); }
    bool waitUntilBegun() const {
        return desktop::waitFor([&] { return QFile::exists(begun()); });
    }

    /// Installs in another process and waits for its end. True if it was killed.
    bool installAndBeKilled() const {
        const pid_t other = fork();
        if (other == 0) {
            const bool done = !failure();
            _exit(done ? 0 : 1);
        }
        int status = 0;
        waitpid(other, &status, 0);
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }
};

TEST_F(UpdateReplacementTest, TheOldAndTheNewBundleAreExchangedInOneStep) {
    LinuxBundleTools withoutRsync({.rsync = u"/nonexistent/rsync"_s});
    platform.bundleTools().real = &withoutRsync;
    ASSERT_FALSE(failure().has_value());
    EXPECT_TRUE(isNew());
    EXPECT_TRUE(isAlone());
}

TEST_F(UpdateReplacementTest, TheChangelogIsOnTheDiskBeforeTheNewBundleIsInPlace) {
    LookingTools looking(BundleTools::Replacement::Done);
    platform.bundleTools().real = &looking;
    ASSERT_FALSE(failure().has_value());
    EXPECT_TRUE(isNew());
    EXPECT_EQ(looking.changelog, u"Più veloce."_s);
    EXPECT_EQ(looking.flushes, 1);
    EXPECT_EQ(stored(Settings::pendingChangelog), u"Più veloce."_s);
}

TEST_F(UpdateReplacementTest, TheChangelogStaysWhereTheCopyGoesOnWithoutTheProgram) {
    LookingTools looking(BundleTools::Replacement::GoesOn);
    platform.bundleTools().real = &looking;
    ASSERT_FALSE(failure().has_value());
    EXPECT_EQ(stored(Settings::pendingChangelog), u"Più veloce."_s);
}

TEST_F(UpdateReplacementTest, AFailureLeavesTheChangelogThatWasStored) {
    LookingTools looking(BundleTools::Replacement::Failed);
    platform.bundleTools().real = &looking;
    ASSERT_TRUE(failure().has_value());
    EXPECT_FALSE(stored(Settings::pendingChangelog).isValid());
    store(Settings::pendingChangelog, u"Di prima."_s);
    ASSERT_TRUE(failure().has_value());
    EXPECT_EQ(stored(Settings::pendingChangelog), u"Di prima."_s);
}

TEST_F(UpdateReplacementTest, ItIsUnpackedAmongTheTemporaryFilesWhereTheUserCannotWriteBesideTheBundle) {
    EXPECT_EQ(tools.stagingPlace(running()), QFileInfo(running()).path());
    EXPECT_EQ(tools.stagingPlace(u"/proc/self/Parlivo.app"_s), std::nullopt);
    EXPECT_EQ(tools.stagingPlace(place.filePath(u"none/Parlivo.app"_s)), std::nullopt);
}

TEST_F(UpdateReplacementTest, WhereNothingCanBeExchangedItIsCopied) {
    DistantTools distant;
    platform.bundleTools().real = &distant;
    ASSERT_FALSE(failure().has_value());
    EXPECT_TRUE(isNew());
    EXPECT_EQ(filesIn(distant.stagingPlace({})), QStringList());
}

/// Such a file looks unchanged to a tool that does not read it.
TEST_F(UpdateReplacementTest, AFileOfTheSameSizeAndTimeIsCopiedToo) {
    DistantTools distant;
    platform.bundleTools().real = &distant;
    ASSERT_FALSE(failure().has_value());
    const QString program = running() + u"/Contents/MacOS/Parlivo"_s;
    QFile file(program);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QDateTime time = file.fileTime(QFileDevice::FileModificationTime);
    file.write("OLD PROGRAM");
    file.flush();
    ASSERT_TRUE(file.setFileTime(time, QFileDevice::FileModificationTime));
    file.close();
    ASSERT_FALSE(failure().has_value());
    EXPECT_TRUE(isNew());
}

TEST_F(UpdateReplacementTest, WithoutRsyncItIsTheSystemsFailure) {
    DistantTools distant({.rsync = u"/nonexistent/rsync"_s});
    platform.bundleTools().real = &distant;
    const auto failed = failure();
    ASSERT_TRUE(failed.has_value());
    EXPECT_EQ(failed->domain(), u"POSIX"_s);
    EXPECT_TRUE(isUntouched());
    EXPECT_EQ(filesIn(distant.stagingPlace({})), QStringList());
}

TEST_F(UpdateReplacementTest, ACopyThatFailsIsTold) {
    DistantTools distant({.rsync = u"/bin/false"_s});
    platform.bundleTools().real = &distant;
    const auto failed = failure();
    ASSERT_TRUE(failed.has_value());
    EXPECT_TRUE(isError(*failed, ErrorCode::UpdateReplacementFailed)) << failed->what();
    EXPECT_EQ(failed->localizedDescription(), u"Sostituzione app fallita"_s);
    EXPECT_TRUE(isUntouched());
    EXPECT_EQ(filesIn(distant.stagingPlace({})), QStringList());
}

TEST_F(UpdateReplacementTest, ADiskThatIsFullInTheMiddleOfACopyLeavesTheOldBundle) {
    const QString source = place.filePath(u"new"_s);
    write(source + u"/Contents/Info.plist"_s, "new version");
    write(source + u"/Contents/MacOS/Parlivo"_s, "new program");
    write(source + u"/Contents/Resources/big"_s, QByteArray(64 << 10, 'x'));
    auto outcome = BundleTools::Replacement::Done;
    {
        const FileSizeLimit limit(16 << 10);
        outcome = copyOver(u"/usr/bin/rsync"_s, source, running());
    }
    EXPECT_EQ(outcome, BundleTools::Replacement::Failed);
    EXPECT_TRUE(isUntouched());
}

TEST_F(UpdateReplacementTest, TheProgramsEndWaitsForTheCopy) {
    DistantTools distant({.rsync = hesitantRsync()});
    platform.bundleTools().real = &distant;
    auto installation = std::async(std::launch::async, [&] { return failure(); });
    ASSERT_TRUE(waitUntilBegun());
    Clock::interruptAll();
    EXPECT_EQ(installation.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    EXPECT_TRUE(isUntouched());
    write(goOn(), {});
    EXPECT_FALSE(installation.get().has_value());
    EXPECT_TRUE(isNew());
    EXPECT_EQ(filesIn(distant.stagingPlace({})), QStringList());
}

TEST_F(UpdateReplacementTest, ACopyThatTakesTooLongForTheProgramsEndGoesOnWithItsSource) {
    DistantTools distant({.rsync = hesitantRsync()});
    platform.bundleTools().real = &distant;
    auto installation = std::async(std::launch::async, [&] { return failure(); });
    ASSERT_TRUE(waitUntilBegun());
    Clock::setScale(0.001);
    Clock::interruptAll();
    EXPECT_FALSE(installation.get().has_value());
    removeStaleUpdates();
    EXPECT_EQ(filesIn(distant.stagingPlace({})).size(), 1) << "a start meanwhile must not take it away";
    EXPECT_TRUE(isUntouched());
    write(goOn(), {});
    EXPECT_TRUE(desktop::waitFor([&] { return isNew(); }));
    EXPECT_TRUE(desktop::waitFor([&] {
        removeStaleUpdates();
        return filesIn(distant.stagingPlace({})).isEmpty();
    }));
}

TEST_F(UpdateReplacementTest, AKilledProgramsCopyGoesOn) {
    DistantTools distant({.rsync = hesitantRsync()});
    platform.bundleTools().real = &distant;
    const pid_t other = fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        const auto failed = failure();
        _exit(failed ? 1 : 0);
    }
    ASSERT_TRUE(waitUntilBegun());
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    removeStaleUpdates();
    EXPECT_TRUE(isUntouched());
    write(goOn(), {});
    EXPECT_TRUE(desktop::waitFor([&] { return isNew(); }));
    EXPECT_TRUE(desktop::waitFor([&] {
        removeStaleUpdates();
        return filesIn(distant.stagingPlace({})).isEmpty();
    }));
}

/// Tools at one of whose steps the program is killed.
class DeadlyTools : public LinuxBundleTools {
  public:
    enum class Step { BeforeUnpacking, AfterUnpacking, BeforeReplacing, AfterReplacing };

    explicit DeadlyTools(Step deadly) : deadly_(deadly) {}
    Outcome unpack(const QString& zip, const QString& folder, qint64 maximumSize) override {
        reach(Step::BeforeUnpacking);
        const auto outcome = LinuxBundleTools::unpack(zip, folder, maximumSize);
        reach(Step::AfterUnpacking);
        return outcome;
    }
    Replacement replace(const QString& source, const QString& destination) override {
        reach(Step::BeforeReplacing);
        const auto outcome = LinuxBundleTools::replace(source, destination);
        reach(Step::AfterReplacing);
        return outcome;
    }

  private:
    void reach(Step step) const {
        if (step == deadly_) kill(getpid(), SIGKILL);
    }
    const Step deadly_;
};

TEST_F(UpdateReplacementTest, AKilledProgramLeavesAWholeBundleAndTheNextStartCleansUp) {
    using Step = DeadlyTools::Step;
    for (const Step step :
         {Step::BeforeUnpacking, Step::AfterUnpacking, Step::BeforeReplacing, Step::AfterReplacing}) {
        SCOPED_TRACE(static_cast<int>(step));
        DeadlyTools deadly(step);
        platform.bundleTools().real = &deadly;
        ASSERT_TRUE(installAndBeKilled());
        EXPECT_TRUE(step == Step::AfterReplacing ? isNew() : isUntouched());
        EXPECT_FALSE(isAlone());
        removeStaleUpdates();
        EXPECT_TRUE(isAlone());
        EXPECT_TRUE(step == Step::AfterReplacing ? isNew() : isUntouched());
    }
}

TEST_F(UpdateReplacementTest, WhatIsBesideTheBundleAndNotOfAnUpdateStays) {
    const QString beside = QFileInfo(running()).path();
    const QStringList others{u".parlivo-update-mio"_s, u"parlivo-update-appunti.zip"_s, u".parlivo"_s,
                             u"parlivo-update-0"_s};
    for (const QString& name : others) write(beside + u'/' + name, "mine");
    removeStaleUpdates();
    for (const QString& name : others) EXPECT_TRUE(QFile::exists(beside + u'/' + name)) << name.toStdString();
}

}  // namespace
}  // namespace parlivo
