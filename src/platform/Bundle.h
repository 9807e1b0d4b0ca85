// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace parlivo {

/// The application's own folder: Parlivo.app/Contents/{MacOS,Resources,Info.plist}. Any thread.
class Bundle {
  public:
    virtual ~Bundle() = default;

    /// Absolute path of the bundle's folder, symbolic links resolved.
    virtual QString location() const = 0;
    /// Absolute path of Contents/Resources/`name`, when there is such a file or folder.
    virtual std::optional<QString> resource(const QString& name) const = 0;
    /// "CFBundleShortVersionString" of Contents/Info.plist, when it is there and a string.
    virtual std::optional<QString> shortVersion() const = 0;
};

}  // namespace parlivo
