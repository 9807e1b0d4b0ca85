// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

namespace parlivo {

/// The address of a page of the product's site, by its path below the site's base.
QUrl sitePage(const QString& path);

}  // namespace parlivo
