// SPDX-License-Identifier: MIT
#include "UpdateTest.h"
#include "support/AskedWaits.h"
#include "support/StubServer.h"
#include "update/Updater.h"

#include <QJsonObject>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// The running version is 1.2.3.
class UpdaterTest : public UpdateTest {
  protected:
    UpdaterTest() {
        qputenv("PARLIVO_SITE_BASE", address().toUtf8());
        updater.onStateChange = [this] { ++changes; };
    }
    ~UpdaterTest() override { qunsetenv("PARLIVO_SITE_BASE"); }
    UpdaterTest(const UpdaterTest&) = delete;
    UpdaterTest& operator=(const UpdaterTest&) = delete;

    QString address() const { return u"http://127.0.0.1:%1"_s.arg(site.port()); }

    QJsonObject feed(const QString& version, qint64 size = 0) const {
        return {{u"version"_s, version},
                {u"url"_s, address() + u"/Parlivo.zip"_s},
                {u"changelog"_s, u"Più veloce.\nPiù bello."_s},
                {u"size"_s, size},
                {u"date"_s, u"2026-05-01"_s}};
    }
    void publish(const QJsonObject& object) { site.on("/updates.json", StubReply::json(object)); }

    bool check() {
        const int known = changes;
        updater.check();
        return desktop::waitFor([&] { return changes > known; });
    }

    /// Offers an archive and chooses to install it.
    void update(const QByteArray& zip, const StubReply& reply) {
        publish(feed(u"1.3"_s, zip.size()));
        site.on("/Parlivo.zip", reply);
        ASSERT_TRUE(check());
        updater.promptAndInstall();
    }
    void update(const QByteArray& zip) { update(zip, StubReply::body(zip, 200, "application/zip")); }

    bool waitForAlert(const QString& explanation) const {
        return desktop::waitFor([&] {
            return dialogs->alerts.back().message == u"Aggiornamento non riuscito"_s &&
                   dialogs->alerts.back().informativeText == explanation;
        });
    }

    /// The old version is as it was and goes on, and the offer stands.
    void expectNothingHappened() const {
        EXPECT_TRUE(isUntouched());
        EXPECT_EQ(calls, QStringList());
        EXPECT_TRUE(platform.bundleTools().started.isEmpty());
        EXPECT_FALSE(stored(Settings::pendingChangelog).isValid());
        EXPECT_TRUE(updater.available.has_value());
        EXPECT_TRUE(desktop::waitFor([&] { return temporaryFiles().isEmpty(); }));
    }

    StubServer site;
    int changes = 0;
    QStringList calls;
    Updater updater{
        {.stopEngines = [this] { calls.append(u"stop"_s); }, .quit = [this] { calls.append(u"quit"_s); }}};
};

TEST_F(UpdaterTest, ANewerVersionIsAvailable) {
    publish(feed(u"1.3"_s, 77));
    ASSERT_TRUE(check());
    ASSERT_TRUE(updater.available.has_value());
    EXPECT_EQ(updater.available->version, u"1.3"_s);
    EXPECT_EQ(updater.available->size, 77);
    EXPECT_EQ(logged(), QStringList(u"aggiornamento disponibile: 1.3 (attuale 1.2.3)"_s));
}

