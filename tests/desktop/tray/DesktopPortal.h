// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>

namespace parlivo::desktop {

/// The desktop's portal as far as it tells whether the user prefers dark colours or light ones, on the
/// session bus as long as this lives. Answers while the test waits (waitFor).
/// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Settings.html
class DesktopPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
  public:
    enum class Scheme : unsigned { Dark = 1, Light = 2 };

    explicit DesktopPortal(Scheme scheme);
    ~DesktopPortal() override;
    DesktopPortal(const DesktopPortal&) = delete;
    DesktopPortal& operator=(const DesktopPortal&) = delete;

    /// The user changes the preference.
    void prefer(Scheme scheme);

  public Q_SLOTS:
    QDBusVariant Read(const QString& space, const QString& key) const;

  Q_SIGNALS:
    void SettingChanged(const QString& space, const QString& key, const QDBusVariant& value);

  private:
    QDBusConnection bus_;
    Scheme scheme_;
};

}  // namespace parlivo::desktop
