// SPDX-License-Identifier: MIT
#include "ui/views/ScrollAreas.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>

#include <gtest/gtest.h>

namespace parlivo {
namespace {

TEST(ScrollAreasTest, AReaderThatAsksForABarThatHasGoneGetsNothing) {
    makeScrollAreasSafe();
    makeScrollAreasSafe();
    QScrollArea area;
    area.setWidget(new QLabel(QStringLiteral("words")));
    area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    area.show();
    QCoreApplication::processEvents();
    auto* const interface = QAccessible::queryAccessibleInterface(&area);
    ASSERT_NE(interface, nullptr);
    ASSERT_TRUE(area.verticalScrollBar()->isVisible());
    const int before = interface->childCount();
    ASSERT_GE(before, 2);
    area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (int index = interface->childCount(); index <= before + 2; ++index)
        EXPECT_EQ(interface->child(index), nullptr) << index;
    EXPECT_EQ(interface->child(-1), nullptr);
    ASSERT_NE(interface->child(0), nullptr) << "the words are there";
}

}  // namespace
}  // namespace parlivo