TEST_F(UpdaterTest, TheSameOrAnOlderVersionWithdrawsAnOffer) {
    for (const QString& version : {u"1.2.3"_s, u"1.2"_s, QString(10'000, u'9')}) {
        publish(feed(u"1.3"_s));
        ASSERT_TRUE(check());
        ASSERT_TRUE(updater.available.has_value());
        publish(feed(version));
        ASSERT_TRUE(check());
        EXPECT_FALSE(updater.available.has_value());
    }
}

TEST_F(UpdaterTest, AFeedThatCannotBeReadChangesNothing) {
    publish(feed(u"1.3"_s));
    ASSERT_TRUE(check());
    QJsonObject lacking = feed(u"1.4"_s);
    lacking.remove(u"date"_s);
    for (const StubReply& reply :
         {StubReply::body({}), StubReply::body({}, 204), StubReply::body("<html>", 404),
          StubReply::body(QByteArray(5 << 20, 'x')), StubReply::json(lacking),
          StubReply::cutOff("{\"version\"", 100), StubReply::of(StubReply::Manner::CloseAtOnce),
          StubReply::of(StubReply::Manner::ResetAtOnce)}) {
        const auto asked = site.requests("/updates.json").size();
        site.on("/updates.json", reply);
        updater.check();
        ASSERT_TRUE(site.waitForRequests("/updates.json", asked + 1));
        desktop::letPass(std::chrono::milliseconds(50));
        EXPECT_EQ(changes, 1) << reply.bytes.left(40).toStdString();
        EXPECT_EQ(updater.available->version, u"1.3"_s);
    }
}

TEST_F(UpdaterTest, ASiteThatCannotBeReachedChangesNothing) {
    publish(feed(u"1.3"_s));
    qputenv("PARLIVO_SITE_BASE", "http://127.0.0.1:1");
    updater.check();
    desktop::letPass(std::chrono::milliseconds(100));
    EXPECT_EQ(changes, 0);
    // The site's address may end in a stroke, and is read afresh.
    qputenv("PARLIVO_SITE_BASE", address().toUtf8() + '/');
    EXPECT_TRUE(check());
}

TEST_F(UpdaterTest, ChecksAtTheStartAndPeriodically) {
    publish(feed(u"1.3"_s));
    Updater often({}, std::chrono::milliseconds(20));
    int found = 0;
    often.onStateChange = [&] { ++found; };
    often.start();
    EXPECT_TRUE(desktop::waitFor([&] { return found >= 3; }));
}

TEST_F(UpdaterTest, TheFeedMayBeSilentForFifteenSecondsAndTheArchiveForAMinute) {
    const AskedWaits asked;
    update(zipOf(newBundle()));
    ASSERT_TRUE(desktop::waitFor([&] { return calls.contains(u"quit"_s); }));
    EXPECT_EQ(asked.count(std::chrono::seconds(15)), 1);
    EXPECT_EQ(asked.count(std::chrono::seconds(60)), 1);
    EXPECT_EQ(asked.all().size(), 2U);
}

TEST_F(UpdaterTest, ChecksEveryDay) {
    const AskedWaits asked;
    Updater usual{{}};
    usual.start();
    EXPECT_EQ(asked.count(std::chrono::hours(24)), 1);
}

TEST_F(UpdaterTest, TheFeedIsAskedForAfresh) {
    publish(feed(u"1.3"_s));
    ASSERT_TRUE(check());
    const auto request = site.requests("/updates.json").at(0);
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.header("Cache-Control"), "no-cache") << request.raw.toStdString();
}

TEST_F(UpdaterTest, WithoutAnOfferNothingIsAsked) {
    updater.promptAndInstall();
    EXPECT_TRUE(dialogs->alerts.empty());
}

TEST_F(UpdaterTest, TheOfferShowsTheStatedTexts) {
    publish(feed(u"1.3"_s));
    ASSERT_TRUE(check());
    dialogs->answer = 1;
    updater.promptAndInstall();
    ASSERT_EQ(dialogs->alerts.size(), 1U);
    EXPECT_EQ(dialogs->alerts[0].message, u"Parlivo 1.3 è disponibile"_s);
    EXPECT_EQ(dialogs->alerts[0].informativeText,
              u"Novità:\nPiù veloce.\nPiù bello.\n\nL'app si riavvierà da sola al termine."_s);
    EXPECT_EQ(dialogs->alerts[0].buttons, QStringList({u"Aggiorna ora"_s, u"Più tardi"_s}));
    EXPECT_TRUE(site.requests("/Parlivo.zip").empty());
    expectNothingHappened();
}

TEST_F(UpdaterTest, AnUpdateIsInstalledAndTheProgramStartedAgain) {
    update(zipOf(newBundle()));
    ASSERT_TRUE(desktop::waitFor([&] { return calls.contains(u"quit"_s); }));
    EXPECT_EQ(calls, QStringList({u"stop"_s, u"quit"_s}));
    EXPECT_EQ(platform.bundleTools().started, QStringList(running()));
    EXPECT_EQ(contents(running()).at(u"Contents/MacOS/Parlivo"_s), "new program");
    EXPECT_EQ(stored(Settings::pendingChangelog), u"Più veloce.\nPiù bello."_s);
    EXPECT_EQ(logged().mid(1),
              QStringList({u"download aggiornamento 1.3"_s, u"aggiornamento 1.3 installato, riavvio"_s}));
    EXPECT_EQ(temporaryFiles(), QStringList());
    EXPECT_EQ(dialogs->alerts.size(), 1U);
}

TEST_F(UpdaterTest, AnInvalidAddressDoesNothing) {
    for (const QString& url : {u""_s, u"http://[oops"_s, u"http://a b/c"_s}) {
        QJsonObject object = feed(u"1.3"_s);
        object[u"url"_s] = url;
        publish(object);
        ASSERT_TRUE(check());
        updater.promptAndInstall();
        expectNothingHappened();
    }
    EXPECT_EQ(dialogs->alerts.size(), 3U) << "the offers only";
}

/// What the feed of a site on http may say; with one on https it would have to be https.
TEST_F(UpdaterTest, AnUnsafeAddressIsNotAskedAndTold) {
    write(place.filePath(u"here.zip"_s), zipOf(newBundle()));
    for (const QString& url : {u"file://"_s + place.filePath(u"here.zip"_s), u"ftp://127.0.0.1/a.zip"_s,
                               u"data:application/zip;base64,UEs="_s, u"Parlivo.zip"_s, u"qrc:/a"_s}) {
        QJsonObject object = feed(u"1.3"_s, zipOf(newBundle()).size());
        object[u"url"_s] = url;
        publish(object);
        ASSERT_TRUE(check());
        updater.promptAndInstall();
        ASSERT_TRUE(waitForAlert(u"Download non riuscito. Riprova più tardi."_s)) << url.toStdString();
        EXPECT_TRUE(logged().last().startsWith(u"download update fallito: "_s));
        expectNothingHappened();
        dialogs->alerts.clear();
    }
}

TEST_F(UpdaterTest, OfASiteOnHttpsNoArchiveIsFetchedWithoutIt) {
    publish(feed(u"1.3"_s, 10));
    ASSERT_TRUE(check());
    qputenv("PARLIVO_SITE_BASE", "https://127.0.0.1");
    updater.promptAndInstall();
    EXPECT_TRUE(waitForAlert(u"Download non riuscito. Riprova più tardi."_s));
    EXPECT_TRUE(site.requests("/Parlivo.zip").empty());
    expectNothingHappened();
}

TEST_F(UpdaterTest, AnOldFeedThatIsPlayedBackOffersNothing) {
    publish(feed(u"1.2.2"_s, zipOf(newBundle({}, "1.2.2")).size()));
    site.on("/Parlivo.zip", StubReply::body(zipOf(newBundle({}, "1.2.2"))));
    ASSERT_TRUE(check());
    updater.promptAndInstall();
    EXPECT_TRUE(dialogs->alerts.empty());
    EXPECT_TRUE(site.requests("/Parlivo.zip").empty());
}

TEST_F(UpdaterTest, AnOldArchiveUnderANewVersionsNameIsRefused) {
    update(zipOf(newBundle({}, "1.2.2")));
    ASSERT_TRUE(waitForAlert(u"Bundle aggiornamento non valido"_s));
    expectNothingHappened();
}

TEST_F(UpdaterTest, WithAKeyAnUnsignedUpdateIsRefused) {
    Updater careful({.stopEngines = [] {}, .quit = [this] { calls.append(u"quit"_s); }},
                    std::chrono::hours(24), UpdateKey(32, 'k'));
    const QByteArray zip = zipOf(newBundle());
    publish(feed(u"1.3"_s, zip.size()));
    site.on("/Parlivo.zip", StubReply::body(zip));
    careful.onStateChange = [this] { ++changes; };
    careful.check();
    ASSERT_TRUE(desktop::waitFor([&] { return changes > 0; }));
    careful.promptAndInstall();
    ASSERT_TRUE(waitForAlert(u"Aggiornamento non autentico (firma mancante)"_s));
    EXPECT_TRUE(isUntouched());
    EXPECT_EQ(calls, QStringList());
}

TEST_F(UpdaterTest, ADownloadThatFailsIsToldAndCanBeTriedAgain) {
    const QByteArray zip = zipOf(newBundle());
    for (const StubReply& reply :
         {StubReply::of(StubReply::Manner::CloseAtOnce), StubReply::cutOff(zip.first(40), zip.size())}) {
        update(zip, reply);
        ASSERT_TRUE(waitForAlert(u"Download non riuscito. Riprova più tardi."_s));
        EXPECT_TRUE(logged().last().startsWith(u"download update fallito: "_s))
            << logged().last().toStdString();
        expectNothingHappened();
    }
    update(zip);
    EXPECT_TRUE(desktop::waitFor([&] { return calls.contains(u"quit"_s); }));
}

TEST_F(UpdaterTest, AnArchiveThatFindsNoFolderSaysSoInTheLog) {
    ASSERT_TRUE(platform.directories().temporaryDir.remove());
    update(zipOf(newBundle()));
    ASSERT_TRUE(waitForAlert(u"Download non riuscito. Riprova più tardi."_s));
    EXPECT_TRUE(logged().last().endsWith(u": la cartella o il file non esiste"_s))
        << logged().last().toStdString();
    expectNothingHappened();
}

TEST_F(UpdaterTest, ADownloadThatNeverComesIsTold) {
    const QByteArray zip = zipOf(newBundle());
    publish(feed(u"1.3"_s, zip.size()));
    site.on("/Parlivo.zip", StubReply::of(StubReply::Manner::Never));
    ASSERT_TRUE(check());
    Clock::setScale(0.005);
    updater.promptAndInstall();
    EXPECT_TRUE(waitForAlert(u"Download non riuscito. Riprova più tardi."_s));
    expectNothingHappened();
}

TEST_F(UpdaterTest, WhatIsNotTheArchiveIsTold) {
    const QByteArray zip = zipOf(newBundle());
    for (const StubReply& reply :
         {StubReply::body(zip.first(zip.size() - 1)), StubReply::body("<html>", 404), StubReply::body({}),
          StubReply{"HTTP/1.1 200 OK\r\n\r\n", StubReply::Manner::WithoutBound, {}}}) {
        update(zip, reply);
        ASSERT_TRUE(waitForAlert(u"Aggiornamento corrotto (dimensione inattesa)"_s))
            << reply.bytes.left(40).toStdString();
        EXPECT_EQ(logged().last(),
                  u"installazione update fallita: Aggiornamento corrotto (dimensione inattesa)"_s);
        expectNothingHappened();
        dialogs->alerts.clear();
    }
}

TEST_F(UpdaterTest, AnInstallationThatFailsIsTold) {
    update(zipOf({{"readme.txt", "hello"}}));
    ASSERT_TRUE(waitForAlert(u"Bundle aggiornamento non valido"_s));
    EXPECT_EQ(logged().last(), u"installazione update fallita: Bundle aggiornamento non valido"_s);
    expectNothingHappened();
}

TEST_F(UpdaterTest, OneInstallationAtATime) {
    update(zipOf(newBundle()), StubReply::of(StubReply::Manner::Never));
    ASSERT_TRUE(site.waitForRequests("/Parlivo.zip", 1));
    updater.promptAndInstall();
    EXPECT_EQ(dialogs->alerts.size(), 1U);
    EXPECT_EQ(site.requests("/Parlivo.zip").size(), 1U);
}

TEST_F(UpdaterTest, WhatIsBeingInstalledIsToldUntilItFails) {
    std::vector<std::optional<QString>> told;
    updater.onInstallation = [&] { told.push_back(updater.installing()); };
    update(zipOf({{"readme.txt", "hello"}}));
    EXPECT_EQ(updater.installing(), u"1.3"_s);
    ASSERT_TRUE(waitForAlert(u"Bundle aggiornamento non valido"_s));
    EXPECT_EQ(told, std::vector<std::optional<QString>>({u"1.3"_s, std::nullopt}));
}

}  // namespace
}  // namespace parlivo
