#pragma once

#include "platform/Bundle.h"

namespace parlivo {

/// The main bundle, as the system knows it.
class MacBundle : public Bundle {
  public:
    QString location() const override;
    std::optional<QString> resource(const QString& name) const override;
    std::optional<QString> shortVersion() const override;
};

}  // namespace parlivo
