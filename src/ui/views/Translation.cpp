// SPDX-License-Identifier: MIT
#include "ui/views/Translation.h"

#include "platform/Platform.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace parlivo {

namespace {

void install(const QString& catalogue) {
    const auto file = Platform::current().bundle().resource(QStringLiteral("translations/") + catalogue);
    if (!file) return;
    auto words = std::make_unique<QTranslator>();
    if (!words->load(*file)) return;
    words->setParent(QCoreApplication::instance());
    QCoreApplication::installTranslator(words.release());
}

}  // namespace

void installTranslation() {
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    install(QStringLiteral("qtbase_it.qm"));
    install(QStringLiteral("parlivo.qm"));
}

}  // namespace parlivo
