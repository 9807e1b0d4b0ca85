// SPDX-License-Identifier: MIT
#include "app/State.h"

#include "input/HotKeySentence.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace parlivo {

namespace {

constexpr auto context = "parlivo::State";

struct Row {
    State state;
    const char16_t* name;
    const char* text;
    const char16_t* symbol;
    Tint tint;
};

constexpr std::array rows{
    Row{State::idle, u"idle",
        QT_TRANSLATE_NOOP("parlivo::State", "Pronto — tieni premuto ⌥Spazio per dettare"), u"mic",
        Tint::None},
    Row{State::recording, u"recording", QT_TRANSLATE_NOOP("parlivo::State", "🔴 Registrazione…"), u"mic.fill",
        Tint::Red},
    Row{State::transcribing, u"transcribing", QT_TRANSLATE_NOOP("parlivo::State", "⏳ Trascrizione…"),
        u"waveform", Tint::Orange},
    Row{State::cleaning, u"cleaning", QT_TRANSLATE_NOOP("parlivo::State", "🪄 Pulizia testo…"),
        u"wand.and.stars", Tint::Purple},
    Row{State::typing, u"typing", QT_TRANSLATE_NOOP("parlivo::State", "⌨️ Scrittura…"), u"keyboard",
        Tint::Blue},
};

const Row& rowOf(State state) {
    return rows.at(static_cast<std::size_t>(state));
}

}  // namespace

QString statusText(State state) {
    QString text = QCoreApplication::translate(context, rowOf(state).text);
    if (state != State::idle) return text;
    return hotKeySentence(
        {.held = text,
         .pressed = QCoreApplication::translate("parlivo::State", "Pronto — premi %1 per dettare"),
         .none =
             QCoreApplication::translate("parlivo::State", "Pronto — assegna un tasto a parlivo --toggle")});
}

std::optional<State> stateOf(const QString& text) {
    const auto* found =
        std::ranges::find_if(rows, [&](const Row& row) { return text == statusText(row.state); });
    if (found == rows.end()) return std::nullopt;
    return found->state;
}

QString caseName(State state) {
    return QStringView(rowOf(state).name).toString();
}

StateIcon iconOf(State state) {
    return {QStringView(rowOf(state).symbol).toString(), rowOf(state).tint};
}

}  // namespace parlivo
