// SPDX-License-Identifier: MIT
#pragma once

#include "support/WindowTest.h"
#include "ui/onboarding/OnboardingDownloads.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/onboarding/OnboardingWindowController.h"
#include "ui/views/SymbolView.h"

#include <QTest>

#include <optional>

namespace parlivo {

/// The first-run window, with downloads whose outcome a test tells.
class OnboardingTest : public WindowTest {
  protected:
    OnboardingTest() {
        platform.permissions().trusted = false;
        platform.permissions().microphoneStatus = MicrophoneStatus::Denied;
        controller.onFinished = [this] { ++finished; };
        controller.onPutOff = [this] { ++putOff; };
        controller.chooseHotKey = [this] { ++keyChoices; };
    }

    QWidget& window() const { return *controller.window(); }
    Step step() const { return window().findChild<OnboardingView*>()->step(); }
    void next() { click(window(), QStringLiteral("Continua")); }
    void goTo(Step wanted) {
        if (!controller.window()) controller.show();
        while (step() != wanted) {
            if (step() == Step::download) downloadAll();
            next();
        }
    }
    void downloadAll() {
        while (!mainButton()->isEnabled()) fetch.succeed();
    }
    QAbstractButton* mainButton() const {
        auto* inner = button(window(), QStringLiteral("Continua"));
        return inner ? inner : button(window(), QStringLiteral("Inizia a dettare"));
    }
    QStringList symbols() const {
        QStringList names;
        for (const auto* widget : window().findChildren<QWidget*>()) {
            const auto* symbol = dynamic_cast<const SymbolView*>(widget);
            if (symbol && symbol->isVisible()) names.append(symbol->symbol());
        }
        return names;
    }
    /// As a user does who does not look where the focus is.
    void pressWhereTheFocusIs() const {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter}) {
            QWidget* focus = window().focusWidget();
            if (focus) {
                EXPECT_TRUE(focus->isVisible()) << "the focus is on a hidden control";
            }
            QTest::keyClick(focus ? focus : &window(), key);
        }
    }
    void expectWords(const QStringList& expected) const { EXPECT_EQ(words(window()), expected); }

    ScriptedFetch fetch;
    int finished = 0;
    int putOff = 0;
    int keyChoices = 0;
    std::optional<qint64> room = qint64{1} << 40;
    OnboardingWindowController controller{fetch.fetch(), [this](const QString&) { return room; }};
};

}  // namespace parlivo
