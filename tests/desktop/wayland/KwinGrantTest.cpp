// SPDX-License-Identifier: MIT
#include "platform/linux/kde/KeyGrant.h"
#include "platform/linux/wayland/FakeInput.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "support/Waiting.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace parlivo::desktop {
namespace {

/// Whether KWin lets this program press keys, as one that starts now would find it.
bool mayPressKeys() {
    const auto connection = wayland::WaylandConnection::open();
    return connection && wayland::FakeInput::isOffered(*connection);
}

TEST(KwinGrantTest, TheDesktopFileIsWhatKwinAsksFor) {
    EXPECT_FALSE(mayPressKeys());
    const QString applications = qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/applications");
    const kde::KeyGrant grant(QCoreApplication::applicationFilePath(), applications);
    grant.write();
    EXPECT_TRUE(grant.isWritten());
    EXPECT_TRUE(waitFor(mayPressKeys));
}

}  // namespace
}  // namespace parlivo::desktop
