// SPDX-License-Identifier: MIT
#include "ui/views/Signs.h"

#include "platform/Platform.h"

#include <QFontDatabase>
#include <QString>

namespace parlivo {

void installSigns() {
    // A font of the application is looked into for every character that the text's own font lacks.
    const auto file = Platform::current().bundle().resource(QStringLiteral("fonts/parlivo-signs.ttf"));
    if (file) QFontDatabase::addApplicationFont(*file);
}

}  // namespace parlivo
