// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QString>

namespace parlivo::SymbolIcon {

/// The symbol `name` of the bundle's folder "symbols" in one colour, `size` device pixels square, on a
/// transparent background. A null image if there is no such symbol. Main thread.
QImage image(const QString& name, const QColor& colour, int size);

/// The same at every size that panels and windows ask for. A null icon if there is no such symbol.
/// With an `outline` (if it is valid) it can be read on any background.
QIcon icon(const QString& name, const QColor& colour, const QColor& outline = {});

}  // namespace parlivo::SymbolIcon
