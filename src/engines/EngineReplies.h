// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

/// What the engines' servers answer, read from their replies. Whatever is missing in a reply or of another
/// type reads as absent. Any thread.
namespace parlivo::EngineReplies {

/// A body that is one JSON object (RFC 8259).
std::optional<QJsonObject> object(const QByteArray& body);

/// The text that whisper-server recognised, without line ends and surplus blanks.
std::optional<QString> recognisedText(const QJsonObject& reply);

/// llama-server's answer: the first choice of a chat completion, as it came.
std::optional<QString> chatAnswer(const QJsonObject& reply);

/// Ollama's answer, as it came.
std::optional<QString> ollamaAnswer(const QJsonObject& reply);

/// What of a cleanup's answer is to be typed: the answer trimmed and out of its quotes, or `said` where it
/// looks unlike that.
QString sanitize(const QString& answer, const QString& said);

}  // namespace parlivo::EngineReplies
