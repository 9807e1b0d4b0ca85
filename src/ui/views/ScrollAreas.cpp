// SPDX-License-Identifier: MIT
#include "ui/views/ScrollAreas.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QScrollArea>

namespace parlivo {

namespace {

/// The children of an ordinary widget, which are counted again at each question.
QAccessibleInterface* describe(const QString& /*className*/, QObject* object) {
    auto* area = qobject_cast<QScrollArea*>(object);
    return area ? new QAccessibleWidget(area, QAccessible::Client) : nullptr;
}

}  // namespace

void makeScrollAreasSafe() {
    QAccessible::installFactory(describe);
}

}  // namespace parlivo
