// SPDX-License-Identifier: MIT
#pragma once

#include "platform/UserDefaults.h"

namespace parlivo {

/// The standard user defaults, whose domain is the bundle's identifier. A value has the type there that it
/// has here: string, boolean, integer, double or date (NSDate for a QDateTime).
class MacUserDefaults : public UserDefaults {
  public:
    QVariant value(const QString& key) const override;
    void setValue(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;
};

}  // namespace parlivo
