// SPDX-License-Identifier: MIT
#include "app/menu/StatusMenu.h"

#include "input/HotKeyStatus.h"
#include "input/HotKeyTitle.h"
#include "platform/Platform.h"
#include "ui/views/Contrast.h"
#include "ui/views/SymbolIcon.h"
#include "ui/views/SystemColour.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QPalette>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace parlivo {

namespace {

const auto programName = QStringLiteral("Parlivo");

QString microphoneTitle(MicrophoneStatus status) {
    switch (status) {
        case MicrophoneStatus::Authorised:
            return StatusMenu::tr("Microfono: ✅");
        case MicrophoneStatus::NotAsked:
            return StatusMenu::tr("Microfono: ⚠️ non richiesto — clicca");
        case MicrophoneStatus::Denied:
            return StatusMenu::tr("Microfono: ⛔️ negato — clicca");
    }
    return {};
}

QString accessibilityTitle(bool trusted) {
    return trusted ? StatusMenu::tr("Accessibilità: ✅")
                   : StatusMenu::tr("Accessibilità: ⛔️ manca — clicca");
}

QString updateTitle(const QString& version, UpdateStage stage) {
    return (stage == UpdateStage::Offered ? StatusMenu::tr("⬆️ Aggiorna a Parlivo %1…")
                                          : StatusMenu::tr("⬇️ Scarico Parlivo %1…"))
        .arg(version);
}

/// `text` as a menu shows it letter for letter. A menu of ours takes an ampersand for the mark of a shortcut,
/// a panel's an underscore; on the way to the panel the toolkit turns the first ampersand into an underscore.
/// What follows a tab would be taken for a shortcut's name.
QString escaped(QString text, StatusItemPlace::Menus menus) {
    text.replace(QLatin1Char('\t'), QLatin1Char(' '));
    if (menus == StatusItemPlace::Menus::DrawnByUs)
        return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
    text.replace(QLatin1Char('_'), QStringLiteral("__"));
    const auto ampersand = text.indexOf(QLatin1Char('&'));
    return ampersand < 0 ? text : text.insert(ampersand, QLatin1Char('&'));
}

std::optional<SystemColour> tintColour(Tint tint) {
    switch (tint) {
        case Tint::None:
            return {};
        case Tint::Red:
            return SystemColour::Red;
        case Tint::Orange:
            return SystemColour::Orange;
        case Tint::Purple:
            return SystemColour::Purple;
        case Tint::Blue:
            return SystemColour::Blue;
    }
    return {};
}

/// The colour of symbols without a tint, as that of a menu bar's own items.
QColor plainColour(StatusItemPlace::Foreground foreground) {
    switch (foreground) {
        case StatusItemPlace::Foreground::Dark:
        case StatusItemPlace::Foreground::Unknown:
            return {0x22, 0x22, 0x22};
        case StatusItemPlace::Foreground::Light:
            return {0xf2, 0xf2, 0xf2};
        case StatusItemPlace::Foreground::Template:
            break;
    }
    return QApplication::palette().color(QPalette::WindowText);
}

/// What panels are like on which symbols are dark, or light.
QColor panelColour(Background background) {
    return background == Background::Dark ? QColor(0x2e, 0x2e, 0x2e) : QColor(0xf0, 0xf0, 0xf0);
}

}  // namespace

StatusMenu::StatusMenu(const Actions& actions, QObject* parent)
    : QObject(parent), updateTitle_(tr("Aggiornamento disponibile…")) {
    build(actions);
    Platform::current().statusItems().watch([this](const auto& place) { placeChanged(place); });
}

StatusMenu::~StatusMenu() {
    Platform::current().statusItems().watch({});
}

