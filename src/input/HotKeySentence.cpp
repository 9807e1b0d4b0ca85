// SPDX-License-Identifier: MIT
#include "input/HotKeySentence.h"

#include "input/HotKeyStatus.h"
#include "input/HotKeyTitle.h"
#include "platform/Platform.h"

#include <QCoreApplication>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::HotKeySentence)
};

QString keyInForce() {
    return HotKeyStatus::shared().warning() ? Texts::tr("il tasto che sceglierai") : hotKeyTitle();
}

}  // namespace

QString withHotKeyTitle(QString text) {
    constexpr auto blank = QLatin1String("%1");
    return text.contains(blank) ? text.replace(blank, keyInForce()) : text;
}

QString hotKeySentence(const HotKeySentence& sentence) {
    switch (Platform::current().hotKeys().edges()) {
        case HotKeyService::Edges::Both:
            break;
        case HotKeyService::Edges::PressesOnly:
            return withHotKeyTitle(sentence.pressed);
        case HotKeyService::Edges::None:
            return sentence.none;
    }
    return withHotKeyTitle(sentence.held);
}

}  // namespace parlivo
