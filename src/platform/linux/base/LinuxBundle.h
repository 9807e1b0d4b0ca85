// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Bundle.h"

namespace parlivo {

/// The relocatable folder Parlivo.app/Contents/{MacOS/Parlivo, Resources/, Info.plist} around the running
/// program.
class LinuxBundle : public Bundle {
  public:
    /// Finds the bundle from /proc/self/exe, so that symbolic links to the program do not matter.
    LinuxBundle();
    /// A bundle at a known place.
    explicit LinuxBundle(QString location) : location_(std::move(location)) {}

    QString location() const override { return location_; }
    std::optional<QString> resource(const QString& name) const override;
    std::optional<QString> shortVersion() const override;

  private:
    QString location_;
};

/// The text stored under `key` at the top level of an XML property list; nullopt if the list is malformed,
/// lacks the key or holds another type there.
std::optional<QString> propertyListString(const QByteArray& list, const QString& key);

}  // namespace parlivo
