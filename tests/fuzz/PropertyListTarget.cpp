// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "platform/linux/base/LinuxBundle.h"
#include "update/Versions.h"

namespace parlivo::fuzz {

void attack(const QByteArray& input) {
    const QString key = QStringLiteral("CFBundleShortVersionString");
    const auto version = propertyListString(input, key);
    if (!version) return;
    // Written out, or pieced together by references.
    expect(input.contains("CFBundle") || input.contains('&') || input.contains("<![CDATA[") ||
               input.contains('\0'),
           "a version stands under its key");
    expect(!isNewer(*version, *version), "a version can be compared");
    const QByteArray list = "<plist version=\"1.0\"><dict><key>CFBundleShortVersionString</key><string>" +
                            version->toHtmlEscaped().toUtf8() + "</string></dict></plist>";
    // Line ends are normalised in reading.
    if (!version->contains(QLatin1Char('\r')) && version->isValidUtf16()) {
        expect(propertyListString(list, key) == version, "what was read can be written and read again");
    }
}

}  // namespace parlivo::fuzz
