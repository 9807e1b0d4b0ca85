// SPDX-License-Identifier: MIT
#pragma once

#include "ui/onboarding/CentredPage.h"

#include <QWidget>

namespace parlivo {

/// The first page, which only tells something. `parent` owns it.
QWidget* makeWelcomePage(QWidget* parent);
/// What the last page tells.
void fillReadyPage(CentredPage& page);

}  // namespace parlivo
