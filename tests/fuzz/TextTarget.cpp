// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "engines/CleanupPrompt.h"
#include "settings/Config.h"
#include "support/FakePlatform.h"
#include "support/Text.h"

#include <QDir>
#include <QStringList>

namespace parlivo::fuzz {

namespace {

void checkCharacters(const QString& text) {
    QStringList characters;
    Text::forEachCharacter(text, [&](QStringView character) {
        expect(!character.isEmpty(), "a character is something");
        characters.append(character.toString());
        return true;
    });
    expect(characters.join(QString()) == text, "a text is its characters");
    expect(characters.size() == Text::countCharacters(text), "they are counted");
    const qsizetype half = characters.size() / 2;
    expect(Text::firstCharacters(text, half) == characters.first(half).join(QString()),
           "the first half comes first");
    const QString trimmed = Text::trimmedBlanks(text);
    expect(text.contains(trimmed) && Text::trimmedBlanks(trimmed) == trimmed,
           "trimming takes the ends alone");
}

/// The user's own prompt is used as it is where it is a text, and any other makes way for the default.
void checkPrompt(const QByteArray& file) {
    FakePlatform::install();
    QDir().mkpath(Config::appSupportDir());
    writeFile(Config::promptFile(), file);
    const QString prompt = Config::loadPrompt();
    const QString decoded = QString::fromUtf8(file);
    const bool isOwn = prompt == decoded || decoded == QChar(QChar::ByteOrderMark) + prompt;
    expect(!prompt.trimmed().isEmpty(), "there is a prompt");
    expect(isOwn || prompt.contains(Config::textPlaceholder), "it is the user's or ours");
    expect(readFile(Config::promptFile()) == (isOwn ? file : prompt.toUtf8()), "the file has it");
    FakePlatform::uninstall();
}

}  // namespace

void attack(const QByteArray& input) {
    checkCharacters(QString::fromUtf8(input));
    checkPrompt(input);
}

}  // namespace parlivo::fuzz
