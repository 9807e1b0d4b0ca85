// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "engines/EngineReplies.h"
#include "support/Text.h"

namespace parlivo::fuzz {

namespace {

void checkRecognised(const QString& text) {
    expect(text.isValidUtf16(), "a recognised text is Unicode");
    expect(!text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')), "it is one line");
    expect(!text.contains(QStringLiteral("  ")), "it has no surplus spaces");
    expect(text == Text::trimmedBlanks(text), "it has no blanks around it");
}

void checkAnswer(const QString& answer, const QString& said) {
    expect(answer.isValidUtf16(), "an answer is Unicode");
    const QString typed = EngineReplies::sanitize(answer, said);
    if (typed == said) return;
    const qsizetype count = Text::countCharacters(typed);
    const qsizetype saidCount = Text::countCharacters(said);
    expect(!typed.isEmpty() && count >= saidCount / 3 && count <= saidCount * 3,
           "an answer resembles what was said");
    expect(answer.contains(typed), "an answer is typed as it came");
}

}  // namespace

void attack(const QByteArray& input) {
    const auto reply = EngineReplies::object(input);
    if (!reply) return;
    const auto recognised = EngineReplies::recognisedText(*reply);
    if (recognised) checkRecognised(*recognised);
    const QString said = recognised.value_or(QStringLiteral("Allora, domani vado al mercato."));
    if (const auto answer = EngineReplies::chatAnswer(*reply)) checkAnswer(*answer, said);
    if (const auto answer = EngineReplies::ollamaAnswer(*reply)) checkAnswer(*answer, said);
}

}  // namespace parlivo::fuzz
