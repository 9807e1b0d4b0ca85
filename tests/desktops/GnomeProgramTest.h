// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/dictation/ProgramTest.h"
#include "desktops/GnomeShell.h"

#include <iostream>

namespace parlivo::desktop {

/// The whole program in a session of GNOME's.
class GnomeProgramTest : public testing::Test {
  protected:
    GnomeProgramTest() {
        separateSpeakerFromMicrophone();
        settle();
    }
    void TearDown() override {
        if (HasFailure()) std::cerr << qPrintable(home::log());
    }

    static void settle(QJsonObject more = {}) {
        more.insert(QStringLiteral("cleanupLevel"), QStringLiteral("none"));
        home::settle(more);
        home::provideModels();
    }
    static QProcessEnvironment session() {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        return environment;
    }
    gnome::Hands hands;
};

}  // namespace parlivo::desktop
