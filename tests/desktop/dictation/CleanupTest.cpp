// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"

#include <csignal>

namespace parlivo::desktop {
namespace {

/// A whole dictation with both real engines.
class CleanupTest : public ProgramTest {
  protected:
    static QJsonObject settingsFor(const QString& level) {
        return {{QStringLiteral("cleanupTier"), QStringLiteral("light")},
                {QStringLiteral("cleanupLevel"), level}};
    }

    void start(const QJsonObject& settings) {
        home::provideModels();
        home::settle(settings);
        program_ = std::make_unique<Program>();
        receiver_ = std::make_unique<Receiver>(Receiver::Kind::Xterm);
        ASSERT_TRUE(program_->waitUntilUp());
        ASSERT_TRUE(Program::waitUntilServed(QStringLiteral("http://127.0.0.1:8766/health")));
    }

    void expectTyped(const demo::Phrase& spoken, const QString& text) {
        const QString before = receiver_->text();
        dictate(*program_, spoken);
        EXPECT_TRUE(receiver_->waitForText(before + text, engineTimeout)) << qPrintable(receiver_->text());
        expectNothingLeft(*program_);
    }

    std::unique_ptr<Program> program_;
    std::unique_ptr<Receiver> receiver_;
};

class CleanupLevels : public CleanupTest, public testing::WithParamInterface<const char*> {};

TEST_P(CleanupLevels, APhraseWithFillersArrivesClean) {
    const QString level = QString::fromLatin1(GetParam());
    start(settingsFor(level));
    const QString id = QStringLiteral("f13");
    const auto& spoken = phrase(id);  // three lines at level "high"
    expectTyped(spoken, spoken.clean.value(level));
}

INSTANTIATE_TEST_SUITE_P(Levels, CleanupLevels, testing::Values("light", "medium", "high"),
                         [](const auto& level) { return std::string(level.param); });

TEST_F(CleanupTest, WithADictionaryAndAPromptOfTheUsersOwn) {
    QJsonObject settings = settingsFor(QStringLiteral("medium"));
    settings[QStringLiteral("dictionary")] = QStringLiteral("Kubernetes\nRossi");
    settings[QStringLiteral("customPromptEnabled")] = true;
    start(settings);
    const QString id = QStringLiteral("f03");
    const auto& spoken = phrase(id);
    expectTyped(spoken, spoken.clean.value(QStringLiteral("medium")));
    EXPECT_TRUE(QFile::exists(home::dataFile(QStringLiteral("prompt.txt"))));
}

TEST_F(CleanupTest, TheSecondDictationFindsTheSameServers) {
    start(settingsFor(QStringLiteral("medium")));
    const QString id = QStringLiteral("f01");
    const auto& spoken = phrase(id);
    const QString clean = spoken.clean.value(QStringLiteral("medium"));
    expectTyped(spoken, clean);
    const auto before = processesNamed(QStringLiteral("llama-server"));
    expectTyped(spoken, clean);
    EXPECT_EQ(before.size(), 1U);
    EXPECT_EQ(processesNamed(QStringLiteral("llama-server")), before);
    EXPECT_EQ(processesNamed(QStringLiteral("whisper-server")).size(), 1U);
}

TEST_F(CleanupTest, KilledTheProgramTakesItsServersAlong) {
    start(settingsFor(QStringLiteral("medium")));
    ASSERT_FALSE(processesNamed(QStringLiteral("whisper-server")).empty());
    ASSERT_FALSE(processesNamed(QStringLiteral("llama-server")).empty());
    program_->signal(SIGKILL);
    EXPECT_TRUE(waitFor([] {
        return processesNamed(QStringLiteral("whisper-server")).empty() &&
               processesNamed(QStringLiteral("llama-server")).empty();
    }));
}

}  // namespace
}  // namespace parlivo::desktop
