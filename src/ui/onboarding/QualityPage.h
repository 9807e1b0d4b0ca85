// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"
#include "ui/onboarding/CentredPage.h"

#include <functional>
#include <vector>

namespace parlivo {

/// The two choices of a model.
class QualityPage : public CentredPage {
    Q_OBJECT

  public:
    using Choose = std::function<void(const QString& id)>;

    explicit QualityPage(QWidget* parent);
    void section(const QString& heading, const std::vector<ModelCatalog::Entry>& tiers, const QString& chosen,
                 const Choose& choose);
};

}  // namespace parlivo
