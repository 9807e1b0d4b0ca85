// SPDX-License-Identifier: MIT
#include "engines/Cleaner.h"

#include "engines/CleanupPrompt.h"
#include "engines/EngineReplies.h"
#include "engines/JsonExchange.h"
#include "engines/LlamaRunner.h"
#include "models/ModelPaths.h"
#include "settings/Config.h"
#include "support/Text.h"

#include <optional>
#include <utility>

namespace parlivo::Cleaner {

namespace {

using std::chrono::seconds;

constexpr seconds ollamaTimeout{60};
constexpr seconds ollamaLimit{65};

bool isWanted(const QString& raw) {
    return Config::get(Settings::cleanupLevel) != CleanupLevel::None &&
           Text::countCharacters(raw) > Config::get(Settings::cleanupMinChars);
}

/// One pass over the template: a placeholder that was dictated stays what was dictated.
QString promptFor(const QString& raw) {
    QString prompt = Config::get(Settings::customPromptEnabled)
                         ? Config::loadPrompt()
                         : Config::builtinPrompt(Config::get(Settings::cleanupLevel));
    return prompt.replace(Config::textPlaceholder, raw);
}

std::optional<QString> ollamaClean(const QString& prompt) {
    const QJsonObject body{{QStringLiteral("model"), Config::get(Settings::cleanupModel)},
                           {QStringLiteral("prompt"), prompt},
                           {QStringLiteral("stream"), false},
                           {QStringLiteral("options"), QJsonObject{{QStringLiteral("temperature"), 0.1}}}};
    HttpRequest request = JsonExchange::post(Config::ollamaURL(), body);
    request.timeout = ollamaTimeout;
    request.limit = ollamaLimit;
    const auto reply = JsonExchange::object(JsonExchange::send(std::move(request)));
    return reply ? EngineReplies::ollamaAnswer(*reply) : std::nullopt;
}

std::optional<QString> answerTo(const QString& prompt) {
    if (Config::llamaModel()) {
        if (auto answer = LlamaRunner::clean(prompt)) return answer;
    }
    return ollamaClean(prompt);
}

}  // namespace

QString clean(const QString& raw) {
    if (!isWanted(raw)) return raw;
    const auto answer = answerTo(promptFor(raw));
    return answer ? EngineReplies::sanitize(*answer, raw) : raw;
}

}  // namespace parlivo::Cleaner
