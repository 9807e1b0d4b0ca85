// SPDX-License-Identifier: MIT
#include "ui/onboarding/TextPages.h"

#include "input/HotKeySentence.h"
#include "input/HotKeyStatus.h"
#include "ui/onboarding/CentredPage.h"
#include "ui/views/AppIcon.h"

#include <QCoreApplication>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::TextPages)
};

constexpr int iconSize = 96;

/// The key may turn out to be refused, or become another one, while the page is shown.
void addSentence(CentredPage& page, const HotKeySentence& sentence) {
    Label& label = page.text(hotKeySentence(sentence));
    QObject::connect(&HotKeyStatus::shared(), &HotKeyStatus::changed, &label,
                     [&label, sentence] { label.setText(hotKeySentence(sentence)); });
}

}  // namespace

QWidget* makeWelcomePage(QWidget* parent) {
    auto* page = new CentredPage(parent);
    auto* icon = new QLabel(page);
    icon->setPixmap(appIcon().pixmap(QSize(iconSize, iconSize), parent->devicePixelRatioF()));
    icon->setAlignment(Qt::AlignHCenter);
    page->add(icon);
    page->title(u"Parlivo"_s);
    page->text(Texts::tr("Just talk. It types.")).setFont(textFont(TextStyle::Headline));
    page->gap(10);
    addSentence(
        *page,
        {.held = Texts::tr(
             "Tieni premuto ⌥Spazio, parla, rilascia:\nil testo appare dove stai scrivendo.\nTutto in locale — la tua voce non lascia mai questo Mac."),
         .pressed = Texts::tr(
             "Premi %1, parla, ripremi:\nil testo appare dove stai scrivendo.\nTutto in locale — la tua voce non lascia mai questo computer."),
         .none = Texts::tr(
             "Premi il tasto che avrai assegnato a Parlivo, parla, ripremi:\nil testo appare dove stai scrivendo.\nTutto in locale — la tua voce non lascia mai questo computer.")});
    return page;
}

void fillReadyPage(CentredPage& page) {
    page.symbol(u"checkmark.seal.fill"_s);
    page.title(Texts::tr("Tutto pronto"));
    addSentence(
        page,
        {.held = Texts::tr(
             "Apri una qualsiasi app dove si scrive,\ntieni premuto ⌥Spazio e detta la tua prima frase.\n\nMi trovi nella barra dei menu in alto 🎙️ — lì ci sono Impostazioni e feedback.\nPuoi cambiare livello di efficacia quando vuoi dalle Impostazioni."),
         .pressed = Texts::tr(
             "Apri una qualsiasi app dove si scrive,\npremi %1, detta la tua prima frase e ripremi.\n\nMi trovi nel pannello 🎙️ — lì ci sono Impostazioni e feedback.\nPuoi cambiare livello di efficacia quando vuoi dalle Impostazioni."),
         .none = Texts::tr(
             "Assegna un tasto a Parlivo come scritto qui sotto; poi apri una qualsiasi app\ndove si scrive, premi il tasto, detta la tua prima frase e ripremi.\n\nMi trovi nel pannello 🎙️ — lì ci sono Impostazioni e feedback.")});
}

}  // namespace parlivo