void StatusMenu::build(const Actions& actions) {
    statusMenuItem_ = addItem({}, [this] {
        if (titleAction_) titleAction_();
    });
    statusMenuItem_->setEnabled(false);
    menu_.addSeparator();
    micMenuItem_ = addItem(microphoneTitle(MicrophoneStatus::NotAsked), actions.openMicSettings);
    axMenuItem_ = addItem(accessibilityTitle(false), actions.openAccessibilitySettings);
    menu_.addSeparator();
    updateMenuItem_ = addItem(updateTitle_, actions.installUpdate);
    updateMenuItem_->setVisible(false);
    addItem(tr("Impostazioni…"), actions.openSettings)->setShortcut(Qt::CTRL | Qt::Key_Comma);
    addItem(tr("Invia feedback…"), actions.openFeedback);
    menu_.addSeparator();
    addItem(tr("Esci da Parlivo"), actions.quit)->setShortcut(Qt::CTRL | Qt::Key_Q);
    menu_.installEventFilter(this);
    if (actions.willOpen) connect(&menu_, &QMenu::aboutToShow, this, actions.willOpen);
}

/// The first line is disabled, so it is drawn paler, but must stay readable. Called at each opening, because
/// the desktop's colours may have changed.
void StatusMenu::applyTitleColour() {
    constexpr float opacity = 0.65F;
    QPalette palette = QApplication::palette(&menu_);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        QColor colour = palette.color(QPalette::Active, role);
        colour.setAlphaF(opacity);
        palette.setColor(QPalette::Disabled, role, colour);
    }
    menu_.setPalette(palette);
}

QAction* StatusMenu::addItem(const QString& text, const std::function<void()>& chosen) {
    QAction* line = menu_.addAction(text);
    if (chosen) connect(line, &QAction::triggered, this, chosen);
    return line;
}

bool StatusMenu::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &menu_) return false;
    if (event->type() == QEvent::Show) {
        drawTitles();
        observeForeground();
        applyTitleColour();
        placeMenuBesideIcon();
    }
    if (event->type() == QEvent::Hide) drawTitles();
    // A text that has just become longer must not lead it out of the screen.
    if (event->type() == QEvent::Resize && menu_.isVisible()) placeMenuBesideIcon();
    if (event->type() == QEvent::KeyPress)
        return triggerShortcut(QKeySequence(static_cast<QKeyEvent*>(event)->keyCombination()));
    return false;
}

/// Triggers the item with that shortcut while the menu is open. Qt does not do so, because a pop-up menu has
/// no active window.
bool StatusMenu::triggerShortcut(const QKeySequence& pressed) {
    for (QAction* line : menu_.actions()) {
        if (line->shortcut().isEmpty() || line->shortcut() != pressed) continue;
        menu_.close();
        line->trigger();
        return true;
    }
    return false;
}

/// Only in X trays the icon's place is known.
void StatusMenu::placeMenuBesideIcon() {
    const QRect icon = item_ ? item_->geometry() : QRect();
    const QScreen* const screen = icon.isEmpty() ? nullptr : QApplication::screenAt(icon.center());
    if (!screen) return;
    const QRect room = screen->geometry();
    const bool below = icon.center().y() < room.center().y();
    const int left = std::min(icon.left(), room.right() + 1 - menu_.width());
    menu_.move(std::max(left, room.left()), below ? icon.bottom() + 1 : icon.top() - menu_.height());
}

void StatusMenu::placeChanged(const std::optional<StatusItemPlace>& place) {
    place_ = place;
    if (!place_) {
        item_.reset();
        observedForeground_ = StatusItemPlace::Foreground::Unknown;
        return;
    }
    drawTitles();
    drawIcon();
    if (item_) return;
    showItem();
    // The panel takes a moment to dock the icon. What is observed too early is corrected at the next state or
    // opening.
    constexpr std::chrono::seconds afterDocking{1};
    QTimer::singleShot(afterDocking, item_.get(), [this] { observeForeground(); });
}

