// SPDX-License-Identifier: MIT
#include "Demo.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

namespace parlivo::demo {

namespace {

Phrase phraseFrom(const QJsonObject& json) {
    const auto text = [&json](const char* key) { return json.value(QLatin1String(key)).toString(); };
    Phrase phrase{text("id"), text("lang"), text("spoken"), text("raw"), {}};
    const QJsonObject clean = json.value(QLatin1String("clean")).toObject();
    for (auto level = clean.begin(); level != clean.end(); ++level) {
        phrase.clean.insert(level.key(), level->toString());
    }
    return phrase;
}

std::vector<Phrase> readPhrases() {
    QFile source(file(QStringLiteral("phrases.json")));
    EXPECT_TRUE(source.open(QIODevice::ReadOnly)) << qPrintable(source.fileName());
    const QJsonArray all = QJsonDocument::fromJson(source.readAll()).array();
    std::vector<Phrase> result;
    for (const auto& json : all) result.push_back(phraseFrom(json.toObject()));
    EXPECT_EQ(result.size(), 66U);
    return result;
}

void run(const QString& program, const QStringList& arguments) {
    const int status = QProcess::execute(program, arguments);
    ASSERT_EQ(status, 0) << qPrintable(program) << ' ' << qPrintable(arguments.join(QLatin1Char(' ')));
}

}  // namespace

const std::vector<Phrase>& phrases() {
    static const std::vector<Phrase> all = readPhrases();
    return all;
}

QString file(const QString& name) {
    return QStringLiteral(PARLIVO_TEST_DEMO "/") + name;
}

QString engine(const QString& name) {
    const QString folder = qEnvironmentVariable("PARLIVO_TEST_ENGINES", QStringLiteral(PARLIVO_TEST_ENGINES));
    QString path = folder + QLatin1Char('/') + name;
    EXPECT_TRUE(QFileInfo(path).isExecutable()) << qPrintable(path) << " is missing: run tools/build-engines";
    return path;
}

QString speak(const Phrase& phrase, const QString& folder) {
    const QString voice = folder + QStringLiteral("/voice.wav");
    QString wav = folder + QStringLiteral("/") + phrase.id + QStringLiteral(".wav");
    const QString accent = phrase.language == QLatin1String("en") ? QStringLiteral("en-us") : phrase.language;
    run(QStringLiteral("espeak-ng"),
        {QStringLiteral("-v"), accent, QStringLiteral("-w"), voice, phrase.spoken});
    run(QStringLiteral("sox"),
        {QStringLiteral("-V1"), voice, QStringLiteral("-r"), QStringLiteral("16000"), QStringLiteral("-c"),
         QStringLiteral("1"), QStringLiteral("-b"), QStringLiteral("16"), wav});
    return wav;
}

}  // namespace parlivo::demo
