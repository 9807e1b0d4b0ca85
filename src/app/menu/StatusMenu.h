// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Permissions.h"
#include "platform/StatusItemHost.h"

#include <QIcon>
#include <QMenu>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QSystemTrayIcon;

namespace parlivo {

enum class Tint { None, Red, Orange, Purple, Blue };

enum class UpdateStage { Offered, UnderWay };

/// The status item and its menu: all that the user normally sees of the program. It shows what it is given
/// and reports what is chosen.
///
/// The item appears when the desktop has a place for it and disappears with that place; what is set meanwhile
/// is shown when it comes back. Main thread.
class StatusMenu : public QObject {
    Q_OBJECT

  public:
    struct Actions {
        std::function<void()> willOpen;
        std::function<void()> openMicSettings;
        std::function<void()> openAccessibilitySettings;
        std::function<void()> installUpdate;
        std::function<void()> openSettings;
        std::function<void()> openFeedback;
        std::function<void()> quit;
    };

    explicit StatusMenu(const Actions& actions, QObject* parent = nullptr);
    ~StatusMenu() override;
    StatusMenu(const StatusMenu&) = delete;
    StatusMenu& operator=(const StatusMenu&) = delete;

    /// The first line, which cannot be chosen.
    void setTitle(const QString& title);
    QString title() const { return title_; }
    /// Lets the user choose the first line while it says what he can mend; nullptr ends that.
    void setTitleAction(std::function<void()> chosen);

    /// The symbol of that name; without a tint it is drawn in the panel's own foreground, and with an outline
    /// where that is not known. A symbol that
    /// cannot be made leaves the item without an image.
    void setIcon(const QString& symbol, Tint tint);
    void setMicrophone(MicrophoneStatus status);
    void setAccessibility(bool trusted);
    /// The version on offer, or the one that is being downloaded and installed, which cannot be chosen again;
    /// nullopt hides the line.
    void setUpdate(const std::optional<QString>& version, UpdateStage stage = UpdateStage::Offered);

    /// The current menu and icon, whether there is a place for them or not.
    QMenu& menu() { return menu_; }
    const QMenu& menu() const { return menu_; }
    const QIcon& icon() const { return icon_; }
    /// What the program is doing, and which key it listens to.
    QString toolTip() const;

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool triggerShortcut(const QKeySequence& pressed);
    void placeMenuBesideIcon();
    void build(const Actions& actions);
    void applyTitleColour();
    QAction* addItem(const QString& text, const std::function<void()>& chosen);
    void placeChanged(const std::optional<StatusItemPlace>& place);
    void showItem();
    void drawTitles();
    void drawIcon();
    void observeForeground();
    StatusItemPlace::Foreground foreground() const;
    QColor colour() const;

    QString title_;
    std::function<void()> titleAction_;
    QString updateTitle_;
    QString symbol_;
    Tint tint_ = Tint::None;
    std::optional<StatusItemPlace> place_;
    StatusItemPlace::Foreground observedForeground_ =
        StatusItemPlace::Foreground::Unknown;  // where the place does not tell
    QIcon icon_;

    QMenu menu_;
    QAction* statusMenuItem_ = nullptr;
    QAction* micMenuItem_ = nullptr;
    QAction* axMenuItem_ = nullptr;
    QAction* updateMenuItem_ = nullptr;
    std::unique_ptr<QSystemTrayIcon> item_;
};

}  // namespace parlivo
