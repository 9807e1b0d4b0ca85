// SPDX-License-Identifier: MIT
#include "ui/onboarding/FolderPage.h"

#include "ui/onboarding/InkColour.h"
#include "ui/views/Form.h"
#include "ui/views/SymbolView.h"
#include "ui/views/Windows.h"

#include <QHBoxLayout>

namespace parlivo {

using namespace Qt::StringLiterals;

FolderPage::FolderPage(const QString& path, const std::function<void()>& pick, QWidget* parent)
    : CentredPage(parent) {
    title(tr("Dove salvo i modelli AI?"));
    text(tr(
        "I motori di trascrizione e pulizia (da 0.6 a 3.3 GB in base alle tue scelte) vengono scaricati una volta sola in questa cartella."));
    auto* line = new QWidget(this);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(0, 8, 0, 8);
    row->setSpacing(10);
    path_ = new Label(path, TextStyle::Body, inkColour, line);
    row->addWidget(new SymbolView(u"folder.fill"_s, 22, inkColour, line));
    row->addWidget(path_, 1);
    row->addWidget(makeButton(tr("Cambia…"), pick, line));
    add(line);
    Label& note = text(tr("La posizione predefinita va benissimo per la maggior parte delle persone."));
    note.setFont(textFont(TextStyle::Caption));
    showPath(path);
}

void FolderPage::showPath(const QString& path) {
    path_->setText(path);
    setPlainToolTip(*path_, path);
}

}  // namespace parlivo
