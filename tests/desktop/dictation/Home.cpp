// SPDX-License-Identifier: MIT
#include "desktop/dictation/Home.h"

#include "Demo.h"
#include "support/Waiting.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

#include <gtest/gtest.h>

namespace parlivo::desktop::home {

namespace {

QString below(const char* variable, const QString& path) {
    return qEnvironmentVariable(variable) + path;
}

void write(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(file.write(content), content.size()) << qPrintable(path);
}

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void link(const QString& target, const QString& path) {
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(QFile::exists(path) || QFile::link(target, path)) << qPrintable(path);
}

}  // namespace

QString settingsFile() {
    return below("XDG_CONFIG_HOME", QStringLiteral("/Parlivo/Parlivo.json"));
}

void settle(const QJsonObject& more) {
    QJsonObject all{
        {QStringLiteral("onboardingDone"), true},
        {QStringLiteral("cleanupLevel"), QStringLiteral("none")},
    };
    for (auto setting = more.begin(); setting != more.end(); ++setting) all[setting.key()] = *setting;
    writeSettings(QJsonDocument(all).toJson());
    // Without a model the program would ask for one first.
    provideModels();
}

void writeSettings(const QByteArray& content) {
    write(settingsFile(), content);
}

QByteArray readSettings() {
    return read(settingsFile());
}

QJsonObject settings() {
    return QJsonDocument::fromJson(readSettings()).object();
}

bool waitForCount(int dictations) {
    return waitFor(
        [dictations] { return settings().value(QLatin1String("dictationCount")).toInt() == dictations; });
}

void set(const QString& key, const QJsonValue& value) {
    set({{key, value}});
}

void set(const QJsonObject& changes) {
    QJsonObject all = settings();
    for (auto setting = changes.begin(); setting != changes.end(); ++setting) all[setting.key()] = *setting;
    QSaveFile file(settingsFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(all).toJson());
    ASSERT_TRUE(file.commit());
}

void provideModels() {
    link(demo::file(QStringLiteral("ggml-model.bin")), recogniserModel());
    link(demo::file(QStringLiteral("cleanup.gguf")), cleanupModel());
}

// The recogniser where a developer's own lies, the other under the name of the small tier: as the
// demonstration's models have other sizes, no tier of the catalogue counts as downloaded.
QString recogniserModel() {
    return below("HOME", QStringLiteral("/Projects/Parlivo/models/ggml-large-v3-turbo-q8_0.bin"));
}

QString cleanupModel() {
    return dataFile(QStringLiteral("models/qwen2.5-1.5b-instruct-q4_k_m.gguf"));
}

QString dataFile(const QString& name) {
    return below("XDG_DATA_HOME", QStringLiteral("/Parlivo/")) + name;
}

QString log() {
    return QString::fromUtf8(read(below("XDG_STATE_HOME", QStringLiteral("/Parlivo/Parlivo.log"))));
}

QStringList recordings() {
    return QDir(QDir::tempPath()).entryList({QStringLiteral("parlivo-*")}, QDir::Files);
}

QStringList filesWith(const QByteArray& text) {
    QStringList found;
    QDirIterator files(QStringLiteral("/tmp"), QDir::Files | QDir::Hidden | QDir::NoSymLinks,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        // The project may lie there, with its tests' phrases and recordings.
        if (path.startsWith(QStringLiteral(PARLIVO_PROJECT "/"))) continue;
        if (read(path).contains(text)) found.append(path);
    }
    return found;
}

}  // namespace parlivo::desktop::home
