#include "ui/onboarding/TextPages.h"

#include "ui/onboarding/CentredPage.h"
#include "ui/views/AppIcon.h"

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 96;

}  // namespace

QWidget* makeWelcomePage(QWidget* parent) {
    auto* page = new CentredPage(parent);
    auto* icon = new QLabel(page);
    icon->setPixmap(appIcon().pixmap(QSize(iconSize, iconSize), parent->devicePixelRatioF()));
    icon->setAlignment(Qt::AlignHCenter);
    page->add(icon);
    page->title(u"Parlivo"_s);
    page->text(u"Just talk. It types."_s).setFont(textFont(TextStyle::Headline));
    page->gap(10);
    page->text(
        u"Tieni premuto ⌥Spazio, parla, rilascia:\nil testo appare dove stai scrivendo.\nTutto in locale — "
        u"la tua "
        "voce non lascia mai questo Mac."_s);
    return page;
}

QWidget* makeReadyPage(QWidget* parent) {
    auto* page = new CentredPage(parent);
    page->symbol(u"checkmark.seal.fill"_s);
    page->title(u"Tutto pronto"_s);
    page->text(
        u"Apri una qualsiasi app dove si scrive,\ntieni premuto ⌥Spazio e detta la tua prima frase.\n\nMi "
        u"trovi "
        "nella barra dei menu in alto 🎙️ — lì ci sono Impostazioni e feedback.\nPuoi cambiare "
        "livello "
        "di efficacia "
        "quando vuoi dalle Impostazioni."_s);
    return page;
}

}  // namespace parlivo
