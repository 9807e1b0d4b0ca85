// SPDX-License-Identifier: MIT
#include "input/KeyNames.h"
#include "support/PlatformTest.h"

#include <initializer_list>
#include <utility>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

constexpr KeyCode kernel(KeyCode code) {
    return VirtualKey::firstKernelCode + code;
}

/// The numbers are macOS's virtual key codes, and the kernel's where it has none (linux/input-event-codes.h).
class KeyNamesTest : public PlatformTest {};

TEST_F(KeyNamesTest, KeysThatPrintNothingHaveTheirItalianNames) {
    for (const auto& [key, name] :
         std::initializer_list<std::pair<KeyCode, const char16_t*>>{{36, u"Invio"},
                                                                    {48, u"Tab"},
                                                                    {49, u"Spazio"},
                                                                    {51, u"Backspace"},
                                                                    {53, u"Esc"},
                                                                    {72, u"Volume più"},
                                                                    {73, u"Volume meno"},
                                                                    {74, u"Muto"},
                                                                    {76, u"Invio (tastierino)"},
                                                                    {110, u"Menu"},
                                                                    {114, u"Ins"},
                                                                    {115, u"Inizio"},
                                                                    {116, u"Pag su"},
                                                                    {117, u"Canc"},
                                                                    {119, u"Fine"},
                                                                    {121, u"Pag giù"},
                                                                    {123, u"Freccia sinistra"},
                                                                    {124, u"Freccia destra"},
                                                                    {125, u"Freccia giù"},
                                                                    {126, u"Freccia su"},
                                                                    {kernel(99), u"Stamp"},
                                                                    {kernel(119), u"Pausa"},
                                                                    {kernel(163), u"Brano successivo"},
                                                                    {kernel(164), u"Riproduci/Pausa"},
                                                                    {kernel(165), u"Brano precedente"},
                                                                    {kernel(166), u"Ferma riproduzione"}}) {
        EXPECT_EQ(KeyNames::nameOf(key), QStringView(name).toString()) << key;
    }
}

TEST_F(KeyNamesTest, FunctionKeysAreNumberedAndUsableAlone) {
    int number = 0;
    for (const KeyCode key :
         {122U, 120U, 99U,  118U, 96U, 97U, 98U, 100U, 101U,        109U,        103U,        111U,
          105U, 107U, 113U, 106U, 64U, 79U, 80U, 90U,  kernel(191), kernel(192), kernel(193), kernel(194)}) {
        EXPECT_EQ(KeyNames::nameOf(key), u"F%1"_s.arg(++number));
        EXPECT_TRUE(KeyNames::isUsableAlone(key)) << number;
    }
}

TEST_F(KeyNamesTest, MultimediaKeysAreUsableAloneAndKeysOfATextAreNot) {
    for (const KeyCode key : {72U, 73U, 74U, kernel(119), kernel(163), kernel(164)})
        EXPECT_TRUE(KeyNames::isUsableAlone(key)) << key;
    for (const KeyCode key : {0U, 9U, 36U, 48U, 49U, 51U, 53U, 71U, 75U, 114U, 117U, 126U})
        EXPECT_FALSE(KeyNames::isUsableAlone(key)) << key;
}

TEST_F(KeyNamesTest, AnyOtherKeyIsCalledAsTheLayoutPrintsItElseByItsNumber) {
    platform.hotKeys().printed[9] = u"v"_s;
    platform.hotKeys().printed[kernel(140)] = u"XF86Calculator"_s;
    EXPECT_EQ(KeyNames::nameOf(9), u"v"_s);
    EXPECT_EQ(KeyNames::nameOf(kernel(140)), u"Calculator"_s);
    EXPECT_EQ(KeyNames::nameOf(10), u"tasto 10"_s);
}

}  // namespace
}  // namespace parlivo
