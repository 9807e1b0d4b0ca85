#include "ui/settings/DictionaryTab.h"

#include "settings/Config.h"
#include "ui/views/Form.h"

namespace parlivo {

using namespace Qt::StringLiterals;

DictionaryTab::DictionaryTab(QWidget* parent) : QWidget(parent) {
    Form form(*this);
    form.text(u"Nomi propri, brand e termini tecnici — uno per riga."_s);
    form.caption(
        u"Whisper li usa per riconoscerli meglio e la pulizia AI li scrive esattamente così (es. nomi di "
        u"persone, "
        "aziende, sigle del tuo lavoro)."_s);
    auto& dictionary = form.add(new TextEditor(u"Dizionario"_s, bindingTo(Settings::dictionary), this));
    dictionary.setFont(monospacedFont(TextStyle::Body));
}

}  // namespace parlivo
