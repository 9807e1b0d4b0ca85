// SPDX-License-Identifier: MIT
#include "input/HotKeyStatus.h"
#include "settings/Config.h"
#include "support/WindowTest.h"
#include "ui/onboarding/OnboardingDownloads.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/onboarding/OnboardingWindowController.h"
#include "ui/views/ChoiceRow.h"
#include "ui/views/SymbolView.h"

#include <QApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>

#include <optional>
#include <vector>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

class OnboardingTest : public WindowTest {
  protected:
    OnboardingTest() {
        platform.permissions().trusted = false;
        platform.permissions().microphoneStatus = MicrophoneStatus::Denied;
        controller.onFinished = [this] { ++finished; };
        controller.onPutOff = [this] { ++putOff; };
        controller.chooseHotKey = [this] { ++keyChoices; };
    }

    QWidget& window() const { return *controller.window(); }
    Step step() const { return window().findChild<OnboardingView*>()->step(); }
    void next() { click(window(), u"Continua"_s); }
    void goTo(Step wanted) {
        if (!controller.window()) controller.show();
        while (step() != wanted) {
            if (step() == Step::download) downloadAll();
            next();
        }
    }
    void downloadAll() {
        while (!mainButton()->isEnabled()) fetch.succeed();
    }
    QAbstractButton* mainButton() const {
        auto* inner = button(window(), u"Continua"_s);
        return inner ? inner : button(window(), u"Inizia a dettare"_s);
    }
    QStringList symbols() const {
        QStringList names;
        for (const auto* widget : window().findChildren<QWidget*>()) {
            const auto* symbol = dynamic_cast<const SymbolView*>(widget);
            if (symbol && symbol->isVisible()) names.append(symbol->symbol());
        }
        return names;
    }
    /// As a user does who does not look where the focus is.
    void pressWhereTheFocusIs() const {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter}) {
            QWidget* focus = window().focusWidget();
            if (focus) {
                EXPECT_TRUE(focus->isVisible()) << "the focus is on a hidden control";
            }
            QTest::keyClick(focus ? focus : &window(), key);
        }
    }
    void expectWords(const QStringList& expected) const { EXPECT_EQ(words(window()), expected); }

    ScriptedFetch fetch;
    int finished = 0;
    int putOff = 0;
    int keyChoices = 0;
    std::optional<qint64> room = qint64{1} << 40;
    OnboardingWindowController controller{fetch.fetch(), [this](const QString&) { return room; }};
};

TEST_F(OnboardingTest, TheWindowIsBuiltOnceInItsStatedSize) {
    controller.show();
    const QWidget* first = controller.window();
    EXPECT_EQ(first->size(), QSize(580, 520));
    EXPECT_EQ(first->minimumSize(), first->maximumSize());
    next();
    controller.show();
    EXPECT_EQ(controller.window(), first);
    EXPECT_EQ(step(), Step::folder) << "showing again changes no page";
}

TEST_F(OnboardingTest, ItIsCreamWithTextInInk) {
    controller.show();
    EXPECT_EQ(window().palette().color(QPalette::Window), QColor(244, 240, 231));
    EXPECT_EQ(window().grab().toImage().pixelColor(20, 20), QColor(244, 240, 231));
    for (int page = 0; page < stepCount; ++page) {
        goTo(static_cast<Step>(page));
        for (const auto* label : window().findChildren<QLabel*>()) {
            EXPECT_EQ(label->palette().color(QPalette::WindowText), QColor(56, 50, 43))
                << page << label->text().toStdString();
        }
    }
}

TEST_F(OnboardingTest, EscapeAndClosingAskAndMayChangeNothing) {
    goTo(Step::folder);
    dialogs->answer = 0;
    QTest::keyClick(&window(), Qt::Key_Escape);
    ASSERT_EQ(dialogs->alerts.size(), 1U);
    EXPECT_EQ(dialogs->alerts[0].message, u"Vuoi finire più tardi?"_s);
    EXPECT_EQ(dialogs->alerts[0].buttons, QStringList({u"Continua ora"_s, u"Più tardi"_s}));
    EXPECT_FALSE(window().close());
    EXPECT_TRUE(desktop::waitFor([this] { return dialogs->alerts.size() == 2; }));
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(step(), Step::folder);
    EXPECT_EQ(putOff, 0);
    EXPECT_FALSE(controller.resume()) << "there is nothing to resume";
}

