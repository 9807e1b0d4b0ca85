// SPDX-License-Identifier: MIT
#include "support/Clock.h"
#include "support/Worker.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Drawing and widgets are tested into memory: no display is needed or looked for.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    parlivo::Worker::endAll();
    return result;
}
