// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Bundle.h"

namespace parlivo {

/// "CFBundleShortVersionString" of the bundle at a path; nullopt if there is no bundle or no such string.
std::optional<QString> shortVersionOf(const QString& bundle);

/// The main bundle, as the system knows it.
class MacBundle : public Bundle {
  public:
    QString location() const override;
    std::optional<QString> resource(const QString& name) const override;
    std::optional<QString> shortVersion() const override;
};

}  // namespace parlivo
