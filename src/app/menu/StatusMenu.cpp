#include "app/menu/StatusMenu.h"

#include "platform/Platform.h"
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

QString updateTitle(const QString& version) {
    return StatusMenu::tr("⬆️ Aggiorna a Parlivo %1…").arg(version);
}

/// `text` as a menu shows it letter for letter. A menu of ours takes an ampersand for the mark of a shortcut,
/// a panel's an underscore; on the way to the panel the toolkit turns the first ampersand into an underscore.
/// What follows a tab would be taken for a shortcut's name.
QString literal(QString text, StatusItemPlace::Menus menus) {
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

/// What plain symbols are drawn in. The strength is that of the menu bar's own items.
QColor plainColour(StatusItemPlace::Foreground foreground) {
    switch (foreground) {
        case StatusItemPlace::Foreground::Dark:
            return {0x22, 0x22, 0x22};
        case StatusItemPlace::Foreground::Light:
            return {0xf2, 0xf2, 0xf2};
        case StatusItemPlace::Foreground::Unknown:
            break;
    }
    return QApplication::palette().color(QPalette::WindowText);
}

}  // namespace

StatusMenu::StatusMenu(const Actions& actions) : updateTitle_(tr("Aggiornamento disponibile…")) {
    build(actions);
    Platform::current().statusItems().watch([this](const auto& place) { placeChanged(place); });
}

StatusMenu::~StatusMenu() {
    Platform::current().statusItems().watch({});
}

void StatusMenu::build(const Actions& actions) {
    statusLine_ = addLine({}, {});
    statusLine_->setEnabled(false);
    menu_.addSeparator();
    microphoneLine_ = addLine(microphoneTitle(MicrophoneStatus::NotAsked), actions.openMicSettings);
    accessibilityLine_ = addLine(accessibilityTitle(false), actions.openAccessibilitySettings);
    menu_.addSeparator();
    updateLine_ = addLine(updateTitle_, actions.installUpdate);
    updateLine_->setVisible(false);
    addLine(tr("Impostazioni…"), actions.openSettings)->setShortcut(Qt::CTRL | Qt::Key_Comma);
    addLine(tr("Invia feedback…"), actions.openFeedback);
    menu_.addSeparator();
    addLine(tr("Esci da Parlivo"), actions.quit)->setShortcut(Qt::CTRL | Qt::Key_Q);
    menu_.installEventFilter(this);
    if (actions.willOpen) connect(&menu_, &QMenu::aboutToShow, this, actions.willOpen);
}

/// The first line is dimmed because it cannot be chosen, yet it is there to be read. The desktop's colours
/// may have changed since the last time.
void StatusMenu::keepTitleReadable() {
    constexpr float strength = 0.65F;
    QPalette palette = QApplication::palette(&menu_);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        QColor colour = palette.color(QPalette::Active, role);
        colour.setAlphaF(strength);
        palette.setColor(QPalette::Disabled, role, colour);
    }
    menu_.setPalette(palette);
}

QAction* StatusMenu::addLine(const QString& text, const std::function<void()>& chosen) {
    QAction* line = menu_.addAction(text);
    if (chosen) connect(line, &QAction::triggered, this, chosen);
    return line;
}

bool StatusMenu::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &menu_) return false;
    if (event->type() == QEvent::Show) {
        drawTitles();
        lookAtPanel();
        keepTitleReadable();
        putMenuBesideIcon();
    }
    if (event->type() == QEvent::Hide) drawTitles();
    if (event->type() == QEvent::KeyPress)
        return chooseByKey(QKeySequence(static_cast<QKeyEvent*>(event)->keyCombination()));
    return false;
}

/// The key equivalents work while the menu is open. A pop-up menu is no window, so nobody else looks for
/// them there.
bool StatusMenu::chooseByKey(const QKeySequence& pressed) {
    for (QAction* line : menu_.actions()) {
        if (line->shortcut().isEmpty() || line->shortcut() != pressed) continue;
        menu_.close();
        line->trigger();
        return true;
    }
    return false;
}

/// Where the icon's place is known, which is in X trays only.
void StatusMenu::putMenuBesideIcon() {
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
        seen_ = StatusItemPlace::Foreground::Unknown;
        return;
    }
    drawTitles();
    drawIcon();
    if (item_) return;
    showItem();
    // Docking takes the panel a moment; what was seen too early is put right at the next state or opening.
    constexpr std::chrono::seconds afterDocking{1};
    QTimer::singleShot(afterDocking, item_.get(), [this] { lookAtPanel(); });
}

void StatusMenu::showItem() {
    item_ = std::make_unique<QSystemTrayIcon>(icon_);
    item_->setToolTip(programName);
    item_->setContextMenu(&menu_);
    // Panels keep the menu for the other button; here any click opens it.
    connect(item_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) menu_.popup(QCursor::pos());
    });
    item_->show();
}

void StatusMenu::setTitle(const QString& title) {
    title_ = title;
    drawTitles();
}

/// A panel that draws the menu itself leaves the left button to us, who then open the same menu as a window
/// of ours.
void StatusMenu::drawTitles() {
    const auto menus =
        menu_.isVisible() ? StatusItemPlace::Menus::DrawnByUs : place_.value_or(StatusItemPlace()).menus;
    statusLine_->setText(literal(title_, menus));
    updateLine_->setText(literal(updateTitle_, menus));
}

void StatusMenu::setIcon(const QString& symbol, Tint tint) {
    symbol_ = symbol;
    tint_ = tint;
    lookAtPanel();
    drawIcon();
}

void StatusMenu::drawIcon() {
    icon_ = SymbolIcon::icon(symbol_, colour());
    if (item_) item_->setIcon(icon_);
}

/// Many trays do not tell their colours; then a look at the screen must do.
void StatusMenu::lookAtPanel() {
    const QRect icon = item_ ? item_->geometry() : QRect();
    if (icon.isEmpty() || (place_ && place_->foreground != StatusItemPlace::Foreground::Unknown)) return;
    const auto now = Platform::current().statusItems().foregroundAt(icon);
    const auto seen = now == StatusItemPlace::Foreground::Unknown ? seen_ : now;
    if (std::exchange(seen_, seen) != seen) drawIcon();
}

StatusItemPlace::Foreground StatusMenu::foreground() const {
    const auto told = place_.value_or(StatusItemPlace()).foreground;
    return told == StatusItemPlace::Foreground::Unknown ? seen_ : told;
}

QColor StatusMenu::colour() const {
    const QColor plain = plainColour(foreground());
    const auto tinted = tintColour(tint_);
    if (!tinted) return plain;
    return systemColour(*tinted, plain.lightnessF() > 0.5 ? Background::Dark : Background::Light);
}

void StatusMenu::setMicrophone(MicrophoneStatus status) {
    microphoneLine_->setText(microphoneTitle(status));
}

void StatusMenu::setAccessibility(bool trusted) {
    accessibilityLine_->setText(accessibilityTitle(trusted));
}

void StatusMenu::setUpdate(const std::optional<QString>& version) {
    if (version) updateTitle_ = updateTitle(*version);
    drawTitles();
    updateLine_->setVisible(version.has_value());
}

}  // namespace parlivo
