// SPDX-License-Identifier: MIT
#pragma once

#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Clock.h"
#include "support/FakePlatform.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace parlivo {

/// A test of rules: a fresh fake platform, an empty log and no files of the test before.
class PlatformTest : public testing::Test {
  protected:
    PlatformTest() : platform(FakePlatform::install()) {
        Log::flush();
        QFile::remove(Log::path());
        const QString root = fake::Directories::root();
        for (const char* place : {"/support/Parlivo", "/home"}) {
            QDir(root + QString::fromLatin1(place)).removeRecursively();
            QDir().mkpath(root + QString::fromLatin1(place));
        }
    }

    ~PlatformTest() override {
        Log::flush();
        Clock::setScale(1);
        Clock::resume();
        FakePlatform::uninstall();
    }

    PlatformTest(const PlatformTest&) = delete;
    PlatformTest& operator=(const PlatformTest&) = delete;

    void store(const QString& key, const QVariant& value) { platform.userDefaults().setValue(key, value); }
    /// Of any type, as a user may have written it by hand.
    template <typename T>
    void store(const Setting<T>& setting, const QVariant& value) {
        store(setting.key, value);
    }
    template <Enumeration T>
    void store(const Setting<T>& setting, std::type_identity_t<T> value) {
        store(setting.key, QString(wordOf(value)));
    }
    template <typename T>
    QVariant stored(const Setting<T>& setting) const {
        return platform.userDefaults().value(setting.key);
    }

    /// The messages of the log, without their time.
    static QStringList logged() {
        Log::flush();
        QFile file(Log::path());
        if (!file.open(QIODevice::ReadOnly)) return {};
        QStringList messages;
        const QStringList lines =
            QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const QString& line : lines) messages.append(line.section(QStringLiteral("] "), 1));
        return messages;
    }

    FakePlatform& platform;
};

}  // namespace parlivo
