// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>

#include <vector>

/// The demonstration models and the phrases that they know.
namespace parlivo::demo {

struct Phrase {
    QString id;
    QString language;
    QString spoken;
    QString raw;
    QMap<QString, QString> clean;  ///< by cleanup level
};

const std::vector<Phrase>& phrases();

/// Absolute path of a file of resources/demo.
QString file(const QString& name);
/// Absolute path of a program of the engines' folder, which the environment variable PARLIVO_TEST_ENGINES
/// may name. The test fails when it is not there.
QString engine(const QString& name);

/// Lets a synthetic voice say `phrase` into a WAV of 16 kHz, mono, 16 bit, and returns its path.
QString speak(const Phrase& phrase, const QString& folder);

}  // namespace parlivo::demo
