// SPDX-License-Identifier: MIT
#include <QFile>
#include <QPainterPath>
#include <QRawFont>
#include <QString>

#include <gtest/gtest.h>

#include <set>

namespace parlivo {
namespace {

/// What the keys of a Mac's keyboard are called by, and no text of another system contains.
const std::set<char32_t> keySigns{U'⌘', U'⌥', U'⌃', U'⇧', U'⌫', U'⏎'};
constexpr char32_t firstSign = 0x2300;

std::set<char32_t> signsIn(const char* source) {
    QFile file(QStringLiteral(PARLIVO_PROJECT "/src/") + QLatin1String(source));
    if (!file.open(QIODevice::ReadOnly)) return {};
    std::set<char32_t> signs;
    for (const uint character : QString::fromUtf8(file.readAll()).toUcs4())
        if (character >= firstSign && !keySigns.contains(character)) signs.insert(character);
    return signs;
}

TEST(SignsTest, EverySignOfATextIsInTheProgramsOwnFont) {
    const QRawFont font(QStringLiteral(PARLIVO_RESOURCES "/fonts/parlivo-signs.ttf"), 16);
    ASSERT_TRUE(font.isValid());
    for (const char* source :
         {"app/State.cpp", "app/AppDelegate.cpp", "app/menu/StatusMenu.cpp", "ui/onboarding/TextPages.cpp"}) {
        const auto signs = signsIn(source);
        EXPECT_FALSE(signs.empty()) << source;
        for (const char32_t sign : signs) {
            EXPECT_TRUE(font.supportsCharacter(sign)) << source << ": U+" << std::hex << uint(sign);
            if (sign == 0xFE0F) continue;  // which is nothing to see
            const auto glyph = font.glyphIndexesForString(QString::fromUcs4(&sign, 1)).value(0);
            EXPECT_FALSE(font.pathForGlyph(glyph).isEmpty()) << std::hex << uint(sign);
        }
    }
}

}  // namespace
}  // namespace parlivo
