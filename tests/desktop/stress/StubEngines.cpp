// SPDX-License-Identifier: MIT
#include "desktop/stress/StubEngines.h"

#include "desktop/dictation/Home.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

#include <gtest/gtest.h>

namespace parlivo::desktop {

namespace {

/// In one step: an engine may read it at any moment.
void answer(const QString& model, const QString& text) {
    QDir().mkpath(QFileInfo(model).path());
    QSaveFile file(model);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(model);
    file.write(QJsonDocument(QJsonObject{{QStringLiteral("text"), text}}).toJson());
    ASSERT_TRUE(file.commit()) << qPrintable(model);
}

}  // namespace

StubEngines::StubEngines() {
    const QString stub = QStringLiteral(PARLIVO_STUB_ENGINE);
    bundle_.putEngine(QStringLiteral("whisper-server"), stub);
    bundle_.putEngine(QStringLiteral("llama-server"), stub);
    setTranscript({});
    clean({});
}

void StubEngines::setTranscript(const QString& text) const {
    answer(home::recogniserModel(), text);
}

void StubEngines::clean(const QString& text) const {
    answer(home::cleanupModel(), text);
}

}  // namespace parlivo::desktop
