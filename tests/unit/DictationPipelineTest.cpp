// SPDX-License-Identifier: MIT
#include "AppDelegateFixture.h"

#include <limits>

namespace parlivo {
namespace {

using DictationPipelineTest = AppDelegateTest;

TEST_F(DictationPipelineTest, EachMarkerCountsAsSilence) {
    launch();
    for (const char16_t* said :
         {u"", u"[BLANK_AUDIO]", u" [blank_audio] ", u"[Silenzio]", u"(SILENZIO)", u"[Musica]", u"[MUSIC]",
          u"♪", u"Una frase normale, lunga e sensata ♪", u"Sottotitoli e revisione a cura di QTSS"}) {
        dictate(line(said));
        EXPECT_EQ(delegate->statusLine(),
                  line(u"⚠️ Non ho sentito nulla — controlla il microfono nel menu"));
    }
    EXPECT_FALSE(calls().join(QLatin1Char(' ')).contains(line(u"type ")));
    EXPECT_EQ(Config::get(Settings::dictationCount), 0);
    EXPECT_EQ(filesLeft(), Strings());
}

TEST_F(DictationPipelineTest, FifteenHundredCharactersAreTypedAndOneMoreIsPasted) {
    launch();
    const QString family = line(u"👨‍👩‍👧‍👦");
    for (const QString& character : {line(u"à"), family}) {
        dictate(character.repeated(1500));
        EXPECT_EQ(calls().filter(line(u"type ")).last(), line(u"type ") + character.repeated(1500));
        dictate(character.repeated(1501));
        EXPECT_EQ(calls().filter(line(u"paste ")).last(), line(u"paste ") + character.repeated(1501));
    }
}

TEST_F(DictationPipelineTest, TheCeilingHoldsForWhatTheCleanerReturns) {
    launch();
    suffix = QString(1500, QLatin1Char('x'));
    dictate(line(u"y"));
    EXPECT_EQ(calls().filter(line(u"paste ")).size(), 1);
}

TEST_F(DictationPipelineTest, InstantPastesASingleWord) {
    store(Settings::typingSpeed, line(u"instant"));
    launch();
    dictate(line(u"Ciao"));
    EXPECT_TRUE(calls().contains(line(u"paste Ciao")));
}

TEST_F(DictationPipelineTest, AHundredThousandCharactersArePasted) {
    launch();
    const QString text = line(u"parola ").repeated(14'286);
    dictate(text);
    EXPECT_TRUE(calls().contains(line(u"paste ") + text));
}

TEST_F(DictationPipelineTest, ATextThatCouldNotBeSentIsAnnouncedOnTheClipboard) {
    injection = Injector::Outcome::LeftOnClipboard;
    launch();
    dictate(line(u"Ciao."));
    settle();
    EXPECT_EQ(delegate->statusLine(),
              line(u"⚠️ Testo negli appunti — la finestra attiva non lo ha preso: incollalo tu"));
    EXPECT_TRUE(platform.workspace().panes.empty()) << "no permission is missing";
    EXPECT_FALSE(logged().join(u'\n').contains(line(u"iniezione completata")));
    EXPECT_EQ(Config::get(Settings::dictationCount), 0);
}

TEST_F(DictationPipelineTest, ATextOfWhichTheRestCouldNotBeSentIsAnnouncedAsThat) {
    injection = Injector::Outcome::RestOnClipboard;
    launch();
    dictate(line(u"Ciao."));
    settle();
    EXPECT_EQ(delegate->statusLine(),
              line(u"⚠️ Il resto è negli appunti — la finestra attiva non lo ha preso: incollalo tu"));
    EXPECT_TRUE(platform.workspace().panes.empty());
    EXPECT_EQ(Config::get(Settings::dictationCount), 0);
}

TEST_F(DictationPipelineTest, ATextThatWasCutOffIsNotLoggedAsComplete) {
    injection = Injector::Outcome::CutOff;
    launch();
    dictate(line(u"Ciao."));
    settle();
    EXPECT_TRUE(logged().contains(line(u"iniezione interrotta (5 caratteri)")));
    EXPECT_FALSE(logged().join(u'\n').contains(line(u"iniezione completata")));
    EXPECT_EQ(Config::get(Settings::dictationCount), 0);
}

TEST_F(DictationPipelineTest, WithoutThePermissionToTypeTheTextIsCopied) {
    platform.permissions().trusted = false;
    launch();
    dictate(line(u"Da incollare."));
    settle();
    ASSERT_EQ(platform.pasteboard().sets().size(), 1U);
    EXPECT_EQ(platform.pasteboard().sets()[0].text, line(u"Da incollare."));
    EXPECT_EQ(delegate->statusLine(),
              line(u"⚠️ Testo copiato negli appunti — manca il permesso Accessibilità (menu)"));
    EXPECT_EQ(platform.workspace().panes, std::vector{PrivacyPane::Accessibility});
    EXPECT_TRUE(logged().contains(line(u"iniezione SALTATA: permesso accessibilità mancante")));
    EXPECT_EQ(Config::get(Settings::dictationCount), 0);
    EXPECT_FALSE(calls().contains(line(u"invite")));
    EXPECT_EQ(filesLeft(), Strings());
}

TEST_F(DictationPipelineTest, ATextThatTheClipboardDoesNotTakeIsNotSaidToBeThere) {
    platform.permissions().trusted = false;
    platform.pasteboard().refuses = true;
    launch();
    dictate(line(u"Da incollare."));
    settle();
    EXPECT_EQ(
        delegate->statusLine(),
        line(u"⚠️ Testo perso — manca il permesso Accessibilità e gli appunti non lo hanno preso"));
    EXPECT_EQ(platform.workspace().panes, std::vector{PrivacyPane::Accessibility});
    EXPECT_FALSE(logged().join(u'\n').contains(line(u"Da incollare")));
}

TEST_F(DictationPipelineTest, ATextThatNothingTakesIsAnnouncedAsLost) {
    injection = Injector::Outcome::Lost;
    launch();
    dictate(line(u"Ciao."));
    settle();
    EXPECT_EQ(
        delegate->statusLine(),
        line(u"⚠️ Testo perso, o in parte — né la finestra attiva né gli appunti lo hanno preso"));
    EXPECT_EQ(Config::get(Settings::dictationCount), 0);
}

TEST_F(DictationPipelineTest, AFailedConversionIsSaidAndLeavesNoFile) {
    launch();
    conversionError = Error(ErrorCode::ConversionFailed, line(u"afconvert fallito: disco pieno"))
                          .withDetail(line(u"System error : No space left on device."));
    dictate(line(u"perso"));
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ afconvert fallito: disco pieno"));
    EXPECT_TRUE(logged().contains(line(u"ERRORE pipeline: afconvert fallito: disco pieno")));
    EXPECT_TRUE(logged().contains(line(u"dettaglio: System error : No space left on device.")));
    EXPECT_EQ(filesLeft(), Strings());
    conversionError.reset();
    dictate(line(u"di nuovo"));
    EXPECT_TRUE(calls().contains(line(u"type di nuovo")));
}

TEST_F(DictationPipelineTest, AFailedTranscriptionIsSaidAndLeavesNoFile) {
    launch();
    transcriptionError = Error(ErrorCode::WhisperNotResponding, line(u"whisper-server non risponde"));
    dictate(line(u"perso"));
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ whisper-server non risponde"));
    EXPECT_TRUE(logged().contains(line(u"ERRORE pipeline: whisper-server non risponde")));
    EXPECT_EQ(filesLeft(), Strings());
    EXPECT_EQ(Config::get(Settings::dictationCount), 0);
}

TEST_F(DictationPipelineTest, OnlyDebugModeLogsWhatWasSaid) {
    launch();
    dictate(line(u"segreto"));
    EXPECT_FALSE(logged().join(QLatin1Char(' ')).contains(line(u"segreto")));
    EXPECT_TRUE(logged().contains(line(u"trascrizione: 7 caratteri")));
    EXPECT_TRUE(logged().contains(line(u"audio convertito: 44 byte")));
    EXPECT_TRUE(logged().contains(line(u"iniezione completata (7 caratteri)")));
    store(Settings::debugMode, true);
    dictate(line(u"palese"));
    EXPECT_TRUE(logged().contains(line(u"trascrizione grezza: \"palese\"")));
    EXPECT_TRUE(logged().contains(line(u"testo pulito: \"palese\"")));
}

TEST_F(DictationPipelineTest, CountsTheDictationsThatArrived) {
    launch();
    for (int i = 1; i <= 3; ++i) {
        dictate(line(u"uno"));
        EXPECT_EQ(Config::get(Settings::dictationCount), i);
    }
}

TEST_F(DictationPipelineTest, ACountAtTheLargestIntegerIsFatalRatherThanWrong) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    store(Settings::dictationCount, std::numeric_limits<qint64>::max());
    EXPECT_DEATH(
        {
            launch();
            dictate(line(u"uno"));
        },
        "dictationCount");
}

}  // namespace
}  // namespace parlivo
