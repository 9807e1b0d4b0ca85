// SPDX-License-Identifier: MIT
#include "ui/settings/SettingsWindowController.h"

#include "ui/settings/SettingsView.h"
#include "ui/views/Windows.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize windowSize{520, 440};

class SettingsWindow : public QWidget {
    Q_DECLARE_TR_FUNCTIONS(parlivo::SettingsWindow)

  public:
    explicit SettingsWindow(const SettingsActions& actions);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

SettingsWindow::SettingsWindow(const SettingsActions& actions)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint) {
    setWindowTitle(tr("Impostazioni Parlivo"));
    setFixedSize(windowSize);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(new SettingsView(actions, this));
}

void SettingsWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close)) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

}  // namespace

SettingsWindowController::SettingsWindowController(SettingsActions actions) : actions_(std::move(actions)) {}

SettingsWindowController::~SettingsWindowController() = default;

void SettingsWindowController::show() {
    if (!window_) {
        window_ = std::make_unique<SettingsWindow>(actions_);
        centreOnScreen(*window_);
    }
    bringToFront(*window_);
}

}  // namespace parlivo
