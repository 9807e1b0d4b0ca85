// SPDX-License-Identifier: MIT
#include "platform/linux/base/ChildSetup.h"
#include "support/ChildProcess.h"
#include "support/Worker.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    parlivo::ChildProcess::setChildSetup(parlivo::linuxChildSetup());
    const int result = RUN_ALL_TESTS();
    parlivo::ChildProcess::endAll();
    parlivo::Worker::endAll();
    return result;
}
