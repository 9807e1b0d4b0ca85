// SPDX-License-Identifier: MIT
#include "platform/linux/kde/KdeKeys.h"

#include <QChar>
#include <QtCore/qnamespace.h>

#include <algorithm>
#include <array>

namespace parlivo::kde {

namespace {

struct Name {
    KeyCode key;
    Qt::Key name;
};
constexpr KeyCode kernel(KeyCode code) {
    return VirtualKey::firstKernelCode + code;
}
/// Keys that enter no character, or whose character every layout has.
constexpr std::array names{
    Name{0x24, Qt::Key_Return},
    Name{0x30, Qt::Key_Tab},
    Name{0x31, Qt::Key_Space},
    Name{0x33, Qt::Key_Backspace},
    Name{0x35, Qt::Key_Escape},
    Name{0x48, Qt::Key_VolumeUp},
    Name{0x49, Qt::Key_VolumeDown},
    Name{0x4A, Qt::Key_VolumeMute},
    Name{0x6E, Qt::Key_Menu},
    Name{0x72, Qt::Key_Insert},
    Name{0x73, Qt::Key_Home},
    Name{0x74, Qt::Key_PageUp},
    Name{0x75, Qt::Key_Delete},
    Name{0x77, Qt::Key_End},
    Name{0x79, Qt::Key_PageDown},
    Name{0x7A, Qt::Key_F1},
    Name{0x78, Qt::Key_F2},
    Name{0x63, Qt::Key_F3},
    Name{0x76, Qt::Key_F4},
    Name{0x60, Qt::Key_F5},
    Name{0x61, Qt::Key_F6},
    Name{0x62, Qt::Key_F7},
    Name{0x64, Qt::Key_F8},
    Name{0x65, Qt::Key_F9},
    Name{0x6D, Qt::Key_F10},
    Name{0x67, Qt::Key_F11},
    Name{0x6F, Qt::Key_F12},
    Name{0x7B, Qt::Key_Left},
    Name{0x7C, Qt::Key_Right},
    Name{0x7D, Qt::Key_Down},
    Name{0x7E, Qt::Key_Up},
    Name{kernel(99), Qt::Key_Print},
    Name{kernel(119), Qt::Key_Pause},
    Name{kernel(163), Qt::Key_MediaNext},
    Name{kernel(164), Qt::Key_MediaPlay},
    Name{kernel(165), Qt::Key_MediaPrevious},
    Name{kernel(166), Qt::Key_MediaStop},
};

/// Beside these numbers stand the characters' keys of the digit block, which KDE tells apart.
constexpr std::array<KeyCode, 17> digitBlock{0x41, 0x43, 0x45, 0x4B, 0x4C, 0x4E, 0x51, 0x52, 0x53,
                                             0x54, 0x55, 0x56, 0x57, 0x58, 0x59, 0x5B, 0x5C};

/// What a session that does not tell its layout has left of "1".
constexpr char32_t usualGrave = U'`';

std::optional<unsigned> codeOf(KeyCode key, HotKeyModifiers modifiers, char32_t printed) {
    const auto* const named = std::ranges::find(names, key, &Name::key);
    if (named != names.end()) return named->name;
    if (std::ranges::find(digitBlock, key) != digitBlock.end()) return std::nullopt;
    if (printed == 0 && key == VirtualKey::grave) printed = usualGrave;
    if (printed == 0 || !QChar::isPrint(printed)) return std::nullopt;
    // Qt's codes of such keys are the characters, in upper case.
    const bool isLetter = QChar::isLetter(printed);
    if (!isLetter && (modifiers & HotKeyModifier::shift) != 0) return std::nullopt;
    return QChar::toUpper(printed);
}

struct Modifier {
    HotKeyModifiers mask;
    Qt::KeyboardModifier name;
};
constexpr std::array modifierNames{
    Modifier{HotKeyModifier::control, Qt::ControlModifier},
    Modifier{HotKeyModifier::option, Qt::AltModifier},
    Modifier{HotKeyModifier::shift, Qt::ShiftModifier},
    Modifier{HotKeyModifier::command, Qt::MetaModifier},
};

}  // namespace

std::optional<int> combinationOf(KeyCode key, HotKeyModifiers modifiers, char32_t printed) {
    const auto code = codeOf(key, modifiers, printed);
    if (!code) return std::nullopt;
    unsigned combination = *code;
    for (const auto& [mask, name] : modifierNames) {
        if ((modifiers & mask) != 0) combination |= static_cast<unsigned>(name);
    }
    return static_cast<int>(combination);
}

}  // namespace parlivo::kde
