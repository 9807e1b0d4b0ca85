// SPDX-License-Identifier: MIT
#include "platform/linux/base/JsonUserDefaults.h"

#include "support/FileLock.h"
#include "support/OwnerOnly.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QRegularExpression>
#include <QSettings>

#include <cstdio>
#include <utility>

namespace parlivo {

namespace {

/// What a file that could not be read is called from then on.
const QString asideSuffix = QStringLiteral("broken");

bool readJson(QIODevice& device, QSettings::SettingsMap& map) {
    const QJsonDocument document = QJsonDocument::fromJson(device.readAll());
    if (!document.isObject()) return false;
    map = document.object().toVariantMap();
    return true;
}

bool writeJson(QIODevice& device, const QSettings::SettingsMap& map) {
    const QByteArray text = QJsonDocument(QJsonObject::fromVariantMap(map)).toJson();
    return device.write(text) == text.size();
}

QSettings::Format jsonFormat() {
    static const QSettings::Format format =
        QSettings::registerFormat(QStringLiteral("json"), readJson, writeJson, Qt::CaseSensitive);
    return format;
}

/// The file must be the user's alone from its first moment on, so it is made before QSettings would make it.
void createPrivately(const QString& path) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.exists() && file.open(QIODevice::WriteOnly | QIODevice::NewOnly, ownerOnly)) {
        return;
    }
    file.setPermissions(ownerOnly);
}

/// Deletes what killed programs were writing beside the settings, under the names that QSaveFile gives. While
/// one has QSettings' own lock no other writes.
void removeStaleFiles(const QString& path) {
    const QString lockFile = path + QStringLiteral(".lock");
    // Of a program that was killed before it had written its name into it, nobody knows that it is dead:
    // QSettings would wait half a minute. Living ones hold a flock(2) on theirs.
    removeUnlocked(lockFile);
    QLockFile lock(lockFile);
    if (!lock.tryLock(0)) return;
    const QFileInfo file(path);
    const QRegularExpression unfinished(
        QRegularExpression::anchoredPattern(QRegularExpression::escape(file.fileName() + QLatin1Char('.')) +
                                            QStringLiteral("(?!%1)[A-Za-z]{6}").arg(asideSuffix)));
    const QDir folder = file.dir();
    const QStringList names = folder.entryList(QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QString& name : names.filter(unfinished)) QFile::remove(folder.filePath(name));
}

}  // namespace

JsonUserDefaults::JsonUserDefaults(QString file, Complaint complaint, std::chrono::milliseconds delay)
    : file_(std::move(file)), complaint_(std::move(complaint)), delay_(delay) {}

JsonUserDefaults::~JsonUserDefaults() {
    writer_.request_stop();
    if (writer_.joinable()) writer_.join();
    JsonUserDefaults::flush();
}

QVariant JsonUserDefaults::value(const QString& key) const {
    const std::lock_guard lock(stateMutex_);
    const auto changed = changes_.find(key);
    if (changed != changes_.end()) return changed->second.value.value_or(QVariant());
    if (beforeWrite_) return beforeWrite_->value(key);
    const QSettings settings(file_, jsonFormat());
    setAsideIfBroken(settings);
    return settings.value(key);
}

void JsonUserDefaults::setValue(const QString& key, const QVariant& value) {
    const bool isDate = value.typeId() == QMetaType::QDateTime;
    note(key, isDate ? value.toDateTime().toUTC().toString(Qt::ISODateWithMs) : value);
}

void JsonUserDefaults::remove(const QString& key) {
    note(key, std::nullopt);
}

void JsonUserDefaults::note(const QString& key, std::optional<QVariant> value) {
    {
        const std::lock_guard lock(stateMutex_);
        changes_[key] = {std::move(value), ++lastNumber_};
        due_ = true;
        if (!writer_.joinable()) {
            writer_ = std::jthread([this](const std::stop_token& stop) { writeBehind(stop); });
        }
    }
    noted_.notify_one();
}

void JsonUserDefaults::writeBehind(const std::stop_token& stop) {
    std::unique_lock lock(stateMutex_);
    while (noted_.wait(lock, stop, [this] { return due_; })) {
        // The end of the program cuts this short.
        noted_.wait_for(lock, stop, delay_, [] { return false; });
        due_ = false;
        lock.unlock();
        flush();
        lock.lock();
    }
}

void JsonUserDefaults::flush() {
    const std::lock_guard writing(writeMutex_);
    std::unique_lock lock(stateMutex_);
    if (changes_.empty()) return;
    const Changes changes = changes_;
    const std::uint64_t last = lastNumber_;
    beforeWrite_ = readAll();
    lock.unlock();
    const bool written = write(changes);
    lock.lock();
    beforeWrite_.reset();
    if (written) std::erase_if(changes_, [last](const auto& change) { return change.second.number <= last; });
}

QVariantMap JsonUserDefaults::readAll() const {
    const QSettings settings(file_, jsonFormat());
    setAsideIfBroken(settings);
    QVariantMap values;
    for (const QString& key : settings.allKeys()) values.insert(key, settings.value(key));
    return values;
}

bool JsonUserDefaults::write(const Changes& changes) {
    createPrivately(file_);
    if (!std::exchange(tidied_, true)) removeStaleFiles(file_);
    QSettings settings(file_, jsonFormat());
    for (const auto& [key, change] : changes) {
        change.value ? settings.setValue(key, *change.value) : settings.remove(key);
    }
    settings.sync();
    if (settings.status() == QSettings::NoError) return true;
    complaint_(QStringLiteral("impostazioni non salvate: ") + file_);
    return false;
}

void JsonUserDefaults::setAsideIfBroken(const QSettings& settings) const {
    if (settings.status() != QSettings::FormatError) return;
    const QString aside = file_ + QLatin1Char('.') + asideSuffix;
    // rename(2) replaces an earlier broken file in one step; QFile::rename would refuse to.
    std::rename(QFile::encodeName(file_).constData(), QFile::encodeName(aside).constData());
    complaint_(QStringLiteral("impostazioni illeggibili, messe da parte in ") + aside);
}

}  // namespace parlivo
