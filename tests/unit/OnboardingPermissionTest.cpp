// SPDX-License-Identifier: MIT
#include "OnboardingFixture.h"
#include "settings/Config.h"

#include <QProgressBar>
#include <QTest>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

class OnboardingPermissionTest : public OnboardingTest {};

TEST_F(OnboardingPermissionTest, TheMicrophonePageShowsWhatIsHeard) {
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    goTo(Step::microphone);
    const QProgressBar* bar = nullptr;
    for (const auto* one : window().findChildren<QProgressBar*>()) {
        if (one->accessibleName() == u"Livello del microfono"_s) bar = one;
    }
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(platform.audioInput().running, 1);
    const auto heard = [&](float amplitude) {
        const std::vector<float> sound(AudioCapture::blockFrames, amplitude);
        return desktop::waitFor([&] {
            platform.audioInput().speak(sound);
            return bar->value() > bar->maximum() / 2;
        });
    };
    EXPECT_TRUE(heard(0.5F));
    next();
    EXPECT_EQ(platform.audioInput().running, 0) << "nobody listens on other pages";
}

TEST_F(OnboardingPermissionTest, WithoutAMicrophoneThePageSaysWhyUntilOneIsThere) {
    Clock::setScale(0.01);
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    platform.audioInput().present = false;
    goTo(Step::microphone);
    const QString reason = u"Nessun microfono trovato: collegane uno, o attivalo nelle impostazioni audio"_s;
    EXPECT_TRUE(shows(window(), reason)) << words(window()).join(u'|').toStdString();
    click(window(), u"Impostazioni audio"_s);
    EXPECT_EQ(platform.workspace().panes, std::vector{PrivacyPane::Microphone});
    platform.audioInput().present = true;
    EXPECT_TRUE(desktop::waitFor([&] { return platform.audioInput().running == 1; }));
    EXPECT_FALSE(shows(window(), reason));
}

TEST_F(OnboardingPermissionTest, SkippingIsOfferedForThePermissionsOnly) {
    controller.show();
    for (int page = 0; page < stepCount; ++page) {
        const auto wanted = static_cast<Step>(page);
        goTo(wanted);
        const bool permission = wanted == Step::microphone || wanted == Step::accessibility;
        EXPECT_EQ(button(window(), u"Salta"_s) != nullptr, permission) << page;
    }
}

TEST_F(OnboardingPermissionTest, SkippingOnlyGoesOn) {
    goTo(Step::microphone);
    click(window(), u"Salta"_s);
    EXPECT_EQ(step(), Step::accessibility);
    click(window(), u"Salta"_s);
    EXPECT_EQ(step(), Step::ready);
    EXPECT_TRUE(platform.permissions().microphoneRequests.empty());
    EXPECT_EQ(platform.permissions().prompts, 0);
}

TEST_F(OnboardingPermissionTest, TheMicrophoneIsAskedForAndItsAnswerShown) {
    goTo(Step::microphone);
    click(window(), u"Consenti microfono"_s);
    EXPECT_EQ(platform.permissions().microphoneRequests, std::vector{MicrophoneCheck::ByRecording});
    desktop::letPass(std::chrono::milliseconds(20));
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s)) << "refused";
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    click(window(), u"Consenti microfono"_s);
    EXPECT_TRUE(desktop::waitFor([&] { return shows(window(), u"Permesso concesso"_s); }));
    EXPECT_EQ(button(window(), u"Consenti microfono"_s), nullptr);
    EXPECT_EQ(symbols(), QStringList({u"mic.fill"_s, u"checkmark.circle.fill"_s}));
}

TEST_F(OnboardingPermissionTest, AMicrophoneThatIsAllowedAlreadyIsNotAskedFor) {
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    goTo(Step::microphone);
    EXPECT_TRUE(shows(window(), u"Permesso concesso"_s));
}

TEST_F(OnboardingPermissionTest, AnAnswerAboutTheMicrophoneThatComesLaterIsShown) {
    goTo(Step::microphone);
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s));
    platform.permissions().setMicrophone(MicrophoneStatus::Authorised);
    EXPECT_TRUE(shows(window(), u"Permesso concesso"_s));
    platform.permissions().setMicrophone(MicrophoneStatus::Denied);
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s));
    next();
    platform.permissions().setMicrophone(MicrophoneStatus::Authorised);
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s)) << "that is another page's";
}

TEST_F(OnboardingPermissionTest, TheAccessibilityPageTurnsByItself) {
    Clock::setScale(0.01);
    goTo(Step::accessibility);
    click(window(), u"Apri Impostazioni"_s);
    EXPECT_EQ(platform.permissions().prompts, 1);
    EXPECT_EQ(platform.workspace().panes, std::vector{PrivacyPane::Accessibility});
    EXPECT_FALSE(shows(window(), u"Permesso concesso"_s));
    platform.permissions().trusted = true;
    EXPECT_TRUE(desktop::waitFor([&] { return shows(window(), u"Permesso concesso"_s); }));
    EXPECT_EQ(button(window(), u"Apri Impostazioni"_s), nullptr);
    platform.permissions().trusted = false;
    EXPECT_TRUE(desktop::waitFor([&] { return !shows(window(), u"Permesso concesso"_s); }));
    EXPECT_EQ(platform.permissions().prompts, 1) << "looking does not prompt";
}

}  // namespace
}  // namespace parlivo
