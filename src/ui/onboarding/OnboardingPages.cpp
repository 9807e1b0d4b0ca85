#include "ui/onboarding/OnboardingPages.h"

#include "ui/views/AppIcon.h"
#include "ui/views/ChoiceRow.h"
#include "ui/views/Form.h"
#include "ui/views/Progress.h"
#include "ui/views/SymbolView.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QProgressBar>
#include <QVBoxLayout>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr int symbolSize = 52;
constexpr int iconSize = 96;
constexpr int dotSize = 7;
constexpr int dotGap = 7;
constexpr float paleInk = 0.35F;
constexpr double otherDots = 0.2;
constexpr double mebibyte = 1 << 20;

QWidget* makeCheckLine(const QString& text, QWidget* parent) {
    auto* line = new QWidget(parent);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addStretch(1);
    row->addWidget(new SymbolView(u"checkmark.circle.fill"_s, 20, successColour, line));
    auto* words = new Label(text, TextStyle::Headline, primaryColour, line);
    words->setWordWrap(false);
    row->addWidget(words);
    row->addStretch(1);
    return line;
}

qint64 wholeMebibytes(qint64 bytes) {
    return bytes / static_cast<qint64>(mebibyte);
}

QString figuresOf(const DownloadState& state) {
    return QString::asprintf("%.0f%%  ·  %lld / %lld MB", state.progress * 100,
                             wholeMebibytes(state.received), wholeMebibytes(state.total));
}

}  // namespace

QColor inkColour(const QPalette& palette) {
    return primaryColour(palette);
}

QColor paleInkColour(const QPalette& palette) {
    QColor colour = inkColour(palette);
    colour.setAlphaF(paleInk);
    return colour;
}

CentredPage::CentredPage(QWidget* parent) : QWidget(parent), column_(new QVBoxLayout) {
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addStretch(1);
    whole->addLayout(column_);
    whole->addStretch(1);
    column_->setSpacing(14);
}

void CentredPage::symbol(const QString& name) {
    column_->addWidget(new SymbolView(name, symbolSize, inkColour, this), 0, Qt::AlignHCenter);
}

void CentredPage::title(const QString& text) {
    auto* label = new Label(text, TextStyle::Title, inkColour, this);
    label->setAlignment(Qt::AlignHCenter);
    column_->addWidget(label);
}

Label& CentredPage::text(const QString& text) {
    auto* label = new Label(text, TextStyle::Lead, inkColour, this);
    label->setAlignment(Qt::AlignHCenter);
    column_->addWidget(label);
    return *label;
}

void CentredPage::add(QWidget* widget) {
    column_->addWidget(widget);
}

void CentredPage::gap(int points) {
    column_->addSpacing(points);
}

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

FolderPage::FolderPage(const QString& path, const std::function<void()>& pick, QWidget* parent)
    : CentredPage(parent) {
    title(u"Dove salvo i modelli AI?"_s);
    text(
        u"I motori di trascrizione e pulizia (da 0.6 a 3.3 GB in base alle tue scelte) vengono scaricati una "
        u"volta "
        "sola in questa cartella."_s);
    auto* line = new QWidget(this);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(0, 8, 0, 8);
    row->setSpacing(10);
    path_ = new Label(path, TextStyle::Body, inkColour, line);
    row->addWidget(new SymbolView(u"folder.fill"_s, 22, inkColour, line));
    row->addWidget(path_, 1);
    row->addWidget(makeButton(u"Cambia…"_s, pick, line));
    add(line);
    Label& note = text(u"La posizione predefinita va benissimo per la maggior parte delle persone."_s);
    note.setFont(textFont(TextStyle::Caption));
    showPath(path);
}

void FolderPage::showPath(const QString& path) {
    path_->setText(path);
    path_->setToolTip(path);
}

QualityPage::QualityPage(QWidget* parent) : CentredPage(parent) {
    title(u"Scegli il livello di efficacia"_s);
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
    auto* words = new Label(heading, TextStyle::Caption, secondaryColour, group);
    words->setFont(font);
    rows->addWidget(words);
    for (const ModelCatalog::Entry& entry : tiers) {
        auto* row = new ChoiceRow(entry.label, entry.detail, paleInkColour, group);
        row->setSelected(entry.id == chosen);
        row->onChosen = [choose, id = entry.id] { choose(id); };
        rows->addWidget(row);
    }
    add(group);
}

DownloadPage::DownloadPage(const std::function<void()>& retry, QWidget* parent) : CentredPage(parent) {
    title(u"Scarico i motori scelti"_s);
    gap(8);
    addProgress();
    addFailure(retry);
    done_ = makeCheckLine(u"Tutto scaricato e verificato"_s, this);
    add(done_);
}

void DownloadPage::addProgress() {
    running_ = new QWidget(this);
    label_ = new Label({}, TextStyle::Body, inkColour, running_);
    bar_ = makeProgressBar(running_);
    figures_ = new Label({}, TextStyle::Caption, secondaryColour, running_);
    auto* lines = new QVBoxLayout(running_);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(10);
    for (QWidget* line :
         {static_cast<QWidget*>(label_), static_cast<QWidget*>(bar_), static_cast<QWidget*>(figures_)})
        lines->addWidget(line);
    add(running_);
}

void DownloadPage::addFailure(const std::function<void()>& retry) {
    failed_ = new QWidget(this);
    auto* failure = new QVBoxLayout(failed_);
    failure->setSpacing(14);
    error_ = new Label({}, TextStyle::Body, errorColour, failed_);
    error_->setAlignment(Qt::AlignHCenter);
    failure->addWidget(error_);
    failure->addWidget(makeButton(u"Riprova"_s, retry, failed_), 0, Qt::AlignHCenter);
    add(failed_);
}

void DownloadPage::show(const DownloadState& state) {
    label_->setText(state.downloadLabel);
    showFraction(*bar_, state.progress);
    figures_->setText(figuresOf(state));
    running_->setVisible(state.downloading);
    error_->setText(state.downloadError.value_or(QString()));
    failed_->setVisible(state.downloadError.has_value());
    done_->setVisible(state.downloadsDone);
}

PermissionPage::PermissionPage(const Words& words, const std::function<void()>& ask, QWidget* parent)
    : CentredPage(parent) {
    symbol(words.symbol);
    title(words.title);
    text(words.text);
    gap(6);
    auto* line = new QWidget(this);
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(0, 0, 0, 0);
    button_ = makeButton(words.button, ask, line);
    granted_ = makeCheckLine(u"Permesso concesso"_s, line);
    row->addStretch(1);
    row->addWidget(button_);
    row->addWidget(granted_);
    row->addStretch(1);
    line->setMinimumHeight(button_->sizeHint().height());
    add(line);
}

void PermissionPage::setGranted(bool granted) {
    button_->setVisible(!granted);
    granted_->setVisible(granted);
}

StepDots::StepDots(QWidget* parent) : QWidget(parent) {
    setFixedSize(stepCount * dotSize + (stepCount - 1) * dotGap, dotSize);
}

void StepDots::setStep(Step step) {
    step_ = step;
    setAccessibleName(u"Passo %1 di %2"_s.arg(static_cast<int>(step) + 1).arg(stepCount));
    update();
}

void StepDots::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(inkColour(palette()));
    for (int i = 0; i < stepCount; ++i) {
        painter.setOpacity(i == static_cast<int>(step_) ? 1 : otherDots);
        painter.drawEllipse(i * (dotSize + dotGap), 0, dotSize, dotSize);
    }
}

}  // namespace parlivo