void StatusMenu::showItem() {
    item_ = std::make_unique<QSystemTrayIcon>(icon_);
    item_->setToolTip(toolTip());
    item_->setContextMenu(&menu_);
    // Panels open the menu with the right button only; here the left one opens it too.
    connect(item_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        const bool native = place_.value_or(StatusItemPlace()).menus == StatusItemPlace::Menus::Native;
        if (reason == QSystemTrayIcon::Trigger && !native) menu_.popup(QCursor::pos());
    });
    item_->show();
}

void StatusMenu::setTitle(const QString& title) {
    title_ = title;
    drawTitles();
    if (item_) item_->setToolTip(toolTip());
}

QString StatusMenu::toolTip() const {
    QString text = programName + QLatin1Char('\n') + title_;
    const bool hasKey = Platform::current().hotKeys().edges() != HotKeyService::Edges::None &&
                        !HotKeyStatus::shared().warning();
    const QString key = hotKeyTitle();
    if (hasKey && !title_.contains(key)) text += QLatin1Char('\n') + key;
    return text;
}

void StatusMenu::setTitleAction(std::function<void()> chosen) {
    titleAction_ = std::move(chosen);
    statusMenuItem_->setEnabled(titleAction_ != nullptr);
}

/// A panel that draws the menu itself leaves the left button to us, who then open the same menu as a window
/// of ours.
void StatusMenu::drawTitles() {
    const auto menus =
        menu_.isVisible() ? StatusItemPlace::Menus::DrawnByUs : place_.value_or(StatusItemPlace()).menus;
    statusMenuItem_->setText(escaped(title_, menus));
    updateMenuItem_->setText(escaped(updateTitle_, menus));
}

void StatusMenu::setIcon(const QString& symbol, Tint tint) {
    symbol_ = symbol;
    tint_ = tint;
    observeForeground();
    drawIcon();
}

void StatusMenu::drawIcon() {
    const bool anyPanel = foreground() == StatusItemPlace::Foreground::Unknown;
    const QColor bright = panelColour(Background::Light);
    icon_ = SymbolIcon::icon(symbol_, colour(), anyPanel ? bright : QColor());
    if (!icon_.isNull())
        icon_.setIsMask(foreground() == StatusItemPlace::Foreground::Template && tint_ == Tint::None);
    if (item_) item_->setIcon(icon_);
}

/// Many trays do not publish their colours; then the colour behind the icon is read from the screen.
void StatusMenu::observeForeground() {
    const QRect icon = item_ ? item_->geometry() : QRect();
    if (icon.isEmpty() || (place_ && place_->foreground != StatusItemPlace::Foreground::Unknown)) return;
    const auto now = Platform::current().statusItems().foregroundAt(icon);
    const auto seen = now == StatusItemPlace::Foreground::Unknown ? observedForeground_ : now;
    if (std::exchange(observedForeground_, seen) != seen) drawIcon();
}

StatusItemPlace::Foreground StatusMenu::foreground() const {
    const auto told = place_.value_or(StatusItemPlace()).foreground;
    return told == StatusItemPlace::Foreground::Unknown ? observedForeground_ : told;
}

QColor StatusMenu::colour() const {
    const QColor plain = plainColour(foreground());
    const auto tinted = tintColour(tint_);
    if (!tinted) return plain;
    const auto background = plain.lightnessF() > 0.5 ? Background::Dark : Background::Light;
    return legible(systemColour(*tinted, background), panelColour(background), drawingContrast);
}

void StatusMenu::setMicrophone(MicrophoneStatus status) {
    micMenuItem_->setText(microphoneTitle(status));
}

void StatusMenu::setAccessibility(bool trusted) {
    axMenuItem_->setText(accessibilityTitle(trusted));
}

void StatusMenu::setUpdate(const std::optional<QString>& version, UpdateStage stage) {
    if (version) updateTitle_ = updateTitle(*version, stage);
    drawTitles();
    updateMenuItem_->setEnabled(stage == UpdateStage::Offered);
    updateMenuItem_->setVisible(version.has_value());
}

}  // namespace parlivo
