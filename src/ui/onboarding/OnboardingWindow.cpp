// SPDX-License-Identifier: MIT
#include "ui/onboarding/OnboardingWindow.h"

#include "ui/views/Windows.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPalette>
#include <QProgressBar>
#include <QPushButton>
#include <QWindow>

#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize windowSize{580, 520};
constexpr int edgeAlpha = 40;  // of 255

/// Everything in the window's two colours, whatever the desktop's own are.
QPalette palette() {
    const QColor cream = OnboardingWindow::cream();
    const QColor ink = OnboardingWindow::ink();
    QPalette colours(ink, cream, cream.lighter(104), cream.darker(140), cream.darker(115), ink,
                     cream.lighter(104), cream.lighter(103), cream);
    colours.setColor(QPalette::Highlight, ink);
    colours.setColor(QPalette::HighlightedText, cream);
    return colours;
}

/// For buttons and bars, because no desktop's style fits a cream background. It is set on each of them,
/// because widgets below one with a style sheet do not inherit the window's palette.
QString styleSheetText() {
    return u"QPushButton { color: #38322b; background: #fbf9f4; border: 1px solid #857d6d; border-radius: "
           u"8px;"
           "  padding: 6px 16px; }"
           "QPushButton:hover { background: #ffffff; }"
           "QPushButton:pressed { background: #ece6d9; }"
           "QPushButton:focus { border: 2px solid #38322b; padding: 5px 15px; }"
           "QPushButton#main { color: #f4f0e7; background: #38322b; border: 1px solid #38322b; padding: 9px "
           "24px;"
           "  font-weight: 600; }"
           "QPushButton#main:hover { background: #4a4339; }"
           "QPushButton#main:pressed { background: #28241f; }"
           "QPushButton#main:focus { border: 3px solid #967a4b; padding: 7px 22px; }"
           "QPushButton#main:disabled { color: #f4f0e7; background: #6f675c; border-color: #6f675c; }"
           "QPushButton#plain { background: transparent; border: 1px solid transparent; }"
           "QPushButton#plain:hover { text-decoration: underline; }"
           "QPushButton#plain:focus { border: 2px solid #967a4b; padding: 5px 15px; }"
           "QProgressBar { background: #ddd5c6; border: 1px solid #756d5e; border-radius: 4px; max-height: 8px; }"
           "QProgressBar::chunk { background: #38322b; border-radius: 3px; }"_s;
}

}  // namespace

OnboardingWindow::OnboardingWindow(std::function<void()> closeWanted)
    : QDialog(nullptr, Qt::Window | Qt::FramelessWindowHint), closeWanted_(std::move(closeWanted)) {
    setWindowTitle(u"Parlivo"_s);
    setPalette(parlivo::palette());
    fixSize(*this, windowSize);
    qApp->installEventFilter(this);
}

void OnboardingWindow::applyStyle(const QWidget& part) {
    const QString look = styleSheetText();
    for (auto* button : part.findChildren<QPushButton*>()) button->setStyleSheet(look);
    for (auto* bar : part.findChildren<QProgressBar*>()) bar->setStyleSheet(look);
}

QColor OnboardingWindow::cream() {
    return QColor(244, 240, 231);
}

QColor OnboardingWindow::ink() {
    return QColor(56, 50, 43);
}

/// At its end the application asks every window to close.
bool OnboardingWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::Quit) quitting_ = true;
    return QDialog::eventFilter(watched, event);
}

void OnboardingWindow::closeEvent(QCloseEvent* event) {
    event->setAccepted(quitting_);
    // Later: whoever closes the window need not wait for an answer.
    if (!quitting_) QMetaObject::invokeMethod(this, closeWanted_, Qt::QueuedConnection);
}

void OnboardingWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) windowHandle()->startSystemMove();
}

void OnboardingWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), cream());
    QColor edge = ink();
    edge.setAlpha(edgeAlpha);
    painter.setPen(edge);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace parlivo
