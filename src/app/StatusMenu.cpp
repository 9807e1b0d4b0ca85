#include "app/StatusMenu.h"

#include "platform/Platform.h"
#include "ui/SymbolIcon.h"
#include "ui/SystemColour.h"

#include <QAction>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPalette>
#include <QSystemTrayIcon>

#include <utility>

namespace parlivo {

namespace {

const auto programName = QStringLiteral("Parlivo");

QString microphoneTitle(MicrophoneStatus status) {
    switch (status) {
        case MicrophoneStatus::Authorised:
            return QStringLiteral("Microfono: ✅");
        case MicrophoneStatus::NotAsked:
            return QStringLiteral("Microfono: ⚠️ non richiesto — clicca");
        case MicrophoneStatus::Denied:
            return QStringLiteral("Microfono: ⛔️ negato — clicca");
    }
    return {};
}

QString accessibilityTitle(bool trusted) {
    return trusted ? QStringLiteral("Accessibilità: ✅")
                   : QStringLiteral("Accessibilità: ⛔️ manca — clicca");
}

QString updateTitle(const QString& version) {
    return QStringLiteral("⬆️ Aggiorna a Parlivo %1…").arg(version);
}

/// `text` as a menu shows it letter for letter. A menu of ours takes an ampersand for the mark of a shortcut,
/// a panel's an underscore; on the way to the panel the toolkit turns the first ampersand into an underscore.
QString literal(QString text, StatusItemPlace::Menus menus) {
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
    return QGuiApplication::palette().color(QPalette::WindowText);
}

}  // namespace

StatusMenu::StatusMenu(Actions actions) {
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
    updateLine_ = addLine(QStringLiteral("Aggiornamento disponibile…"), actions.installUpdate);
    updateLine_->setVisible(false);
    addLine(QStringLiteral("Impostazioni…"), actions.openSettings)->setShortcut(Qt::CTRL | Qt::Key_Comma);
    addLine(QStringLiteral("Invia feedback…"), actions.openFeedback);
    menu_.addSeparator();
    addLine(QStringLiteral("Esci da Parlivo"), actions.quit)->setShortcut(Qt::CTRL | Qt::Key_Q);
    menu_.installEventFilter(this);
    if (actions.willOpen) connect(&menu_, &QMenu::aboutToShow, this, actions.willOpen);
}

QAction* StatusMenu::addLine(const QString& text, const std::function<void()>& chosen) {
    QAction* line = menu_.addAction(text);
    if (chosen) connect(line, &QAction::triggered, this, chosen);
    return line;
}

/// The key equivalents work while the menu is open. A pop-up menu is no window, so nobody else looks for
/// them there.
bool StatusMenu::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &menu_ || event->type() != QEvent::KeyPress) return false;
    const QKeySequence pressed(static_cast<QKeyEvent*>(event)->keyCombination());
    for (QAction* line : menu_.actions()) {
        if (line->shortcut().isEmpty() || line->shortcut() != pressed) continue;
        menu_.close();
        line->trigger();
        return true;
    }
    return false;
}

void StatusMenu::placeChanged(const std::optional<StatusItemPlace>& place) {
    place_ = place;
    if (!place_) {
        item_.reset();
        return;
    }
    drawTitle();
    drawIcon();
    if (!item_) showItem();
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
    drawTitle();
}

void StatusMenu::drawTitle() {
    statusLine_->setText(literal(title_, place_.value_or(StatusItemPlace()).menus));
}

void StatusMenu::setIcon(const QString& symbol, Tint tint) {
    symbol_ = symbol;
    tint_ = tint;
    drawIcon();
}

void StatusMenu::drawIcon() {
    icon_ = SymbolIcon::icon(symbol_, colour());
    if (item_) item_->setIcon(icon_);
}

QColor StatusMenu::colour() const {
    const QColor plain = plainColour(place_.value_or(StatusItemPlace()).foreground);
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
    if (version) updateLine_->setText(updateTitle(*version));
    updateLine_->setVisible(version.has_value());
}

}  // namespace parlivo
