// SPDX-License-Identifier: MIT
#include "platform/linux/session/InstanceLock.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace parlivo {
namespace {

TEST(InstanceLockTest, OneHoldsIt) {
    const QTemporaryDir folder;
    InstanceLock first(folder.filePath(QStringLiteral("lock")));
    EXPECT_TRUE(first.take());
    EXPECT_TRUE(first.take()) << "again";
    EXPECT_FALSE(InstanceLock(folder.filePath(QStringLiteral("lock"))).take());
}

TEST(InstanceLockTest, ALinkInItsPlaceIsNotFollowed) {
    const QTemporaryDir folder;
    const QString elsewhere = folder.filePath(QStringLiteral("elsewhere"));
    ASSERT_TRUE(QFile::link(elsewhere, folder.filePath(QStringLiteral("lock"))));
    EXPECT_TRUE(InstanceLock(folder.filePath(QStringLiteral("lock"))).take()) << "better two than none";
    EXPECT_FALSE(QFile::exists(elsewhere));
}

}  // namespace
}  // namespace parlivo
