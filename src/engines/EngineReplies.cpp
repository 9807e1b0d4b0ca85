// SPDX-License-Identifier: MIT
#include "engines/EngineReplies.h"

#include "support/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

namespace parlivo::EngineReplies {

namespace {

/// The text of a JSON string. Nothing for other types and for escapes that make no valid Unicode.
std::optional<QString> text(const QJsonValue& value) {
    if (!value.isString()) return std::nullopt;
    QString string = value.toString();
    if (!string.isValidUtf16()) return std::nullopt;
    return string;
}

/// The recogniser breaks its text into lines anywhere, inside words too, and pads it with blanks.
QString tidied(QString text) {
    text.remove(QLatin1Char('\r')).remove(QLatin1Char('\n'));
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return Text::trimmedBlanks(words.join(QLatin1Char(' ')));
}

QString withoutQuotes(const QString& text) {
    const QLatin1Char quote('"');
    const bool quoted =
        Text::firstCharacters(text, 1) == quote && text.endsWith(quote) && Text::countCharacters(text) >= 3;
    return quoted ? text.sliced(1).chopped(1) : text;
}

}  // namespace

std::optional<QJsonObject> object(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject()) return std::nullopt;
    return document.object();
}

std::optional<QString> recognisedText(const QJsonObject& reply) {
    auto recognised = text(reply.value(QLatin1String("text")));
    if (recognised) recognised = tidied(*recognised);
    return recognised;
}

std::optional<QString> chatAnswer(const QJsonObject& reply) {
    const QJsonValue choice = reply.value(QLatin1String("choices")).toArray().at(0);
    return text(choice[QLatin1String("message")][QLatin1String("content")]);
}

std::optional<QString> ollamaAnswer(const QJsonObject& reply) {
    return text(reply.value(QLatin1String("response")));
}

/// Guards against a summary, a refusal or a rambling answer: it must have a third of the characters of what
/// was said, and no more than three times as many.
QString sanitize(const QString& answer, const QString& said) {
    const QString trimmed = answer.trimmed();
    if (trimmed.isEmpty()) return said;
    QString result = withoutQuotes(trimmed);
    const qsizetype length = Text::countCharacters(said);
    const qsizetype count = Text::countCharacters(result);
    return count >= length / 3 && count <= length * 3 ? result : said;
}

}  // namespace parlivo::EngineReplies
