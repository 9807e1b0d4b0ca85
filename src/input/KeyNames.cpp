// SPDX-License-Identifier: MIT
#include "input/KeyNames.h"

#include "platform/Platform.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace parlivo::KeyNames {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::KeyNames)
};

struct Named {
    KeyCode key;
    const char* name;
};

constexpr KeyCode kernel(KeyCode code) {
    return VirtualKey::firstKernelCode + code;
}

/// Keys on which layouts print no character; the numbers are macOS's codes, and the kernel's where it has
/// none.
constexpr std::array named{
    Named{36, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Invio")},
    Named{48, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Tab")},
    Named{49, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Spazio")},
    Named{51, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Backspace")},
    Named{53, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Esc")},
    Named{72, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Volume più")},
    Named{73, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Volume meno")},
    Named{74, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Muto")},
    Named{76, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Invio (tastierino)")},
    Named{110, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Menu")},
    Named{114, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Ins")},
    Named{115, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Inizio")},
    Named{116, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Pag su")},
    Named{117, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Canc")},
    Named{119, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Fine")},
    Named{121, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Pag giù")},
    Named{123, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Freccia sinistra")},
    Named{124, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Freccia destra")},
    Named{125, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Freccia giù")},
    Named{126, QT_TRANSLATE_NOOP("parlivo::KeyNames", "Freccia su")},
    Named{kernel(99), QT_TRANSLATE_NOOP("parlivo::KeyNames", "Stamp")},
    Named{kernel(119), QT_TRANSLATE_NOOP("parlivo::KeyNames", "Pausa")},
    Named{kernel(163), QT_TRANSLATE_NOOP("parlivo::KeyNames", "Brano successivo")},
    Named{kernel(164), QT_TRANSLATE_NOOP("parlivo::KeyNames", "Riproduci/Pausa")},
    Named{kernel(165), QT_TRANSLATE_NOOP("parlivo::KeyNames", "Brano precedente")},
    Named{kernel(166), QT_TRANSLATE_NOOP("parlivo::KeyNames", "Ferma riproduzione")},
};

/// F1 to F24. Those from F21 on are known to the kernel alone.
constexpr std::array<KeyCode, 24> functionKeys{
    122, 120, 99,  118, 96, 97, 98, 100, 101,         109,         103,         111,
    105, 107, 113, 106, 64, 79, 80, 90,  kernel(191), kernel(192), kernel(193), kernel(194)};

/// The multimedia keys to which macOS gives a code.
constexpr std::array<KeyCode, 3> volumeKeys{72, 73, 74};

/// As X names the keysyms of such keys.
QString withoutVendor(QString name) {
    return name.remove(QLatin1String("XF86"), Qt::CaseInsensitive);
}

}  // namespace

QString nameOf(KeyCode key) {
    const auto* const function = std::ranges::find(functionKeys, key);
    if (function != functionKeys.end()) return QStringLiteral("F%1").arg(function - functionKeys.begin() + 1);
    const auto* const found = std::ranges::find(named, key, &Named::key);
    if (found != named.end()) return Texts::tr(found->name);
    const QString printed = withoutVendor(Platform::current().hotKeys().keyLabel(key));
    return printed.isEmpty() ? Texts::tr("tasto %1").arg(key) : printed;
}

bool isUsableAlone(KeyCode key) {
    return key >= VirtualKey::firstKernelCode || std::ranges::find(functionKeys, key) != functionKeys.end() ||
           std::ranges::find(volumeKeys, key) != volumeKeys.end();
}

}  // namespace parlivo::KeyNames
