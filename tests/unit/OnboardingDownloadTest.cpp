// SPDX-License-Identifier: MIT
#include "OnboardingFixture.h"
#include "settings/Config.h"

#include <QProgressBar>
#include <QTest>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

class OnboardingDownloadTest : public OnboardingTest {};

TEST_F(OnboardingDownloadTest, AFailedDownloadCanBePutOff) {
    goTo(Step::download);
    fetch.fail(u"rete"_s);
    click(window(), u"Più tardi"_s);
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(putOff, 1);
    EXPECT_TRUE(dialogs->alerts.empty()) << "the button is the answer";
    EXPECT_TRUE(controller.resume());
    click(window(), u"Riprova"_s);
    EXPECT_EQ(fetch.started, QStringList({u"best"_s, u"best"_s}));
}

TEST_F(OnboardingDownloadTest, WithoutRoomOnTheDiskNoByteIsFetched) {
    room = qint64{100} << 20;
    goTo(Step::download);
    EXPECT_TRUE(fetch.started.isEmpty());
    EXPECT_TRUE(shows(window(), u"Spazio insufficiente sul disco: servono 3209 MB, liberi 100 MB"_s))
        << words(window()).join(u'|').toStdString();
    EXPECT_FALSE(mainButton()->isEnabled());
    room = std::nullopt;  // a disk that does not tell
    click(window(), u"Riprova"_s);
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
}

TEST_F(OnboardingDownloadTest, DownloadsRunOneAfterTheOtherAndThenThePageIsLeft) {
    goTo(Step::download);
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
    expectWords({u"Scarico i motori scelti"_s, u"1 di 2: Precisa — ggml-large-v3-turbo-q8_0.bin"_s,
                 u"0%  ·  0 / 833 MB"_s});
    EXPECT_FALSE(mainButton()->isEnabled());
    fetch.progress(0.375, 327'820'528, 874'188'075);
    EXPECT_TRUE(shows(window(), u"38%  ·  312 / 833 MB"_s)) << words(window()).join(u'|').toStdString();
    fetch.succeed();
    EXPECT_EQ(fetch.started, QStringList({u"best"_s, u"full"_s}));
    EXPECT_TRUE(shows(window(), u"2 di 2: Completa — gemma-3-4b-it-Q4_K_M.gguf"_s));
    EXPECT_TRUE(shows(window(), u"0%  ·  0 / 2374 MB"_s));
    EXPECT_FALSE(mainButton()->isEnabled());
    fetch.succeed();
    expectWords({u"Scarico i motori scelti"_s, u"Tutto scaricato e verificato"_s});
    EXPECT_EQ(symbols(), QStringList(u"checkmark.circle.fill"_s));
    EXPECT_TRUE(mainButton()->isEnabled());
}

TEST_F(OnboardingDownloadTest, ReturnDoesNotLeaveARunningDownload) {
    goTo(Step::download);
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_EQ(step(), Step::download);
}

TEST_F(OnboardingDownloadTest, KeysDoNotStartARunningDownloadAgain) {
    goTo(Step::download);
    pressWhereTheFocusIs();
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
    fetch.progress(0.55, 480'000'000, 874'188'075);
    pressWhereTheFocusIs();
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
    EXPECT_TRUE(shows(window(), u"55%  ·  457 / 833 MB"_s)) << words(window()).join(u'|').toStdString();
}

TEST_F(OnboardingDownloadTest, ADownloadThatRunsIsNotStartedAgain) {
    int changes = 0;
    OnboardingDownloads downloads(
        fetch.fetch(), [&] { ++changes; }, [this](const QString&) { return room; });
    downloads.startDownloads();
    fetch.progress(0.5, 1, 2);
    const int before = changes;
    downloads.startDownloads();
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
    EXPECT_EQ(downloads.state().progress, 0.5);
    EXPECT_EQ(changes, before);
}

TEST_F(OnboardingDownloadTest, KeysDoNotStartASecondAttemptAgain) {
    goTo(Step::download);
    fetch.fail(u"rete"_s);
    EXPECT_EQ(window().focusWidget(), button(window(), u"Riprova"_s));
    click(window(), u"Riprova"_s);
    pressWhereTheFocusIs();
    EXPECT_EQ(fetch.started, QStringList({u"best"_s, u"best"_s})) << "the failed one and the second attempt";
}

TEST_F(OnboardingDownloadTest, AFailureOffersToTryAgainAndSkipsWhatIsThere) {
    goTo(Step::download);
    fetch.succeed();
    fetch.fail(u"Download incompleto (312MB su 2374MB)"_s);
    expectWords({u"Scarico i motori scelti"_s, u"Download incompleto (312MB su 2374MB)"_s});
    EXPECT_FALSE(mainButton()->isEnabled());
    click(window(), u"Riprova"_s);
    EXPECT_EQ(fetch.started, QStringList({u"best"_s, u"full"_s, u"full"_s}));
    expectWords({u"Scarico i motori scelti"_s, u"1 di 1: Completa — gemma-3-4b-it-Q4_K_M.gguf"_s,
                 u"0%  ·  0 / 2374 MB"_s});
    fetch.succeed();
    EXPECT_TRUE(mainButton()->isEnabled());
}

TEST_F(OnboardingDownloadTest, AfterAFailureOfTheFirstTheSecondIsNotTried) {
    goTo(Step::download);
    fetch.fail(u"rete"_s);
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
}

TEST_F(OnboardingDownloadTest, WhatIsThereAlreadyIsNotDownloaded) {
    makeModel(ModelCatalog::asrTier(u"best"_s));
    makeModel(ModelCatalog::cleanupTier(u"full"_s));
    goTo(Step::download);
    EXPECT_TRUE(fetch.started.isEmpty());
    expectWords({u"Scarico i motori scelti"_s, u"Tutto scaricato e verificato"_s});
    EXPECT_TRUE(mainButton()->isEnabled());
}

TEST_F(OnboardingDownloadTest, WithoutCleanupThereIsOneDownloadAtMost) {
    goTo(Step::quality);
    click(window(), u"Nessuna"_s);
    next();
    EXPECT_TRUE(shows(window(), u"1 di 1: Precisa — ggml-large-v3-turbo-q8_0.bin"_s));
    fetch.succeed();
    EXPECT_TRUE(mainButton()->isEnabled());
}

}  // namespace
}  // namespace parlivo
