// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

namespace parlivo {

/// The first and the last page, which only tell something. `parent` owns them.
QWidget* makeWelcomePage(QWidget* parent);
QWidget* makeReadyPage(QWidget* parent);

}  // namespace parlivo
