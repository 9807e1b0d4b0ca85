// SPDX-License-Identifier: MIT
#include "ui/views/Dialogs.h"

#include "ui/views/Windows.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QTreeView>

#include <memory>
#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

class DesktopDialogs : public Dialogs {
    Q_DECLARE_TR_FUNCTIONS(parlivo::Dialogs)

  public:
    int ask(const Alert& alert) override;
    std::optional<QString> chooseFolder(const QString& startingIn, const QString& prompt) override;
};

/// The label of the informative text, for which QMessageBox has no settings; nullptr without such a text.
QLabel* informativeLabel(const QMessageBox& box) {
    return box.findChild<QLabel*>(u"qt_msgbox_informativelabel"_s);
}

/// A long text scrolls: the buttons below it must stay on the screen.
void limitHeight(QMessageBox& box) {
    QLabel* text = informativeLabel(box);
    const int limit = box.screen()->availableSize().height() / 2;
    if (!text || text->sizeHint().height() <= limit) return;
    auto* area = new QScrollArea(&box);
    const std::unique_ptr<QLayoutItem> former(box.layout()->replaceWidget(text, area));
    area->setMinimumSize(
        text->sizeHint().width() + box.style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, area),
        limit);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(text);
}

int DesktopDialogs::ask(const Alert& alert) {
    QMessageBox box(QMessageBox::Information, u"Parlivo"_s, alert.message);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(alert.informativeText);
    if (QLabel* text = informativeLabel(box)) text->setTextFormat(Qt::PlainText);
    QList<QPushButton*> buttons;
    for (const QString& label : alert.buttons) {
        buttons.append(
            box.addButton(label, buttons.isEmpty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole));
    }
    box.setDefaultButton(buttons.first());
    box.setEscapeButton(buttons.last());
    limitHeight(box);
    bringToFront(box);
    box.exec();
    const auto chosen = buttons.indexOf(qobject_cast<QPushButton*>(box.clickedButton()));
    return static_cast<int>(chosen < 0 ? buttons.size() - 1 : chosen);
}

/// The folder itself, or the nearest above it that is there.
QString nearestExisting(QString folder) {
    while (!QFileInfo::exists(folder) && !QDir(folder).isRoot()) folder = QFileInfo(folder).path();
    return folder;
}

/// Qt's own panel cuts the heads of its columns off; a desktop's panel has none.
void fitColumns(const QFileDialog& panel) {
    const auto* list = panel.findChild<QTreeView*>();
    if (!list) return;
    list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
}

std::optional<QString> DesktopDialogs::chooseFolder(const QString& startingIn, const QString& prompt) {
    QFileDialog panel(QApplication::activeWindow(), prompt, nearestExisting(startingIn));
    panel.setFileMode(QFileDialog::Directory);
    panel.setOption(QFileDialog::ShowDirsOnly);
    panel.setLabelText(QFileDialog::Accept, prompt);
    panel.setLabelText(QFileDialog::Reject, tr("Annulla"));
    panel.setLabelText(QFileDialog::LookIn, tr("Cerca in:"));
    panel.setLabelText(QFileDialog::FileName, tr("Cartella:"));
    panel.setLabelText(QFileDialog::FileType, tr("Tipo:"));
    fitColumns(panel);
    if (panel.exec() != QDialog::Accepted || panel.selectedFiles().isEmpty()) return std::nullopt;
    return panel.selectedFiles().first();
}

std::unique_ptr<Dialogs>& installed() {
    static std::unique_ptr<Dialogs> dialogs;
    return dialogs;
}

}  // namespace

Dialogs& Dialogs::current() {
    if (!installed()) installed() = std::make_unique<DesktopDialogs>();
    return *installed();
}

void Dialogs::install(std::unique_ptr<Dialogs> dialogs) {
    installed() = std::move(dialogs);
}

}  // namespace parlivo
