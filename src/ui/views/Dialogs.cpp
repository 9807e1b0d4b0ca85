// SPDX-License-Identifier: MIT
#include "ui/views/Dialogs.h"

#include "ui/views/AppIcon.h"
#include "ui/views/Labels.h"
#include "ui/views/ScrollBars.h"
#include "ui/views/Windows.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
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
    useSlimScrollBar(*area);
    const std::unique_ptr<QLayoutItem> former(box.layout()->replaceWidget(text, area));
    constexpr int gap = 8;  // between the text and the scroll bar
    text->setContentsMargins(text->contentsMargins() + QMargins(0, 0, gap, 0));
    area->setMinimumWidth(text->sizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    area->setFixedHeight(limit);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(text);
}

/// Keeps the keys of somebody who goes on typing from answering an alert that has just come up: none counts
/// until there has been a pause.
class TypingGuard : public QObject {
  public:
    explicit TypingGuard(QObject* parent) : QObject(parent) { sinceKey_.start(); }

  private:
    bool eventFilter(QObject*, QEvent* event) override {
        const auto type = event->type();
        if (type != QEvent::KeyPress && type != QEvent::KeyRelease && type != QEvent::ShortcutOverride)
            return false;
        constexpr qint64 pause = 1500;  // ms
        if (awake_ || sinceKey_.hasExpired(pause)) {
            awake_ = true;
            return false;
        }
        sinceKey_.start();
        event->accept();
        return true;
    }

    QElapsedTimer sinceKey_;
    bool awake_ = false;
};

/// Shows it above the other windows, but leaves the keyboard where it is, as far as the window manager heeds
/// that; where it does not, the keys do not count at first.
void showWithoutTakingKeys(QMessageBox& box) {
    auto* guard = new TypingGuard(&box);
    box.installEventFilter(guard);
    for (QAbstractButton* button : box.buttons()) button->installEventFilter(guard);
    box.setAttribute(Qt::WA_ShowWithoutActivating);
    box.show();
    box.raise();
    QApplication::alert(&box);
}

/// The application's icon, and the message in bold.
void applyLook(QMessageBox& box) {
    constexpr int iconSize = 56;
    const QIcon icon = appIcon();
    if (!icon.isNull()) box.setIconPixmap(icon.pixmap(QSize(iconSize, iconSize), box.devicePixelRatioF()));
    auto* message = box.findChild<QLabel*>(u"qt_msgbox_label"_s);
    if (!message) return;
    message->setFont(textFont(TextStyle::Headline));
    // The box makes itself as narrow as its title, and its explanation a column of single words.
    constexpr int charactersALine = 44;
    message->setMinimumWidth(charactersALine * message->fontMetrics().averageCharWidth());
}

int DesktopDialogs::ask(const Alert& alert) {
    QMessageBox box(QMessageBox::Information, u"Parlivo"_s, alert.message);
    box.setTextFormat(Qt::PlainText);
    applyLook(box);
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
    if (alert.arrival == Alert::Arrival::Unbidden) {
        showWithoutTakingKeys(box);
    } else {
        bringToFront(box);
    }
    box.exec();
    const auto chosen = buttons.indexOf(qobject_cast<QPushButton*>(box.clickedButton()));
    return static_cast<int>(chosen < 0 ? buttons.size() - 1 : chosen);
}

/// The folder itself, or the nearest above it that is there.
QString nearestExisting(QString folder) {
    while (!QFileInfo::exists(folder) && !QDir(folder).isRoot()) folder = QFileInfo(folder).path();
    return folder;
}

/// Qt's own panel cuts the heads of its columns off; a desktop's panel has none. A folder has no size of its
/// own, and all are of one type.
void fitColumns(const QFileDialog& panel) {
    auto* list = panel.findChild<QTreeView*>();
    if (!list) return;
    for (const int sizeOrType : {1, 2}) list->hideColumn(sizeOrType);
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
    fitToScreen(panel);
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
