// SPDX-License-Identifier: MIT
#include "ui/onboarding/QualityPage.h"

#include "ui/onboarding/InkColour.h"
#include "ui/views/ChoiceRow.h"

#include <QVBoxLayout>

namespace parlivo {

using namespace Qt::StringLiterals;

QualityPage::QualityPage(QWidget* parent) : CentredPage(parent) {
    title(tr("Scegli il livello di efficacia"));
}

void QualityPage::section(const QString& heading, const std::vector<ModelCatalog::Entry>& tiers,
                          const QString& chosen, const Choose& choose) {
    auto* group = new QWidget(this);
    group->setAccessibleName(heading);
    auto* rows = new QVBoxLayout(group);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(4);
    QFont font = textFont(TextStyle::Caption);
    font.setWeight(QFont::DemiBold);
    auto* words = new Label(heading, TextStyle::Caption, inkColour, group);
    words->setFont(font);
    rows->addWidget(words);
    for (const ModelCatalog::Entry& entry : tiers) {
        auto* row =
            new ChoiceRow(entry.label, entry.detail,
                          {.circle = paleInkColour, .detail = inkColour, .edge = edgeInkColour}, group);
        row->setSelected(entry.id == chosen);
        row->onChosen = [choose, id = entry.id] { choose(id); };
        rows->addWidget(row);
    }
    add(group);
}

}  // namespace parlivo
