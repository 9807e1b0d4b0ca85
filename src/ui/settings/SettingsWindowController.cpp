// SPDX-License-Identifier: MIT
#include "ui/settings/SettingsWindowController.h"

#include "ui/settings/SettingsView.h"
#include "ui/views/Windows.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QTabWidget>
#include <QVBoxLayout>

#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize windowSize{520, 440};
constexpr int margin = 8;

class SettingsWindow : public QWidget {
    Q_DECLARE_TR_FUNCTIONS(parlivo::SettingsWindow)

  public:
    explicit SettingsWindow(const SettingsActions& actions);

  protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    SettingsView* view_;
};

SettingsWindow::SettingsWindow(const SettingsActions& actions)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint),
      view_(new SettingsView(actions, this)) {
    setWindowTitle(tr("Impostazioni Parlivo"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->addWidget(view_);
    fixSize(*this, windowSize, view_->leastWidth() + 2 * margin);
}

/// The desktop's font or screen may have changed since the last time.
void SettingsWindow::showEvent(QShowEvent* event) {
    fixSize(*this, windowSize, view_->leastWidth() + 2 * margin);
    QWidget::showEvent(event);
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

void SettingsWindowController::show(std::optional<SettingsPage> page) {
    if (!window_) {
        window_ = std::make_unique<SettingsWindow>(actions_);
        centreOnScreen(*window_);
    }
    if (page) window_->findChild<QTabWidget*>()->setCurrentIndex(static_cast<int>(*page));
    bringToFront(*window_);
}

}  // namespace parlivo
