// SPDX-License-Identifier: MIT
#include "platform/linux/base/LinuxBundle.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

namespace parlivo {

namespace {

QString bundleOf(const QString& executable) {
    QDir folder = QFileInfo(executable).dir();  // Contents/MacOS
    folder.cd(QStringLiteral("../.."));
    return folder.absolutePath();
}

/// Reads the dictionary that `xml` stands in and leaves the reader wherever the answer was found.
std::optional<QString> stringInDictionary(QXmlStreamReader& xml, const QString& key) {
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("key")) {
            xml.skipCurrentElement();
            continue;
        }
        const bool wanted = xml.readElementText() == key;
        if (!xml.readNextStartElement()) return std::nullopt;
        if (!wanted) {
            xml.skipCurrentElement();
            continue;
        }
        if (xml.name() != QLatin1String("string")) return std::nullopt;
        const QString text = xml.readElementText();
        if (xml.hasError()) return std::nullopt;
        return text;
    }
    return std::nullopt;
}

}  // namespace

LinuxBundle::LinuxBundle() : LinuxBundle(bundleOf(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")))) {}

std::optional<QString> LinuxBundle::resource(const QString& name) const {
    const QString path = location_ + QStringLiteral("/Contents/Resources/") + name;
    if (!QFileInfo::exists(path)) return std::nullopt;
    return path;
}

std::optional<QString> LinuxBundle::shortVersion() const {
    QFile file(location_ + QStringLiteral("/Contents/Info.plist"));
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    return propertyListString(file.readAll(), QStringLiteral("CFBundleShortVersionString"));
}

std::optional<QString> propertyListString(const QByteArray& list, const QString& key) {
    QXmlStreamReader xml(list);
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("plist")) return std::nullopt;
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("dict")) return std::nullopt;
    return stringInDictionary(xml, key);
}

}  // namespace parlivo