TEST_F(OnboardingTest, WhatIsPutOffGoesOnWhereItWas) {
    goTo(Step::quality);
    dialogs->answer = 1;
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(putOff, 1);
    EXPECT_EQ(finished, 0);
    EXPECT_FALSE(stored(Settings::onboardingDone).isValid());
    EXPECT_TRUE(controller.resume());
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(step(), Step::quality);
    EXPECT_FALSE(controller.resume());
}

TEST_F(OnboardingTest, AFailedDownloadCanBePutOff) {
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

TEST_F(OnboardingTest, WithoutRoomOnTheDiskNoByteIsFetched) {
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

TEST_F(OnboardingTest, TheLastPageHasAFieldForTheFirstDictation) {
    goTo(Step::ready);
    auto* field = qobject_cast<QLineEdit*>(window().focusWidget());
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->accessibleName(), u"Prova qui"_s);
    QTest::keyClicks(field, u"Ciao a tutti."_s);
    EXPECT_EQ(field->text(), u"Ciao a tutti."_s);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(finished, 1) << "Return still is the button's";
}

TEST_F(OnboardingTest, TheLastPageSaysThatTheKeyIsTakenAndLeadsToTheChoice) {
    platform.hotKeys().contended = HotKeyService::Contention::Common;
    store(Settings::hotkeyPreset, u"opt-space"_s);
    HotKeyStatus::shared().set(HotKeyRefusal{10});
    goTo(Step::ready);
    const auto isTold = [this] {
        return words(window()).last().startsWith(u"⌥ Spazio è già usata da un altro programma"_s);
    };
    EXPECT_TRUE(isTold()) << words(window()).join(u'|').toStdString();
    click(window(), u"Scegli la scorciatoia…"_s);
    EXPECT_EQ(keyChoices, 1);
    HotKeyStatus::shared().set(std::nullopt);
    EXPECT_FALSE(isTold());
    EXPECT_EQ(button(window(), u"Scegli la scorciatoia…"_s), nullptr);
}

TEST_F(OnboardingTest, TheMicrophonePageShowsWhatIsHeard) {
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    goTo(Step::microphone);
    const QProgressBar* bar = nullptr;
    for (const auto* one : window().findChildren<QProgressBar*>()) {
        if (one->accessibleName() == u"Livello del microfono"_s) bar = one;
    }
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(platform.audioInput().running, 1);
    const auto heard = [&](float amplitude) {
        const std::vector<float> sound(AudioCapture::blockFrames, amplitude);
        return desktop::waitFor([&] {
            platform.audioInput().speak(sound);
            return bar->value() > bar->maximum() / 2;
        });
    };
    EXPECT_TRUE(heard(0.5F));
    next();
    EXPECT_EQ(platform.audioInput().running, 0) << "nobody listens on other pages";
}

TEST_F(OnboardingTest, WithoutAMicrophoneThePageSaysWhyUntilOneIsThere) {
    Clock::setScale(0.01);
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    platform.audioInput().present = false;
    goTo(Step::microphone);
    const QString reason = u"Nessun microfono trovato: collegane uno, o attivalo nelle impostazioni audio"_s;
    EXPECT_TRUE(shows(window(), reason)) << words(window()).join(u'|').toStdString();
    click(window(), u"Impostazioni audio"_s);
    EXPECT_EQ(platform.workspace().panes, std::vector{PrivacyPane::Microphone});
    platform.audioInput().present = true;
    EXPECT_TRUE(desktop::waitFor([&] { return platform.audioInput().running == 1; }));
    EXPECT_FALSE(shows(window(), reason));
}

TEST_F(OnboardingTest, TheEndOfTheProgramClosesItAllTheSame) {
    controller.show();
    QEvent quit(QEvent::Quit);
    // As the application object would be asked, without ending the tests.
    QCoreApplication::sendEvent(&window(), &quit);
    EXPECT_TRUE(window().isVisible());
    window().eventFilter(qApp, &quit);
    window().close();
    EXPECT_FALSE(window().isVisible());
}

TEST_F(OnboardingTest, ReturnGoesOn) {
    controller.show();
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_EQ(step(), Step::folder);
}

TEST_F(OnboardingTest, ThePagesShowTheStatedTexts) {
    controller.show();
    expectWords(
        {u"Parlivo"_s, u"Just talk. It types."_s,
         u"Tieni premuto ⌥Spazio, parla, rilascia:\nil testo appare dove stai scrivendo.\nTutto in locale — la tua voce non lascia mai questo Mac."_s});
    next();
    expectWords(
        {u"Dove salvo i modelli AI?"_s,
         u"I motori di trascrizione e pulizia (da 0.6 a 3.3 GB in base alle tue scelte) vengono scaricati una volta sola in questa cartella."_s,
         Config::modelsDir(),
         u"La posizione predefinita va benissimo per la maggior parte delle persone."_s});
    EXPECT_EQ(symbols(), QStringList(u"folder.fill"_s));
    next();
    expectWords({u"Scegli il livello di efficacia"_s, u"TRASCRIZIONE (obbligatoria)"_s, u"Veloce"_s,
                 u"Whisper turbo q5 · 574 MB · ottimo, più leggero"_s, u"Precisa"_s,
                 u"Whisper turbo q8 · 834 MB · massima accuratezza (consigliata)"_s,
                 u"PULIZIA AI (consigliata)"_s, u"Nessuna"_s,
                 u"Solo Whisper · 0 MB · punteggiatura base, nessun download"_s, u"Leggera"_s,
                 u"Qwen 2.5 1.5B · 1.1 GB · filler e punteggiatura, veloce"_s, u"Completa"_s,
                 u"Gemma 3 4B · 2.5 GB · qualità massima (consigliata)"_s});
    next();
    EXPECT_EQ(words(window()).first(), u"Scarico i motori scelti"_s);
}

TEST_F(OnboardingTest, ThePermissionPagesAndTheLastOneShowTheStatedTexts) {
    goTo(Step::microphone);
    expectWords(
        {u"Permesso Microfono"_s,
         u"Serve per registrare la tua voce mentre detti.\nL'audio viene trascritto sul Mac e subito cancellato."_s,
         u"Il microfono non è accessibile: il servizio audio non risponde o lo nega"_s});
    EXPECT_EQ(symbols(), QStringList(u"mic.fill"_s));
    next();
    expectWords(
        {u"Permesso Accessibilità"_s,
         u"Serve per digitare il testo al posto tuo nell'app attiva.\nSenza questo permesso Parlivo non può scrivere.\n\nSi aprono le Impostazioni: attiva Parlivo nell'elenco."_s});
    EXPECT_EQ(symbols(), QStringList(u"keyboard.fill"_s));
    next();
    expectWords(
        {u"Tutto pronto"_s,
         u"Apri una qualsiasi app dove si scrive,\ntieni premuto ⌥Spazio e detta la tua prima frase.\n\nMi trovi nella barra dei menu in alto 🎙️ — lì ci sono Impostazioni e feedback.\nPuoi cambiare livello di efficacia quando vuoi dalle Impostazioni."_s});
    EXPECT_EQ(symbols(), QStringList(u"checkmark.seal.fill"_s));
    EXPECT_EQ(button(window(), u"Continua"_s), nullptr);
}

TEST_F(OnboardingTest, TheLastPageFinishesOnce) {
    goTo(Step::ready);
    EXPECT_FALSE(stored(Settings::onboardingDone).isValid());
    click(window(), u"Inizia a dettare"_s);
    EXPECT_EQ(stored(Settings::onboardingDone), true);
    EXPECT_EQ(finished, 1);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(OnboardingTest, SkippingIsOfferedForThePermissionsOnly) {
    controller.show();
    for (int page = 0; page < stepCount; ++page) {
        const auto wanted = static_cast<Step>(page);
        goTo(wanted);
        const bool permission = wanted == Step::microphone || wanted == Step::accessibility;
        EXPECT_EQ(button(window(), u"Salta"_s) != nullptr, permission) << page;
    }
}

TEST_F(OnboardingTest, SkippingOnlyGoesOn) {
    goTo(Step::microphone);
    click(window(), u"Salta"_s);
    EXPECT_EQ(step(), Step::accessibility);
    click(window(), u"Salta"_s);
    EXPECT_EQ(step(), Step::ready);
    EXPECT_TRUE(platform.permissions().microphoneRequests.empty());
    EXPECT_EQ(platform.permissions().prompts, 0);
}

TEST_F(OnboardingTest, TheFolderIsStoredOnLeavingItsPage) {
    goTo(Step::folder);
    const QString before = Config::modelsDir();
    const QString chosen = platform.directories().temporary() + u"/modelli miei"_s;
    dialogs->folder = chosen;
    click(window(), u"Cambia…"_s);
    EXPECT_EQ(dialogs->questions.at(0).startingIn, before);
    EXPECT_EQ(dialogs->questions.at(0).prompt, u"Usa questa cartella"_s);
    EXPECT_TRUE(shows(window(), chosen));
    for (const auto* label : window().findChildren<QLabel*>()) {
        if (label->text() == chosen) {
            EXPECT_EQ(label->toolTip(), chosen) << "a long path can be read";
        }
    }
    EXPECT_FALSE(stored(Settings::modelsDir).isValid());
    next();
    EXPECT_EQ(stored(Settings::modelsDir), chosen);
}

TEST_F(OnboardingTest, ACancelledFolderChooserChangesNothing) {
    goTo(Step::folder);
    const QString before = Config::modelsDir();
    click(window(), u"Cambia…"_s);
    EXPECT_TRUE(shows(window(), before));
    next();
    EXPECT_EQ(stored(Settings::modelsDir), before);
}

TEST_F(OnboardingTest, TheFullCleanupIsProposedWhateverIsStored) {
    store(Settings::asrTier, u"fast"_s);
    store(Settings::cleanupTier, u"light"_s);
    goTo(Step::quality);
    EXPECT_TRUE(button(window(), u"Veloce"_s)->isChecked());
    EXPECT_FALSE(button(window(), u"Precisa"_s)->isChecked());
    EXPECT_TRUE(button(window(), u"Completa"_s)->isChecked());
    EXPECT_EQ(stored(Settings::cleanupTier), u"light"_s);
    next();
    EXPECT_EQ(stored(Settings::asrTier), u"fast"_s);
    EXPECT_EQ(stored(Settings::cleanupTier), u"full"_s);
}

TEST_F(OnboardingTest, TheTiersAreStoredOnLeavingTheirPage) {
    goTo(Step::quality);
    EXPECT_TRUE(button(window(), u"Precisa"_s)->isChecked());
    click(window(), u"Veloce"_s);
    click(window(), u"Leggera"_s);
    EXPECT_FALSE(stored(Settings::asrTier).isValid());
    next();
    EXPECT_EQ(stored(Settings::asrTier), u"fast"_s);
    EXPECT_EQ(stored(Settings::cleanupTier), u"light"_s);
    EXPECT_EQ(fetch.started, QStringList(u"fast"_s));
}

TEST_F(OnboardingTest, DownloadsRunOneAfterTheOtherAndThenThePageIsLeft) {
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

TEST_F(OnboardingTest, ReturnDoesNotLeaveARunningDownload) {
    goTo(Step::download);
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_EQ(step(), Step::download);
}

TEST_F(OnboardingTest, KeysDoNotStartARunningDownloadAgain) {
    goTo(Step::download);
    pressWhereTheFocusIs();
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
    fetch.progress(0.55, 480'000'000, 874'188'075);
    pressWhereTheFocusIs();
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
    EXPECT_TRUE(shows(window(), u"55%  ·  457 / 833 MB"_s)) << words(window()).join(u'|').toStdString();
}

TEST_F(OnboardingTest, ADownloadThatRunsIsNotStartedAgain) {
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

TEST_F(OnboardingTest, KeysDoNotStartASecondAttemptAgain) {
    goTo(Step::download);
    fetch.fail(u"rete"_s);
    EXPECT_EQ(window().focusWidget(), button(window(), u"Riprova"_s));
    click(window(), u"Riprova"_s);
    pressWhereTheFocusIs();
    EXPECT_EQ(fetch.started, QStringList({u"best"_s, u"best"_s})) << "the failed one and the second attempt";
}

TEST_F(OnboardingTest, AFailureOffersToTryAgainAndSkipsWhatIsThere) {
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

TEST_F(OnboardingTest, AfterAFailureOfTheFirstTheSecondIsNotTried) {
    goTo(Step::download);
    fetch.fail(u"rete"_s);
    EXPECT_EQ(fetch.started, QStringList(u"best"_s));
}

TEST_F(OnboardingTest, WhatIsThereAlreadyIsNotDownloaded) {
    makeModel(ModelCatalog::asrTier(u"best"_s));
    makeModel(ModelCatalog::cleanupTier(u"full"_s));
    goTo(Step::download);
    EXPECT_TRUE(fetch.started.isEmpty());
    expectWords({u"Scarico i motori scelti"_s, u"Tutto scaricato e verificato"_s});
    EXPECT_TRUE(mainButton()->isEnabled());
}

TEST_F(OnboardingTest, WithoutCleanupThereIsOneDownloadAtMost) {
    goTo(Step::quality);
    click(window(), u"Nessuna"_s);
    next();
    EXPECT_TRUE(shows(window(), u"1 di 1: Precisa — ggml-large-v3-turbo-q8_0.bin"_s));
    fetch.succeed();
    EXPECT_TRUE(mainButton()->isEnabled());
}

TEST_F(OnboardingTest, TheMicrophoneIsAskedForAndItsAnswerShown) {
    goTo(Step::microphone);
    click(window(), u"Consenti microfono"_s);
    EXPECT_EQ(platform.permissions().microphoneRequests, std::vector{MicrophoneCheck::ByRecording});
    desktop::letPass(std::chrono::milliseconds(20));
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s)) << "refused";
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    click(window(), u"Consenti microfono"_s);
    EXPECT_TRUE(desktop::waitFor([&] { return shows(window(), u"Permesso concesso"_s); }));
    EXPECT_EQ(button(window(), u"Consenti microfono"_s), nullptr);
    EXPECT_EQ(symbols(), QStringList({u"mic.fill"_s, u"checkmark.circle.fill"_s}));
}

TEST_F(OnboardingTest, AMicrophoneThatIsAllowedAlreadyIsNotAskedFor) {
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    goTo(Step::microphone);
    EXPECT_TRUE(shows(window(), u"Permesso concesso"_s));
}

TEST_F(OnboardingTest, AnAnswerAboutTheMicrophoneThatComesLaterIsShown) {
    goTo(Step::microphone);
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s));
    platform.permissions().setMicrophone(MicrophoneStatus::Authorised);
    EXPECT_TRUE(shows(window(), u"Permesso concesso"_s));
    platform.permissions().setMicrophone(MicrophoneStatus::Denied);
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s));
    next();
    platform.permissions().setMicrophone(MicrophoneStatus::Authorised);
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s)) << "that is another page's";
}

TEST_F(OnboardingTest, TheAccessibilityPageTurnsByItself) {
    Clock::setScale(0.01);
    goTo(Step::accessibility);
    click(window(), u"Apri Impostazioni"_s);
    EXPECT_EQ(platform.permissions().prompts, 1);
    EXPECT_EQ(platform.workspace().panes, std::vector{PrivacyPane::Accessibility});
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s));
    platform.permissions().trusted = true;
    EXPECT_TRUE(desktop::waitFor([&] { return shows(window(), u"Permesso concesso"_s); }));
    EXPECT_EQ(button(window(), u"Apri Impostazioni"_s), nullptr);
    platform.permissions().trusted = false;
    EXPECT_TRUE(desktop::waitFor([&] { return !shows(window(), u"Permesso concesso"_s); }));
    EXPECT_EQ(platform.permissions().prompts, 1) << "looking does not prompt";
}

TEST_F(OnboardingTest, TheDotsTellTheStep) {
    goTo(Step::quality);
    bool told = false;
    for (const auto* widget : window().findChildren<QWidget*>())
        told |= widget->accessibleName() == u"Passo 3 di 7"_s;
    EXPECT_TRUE(told);
}

}  // namespace
}  // namespace parlivo
