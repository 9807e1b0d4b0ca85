// SPDX-License-Identifier: MIT
#include "ui/settings/DictionaryTab.h"

#include "settings/Config.h"
#include "ui/views/Form.h"
#include "ui/views/OutlinedBox.h"

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {
constexpr int fewestLines = 6;
}  // namespace

DictionaryTab::DictionaryTab(QWidget* parent) : FormPage(parent) {
    Form form(contents());
    form.text(tr("Nomi propri, brand e termini tecnici — uno per riga."));
    form.caption(tr(
        "Whisper li usa per riconoscerli meglio e la pulizia AI li scrive esattamente così (es. nomi di persone, aziende, sigle del tuo lavoro)."));
    auto* dictionary = new TextEditor(tr("Dizionario"), bindingTo(Settings::dictionary), this);
    dictionary->setFrameShape(QFrame::NoFrame);
    dictionary->setFont(monospacedFont(TextStyle::Body));
    dictionary->setMinimumHeight(fewestLines * dictionary->fontMetrics().lineSpacing());
    auto* outline = new OutlinedBox;
    outline->fill(dictionary);
    form.row({outline});
}

}  // namespace parlivo
