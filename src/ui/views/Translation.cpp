// SPDX-License-Identifier: MIT
#include "ui/views/Translation.h"

#include "platform/Platform.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace parlivo {

void installTranslation() {
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    const auto file = Platform::current().bundle().resource(QStringLiteral("translations/qtbase_it.qm"));
    if (!file) return;
    auto words = std::make_unique<QTranslator>();
    if (!words->load(*file)) return;
    words->setParent(QCoreApplication::instance());
    QCoreApplication::installTranslator(words.release());
}

}  // namespace parlivo
