// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/base/LinuxBundleTools.h"
#include "support/ChildProcess.h"
#include "support/WindowTest.h"
#include "support/ZipWriter.h"
#include "update/FeedEntry.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <map>
#include <vector>

namespace parlivo {

/// A running bundle at a place with a difficult name, and the system's real tools to replace it with. It is
/// of version 1.2.3.
class UpdateTest : public WindowTest {
  protected:
    static constexpr const char* newVersion = "1.3";

    /// What a site says of an archive.
    static FeedEntry entryFor(const QByteArray& zip) {
        return {.version = QString::fromLatin1(newVersion),
                .url = {},
                .changelog = {},
                .size = zip.size(),
                .date = {}};
    }

    UpdateTest() {
        for (const auto& [name, content] : {std::pair("MacOS/Parlivo", "old program"),
                                            std::pair("Resources/old", "gone in the new version"),
                                            std::pair("Info.plist", "old version")}) {
            write(running() + QStringLiteral("/Contents/") + QLatin1String(name), content);
        }
        QFile::setPermissions(running() + QStringLiteral("/Contents/MacOS/Parlivo"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        platform.bundle().place = running();
        platform.bundleTools().real = &tools;
        before = contents(running());
    }
    ~UpdateTest() override { ChildProcess::endAll(); }
    UpdateTest(const UpdateTest&) = delete;
    UpdateTest& operator=(const UpdateTest&) = delete;

    QString running() const {
        return place.filePath(QStringLiteral("Le mie \"app\" d'oro; $(id) `id`/Parlivo.app"));
    }

    static void write(const QString& path, const QByteArray& content) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            ADD_FAILURE() << path.toStdString();
    }

    /// Everything below a folder: its path there -> a file's content, a link's target, nothing for a folder.
    static std::map<QString, QByteArray> contents(const QString& folder) {
        std::map<QString, QByteArray> all;
        QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QFileInfo entry(entries.next());
            QByteArray content;
            QFile file(entry.filePath());
            if (entry.isSymLink()) {
                content = "-> " + entry.symLinkTarget().toUtf8();
            } else if (entry.isFile() && file.open(QIODevice::ReadOnly)) {
                content = file.readAll();
            }
            all.emplace(QDir(folder).relativeFilePath(entry.filePath()), content);
        }
        return all;
    }

    static QByteArray propertyList(const QByteArray& version) {
        return "<plist version=\"1.0\"><dict><key>CFBundleShortVersionString</key><string>" + version +
               "</string></dict></plist>";
    }

    /// The entries of a sound archive, and further ones.
    static std::vector<ZipEntry> newBundle(const std::vector<ZipEntry>& more = {},
                                           const QByteArray& version = newVersion) {
        std::vector<ZipEntry> entries{{"Parlivo.app/Contents/MacOS/Parlivo", "new program", 0100755},
                                      {"Parlivo.app/Contents/Info.plist", propertyList(version)},
                                      {"Parlivo.app/Contents/Resources/new", "here at last"}};
        entries.insert(entries.end(), more.begin(), more.end());
        return entries;
    }

    bool isUntouched() const { return contents(running()) == before; }
    /// Whether the bundle's folder holds nothing else: what is unpacked there is gone.
    bool isAlone() const {
        return QDir(QFileInfo(running()).path())
                   .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot) ==
               QStringList(QStringLiteral("Parlivo.app"));
    }
    QStringList temporaryFiles() const {
        return QDir(platform.directories().temporary())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    QTemporaryDir place;
    LinuxBundleTools tools;
    std::map<QString, QByteArray> before;
};

}  // namespace parlivo
