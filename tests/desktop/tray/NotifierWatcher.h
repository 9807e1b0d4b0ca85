// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QImage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <optional>
#include <vector>

namespace parlivo::desktop {

/// A panel on the session bus as an item sees it: org.kde.StatusNotifierWatcher, with a host or without.
///
/// Answers while the test waits (waitFor); destroying it takes the panel off the bus.
class NotifierWatcher : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
  public:
    enum class Host { Present, ComesLater };

    explicit NotifierWatcher(Host host = Host::Present);
    ~NotifierWatcher() override;
    NotifierWatcher(const NotifierWatcher&) = delete;
    NotifierWatcher& operator=(const NotifierWatcher&) = delete;

    /// Adds the host that was absent at first.
    void addHost();

    bool hasHost() const { return hasHost_; }
    static int protocolVersion() { return 0; }
    /// The bus names of the items registered so far.
    QStringList items() const { return items_; }
    QDBusConnection bus() const { return bus_; }

  public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& serviceOrPath);
    void RegisterStatusNotifierHost(const QString& service);

  Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString& service);
    void StatusNotifierHostRegistered();

  private:
    QDBusConnection bus_;
    bool hasHost_;
    QStringList items_;
};

/// One line of a menu as com.canonical.dbusmenu tells it.
struct MenuLine {
    int id = 0;
    QString label;
    bool enabled = true;
    bool visible = true;
    bool separator = false;
    /// "Control+,", or empty.
    QString shortcut;
};

/// The item that an application has put onto a panel, read over the bus. Nothing here blocks the test's own
/// event loop; a call that is not answered in time returns an empty value.
class NotifierItem {
  public:
    NotifierItem(QDBusConnection bus, QString service);

    QVariant property(const QString& name) const;
    /// The picture of that width in pixels, null when there is none.
    QImage icon(int width) const;
    void activate() const;

    /// Tells the application that the menu is about to be shown.
    void openMenu() const;
    std::vector<MenuLine> menu() const;
    void choose(const QString& label) const;

  private:
    QString menuPath() const;
    QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments) const;

    mutable QDBusConnection bus_;
    QString service_;
};

}  // namespace parlivo::desktop
