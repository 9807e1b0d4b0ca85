// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "platform/linux/base/JsonUserDefaults.h"
#include "settings/Config.h"
#include "support/FakePlatform.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>
#include <tuple>

namespace parlivo::fuzz {

namespace {

constexpr auto table = std::tuple_cat(Settings::chosenByUser, Settings::keptByProgram);

void forEachSetting(auto action) {
    std::apply([&](const auto&... setting) { (action(setting), ...); }, table);
}

std::optional<QJsonObject> object(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) return std::nullopt;
    return document.object();
}

/// A file of its own for every input, as QSettings remembers what it has read.
class Store {
  public:
    explicit Store(const QByteArray& content)
        : file_(scratchPath(QStringLiteral("settings-%1.json").arg(++count))),
          defaults_(file_, [](const QString&) {}) {
        writeFile(file_, content);
    }
    ~Store() {
        QFile::remove(file_);
        QFile::remove(brokenFile());
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    JsonUserDefaults& defaults() { return defaults_; }
    QByteArray content() const { return readFile(file_); }
    QByteArray setAside() const { return readFile(brokenFile()); }

  private:
    QString brokenFile() const { return file_ + QStringLiteral(".broken"); }

    static inline int count = 0;
    const QString file_;
    JsonUserDefaults defaults_;
};

/// Every accessor, whatever is stored.
void readAll(const QVariantMap& stored) {
    FakePlatform& platform = FakePlatform::install();
    for (auto at = stored.begin(); at != stored.end(); ++at) {
        platform.userDefaults().setValue(at.key(), at.value());
    }
    forEachSetting([](const auto& setting) {
        Config::get(setting);
        Config::boolean(setting.key, true);
        Config::get(Setting<qint64>{setting.key, 1});
        Config::string(setting.key);
    });
    for (const QString& term : Config::dictionary()) {
        expect(!term.isEmpty() && term == term.trimmed() && !term.contains(QLatin1Char('\n')),
               "a term is one line without blanks around it");
    }
    expect(!Config::modelsDir().isEmpty(), "the models have a folder");
    const auto moment = Config::get(Settings::feedbackPromptLastShown);
    expect(!moment || moment->isValid(), "a moment is a moment");
    FakePlatform::uninstall();
}

}  // namespace

void attack(const QByteArray& input) {
    const auto stored = object(input);
    Store store(input);
    forEachSetting([&](const auto& setting) {
        const QVariant value = store.defaults().value(setting.key);
        expect(value == (stored ? stored->value(setting.key).toVariant() : QVariant()),
               "a setting is what is stored");
    });
    expect(store.content() == input || store.setAside() == input, "reading loses nothing");
    const QString added = Settings::dictationCount.key;
    store.defaults().setValue(added, 7);
    store.defaults().flush();
    QJsonObject expected = stored.value_or(QJsonObject());
    expected.insert(added, 7);
    expect(object(store.content()) == expected, "a write changes nothing but its own key");
    expect(stored || input.isEmpty() || store.setAside() == input, "a write loses no broken file");
    readAll(expected.toVariantMap());
}

}  // namespace parlivo::fuzz
