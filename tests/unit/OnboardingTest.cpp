// SPDX-License-Identifier: MIT
#include "OnboardingFixture.h"
#include "input/HotKeyManager.h"
#include "input/HotKeyStatus.h"
#include "settings/Config.h"
#include "support/Words.h"
#include "ui/views/ChoiceRow.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

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

TEST_F(OnboardingTest, ItsPagesNameTheKeyInForceOrNone) {
    const Words words_(
        {{"Tieni premuto ⌥Spazio, parla, rilascia:\nil testo appare dove stai scrivendo.\nTutto in locale — "
          "la tua voce non lascia mai questo Mac.",
          u"Tieni premuto %1."_s}});
    platform.hotKeys().contended = HotKeyService::Contention::Common;
    controller.show();
    const auto presets = HotKeyManager::presets();
    EXPECT_TRUE(shows(window(), u"Tieni premuto %1."_s.arg(presets[0].label)));
    HotKeyStatus::shared().set(HotKeyRefusal{10});
    EXPECT_TRUE(shows(window(), u"Tieni premuto il tasto che sceglierai."_s));
    store(Settings::hotkeyPreset, presets[1].id);
    HotKeyStatus::shared().set(std::nullopt);
    EXPECT_TRUE(shows(window(), u"Tieni premuto %1."_s.arg(presets[1].label)));
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

TEST_F(OnboardingTest, TheDotsShowTheStep) {
    goTo(Step::quality);
    bool told = false;
    for (const auto* widget : window().findChildren<QWidget*>())
        told |= widget->accessibleName() == u"Passo 3 di 7"_s;
    EXPECT_TRUE(told);
}

}  // namespace
}  // namespace parlivo
