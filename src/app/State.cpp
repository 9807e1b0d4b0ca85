#include "app/State.h"

#include <algorithm>
#include <array>

namespace parlivo {

namespace {

struct Row {
    State state;
    const char16_t* name;
    const char16_t* text;
    const char16_t* symbol;
    Tint tint;
};

constexpr std::array rows{
    Row{State::idle, u"idle", u"Pronto — tieni premuto ⌥Spazio per dettare", u"mic", Tint::None},
    Row{State::recording, u"recording", u"🔴 Registrazione…", u"mic.fill", Tint::Red},
    Row{State::transcribing, u"transcribing", u"⏳ Trascrizione…", u"waveform", Tint::Orange},
    Row{State::cleaning, u"cleaning", u"🪄 Pulizia testo…", u"wand.and.stars", Tint::Purple},
    Row{State::typing, u"typing", u"⌨️ Scrittura…", u"keyboard", Tint::Blue},
};

const Row& rowOf(State state) {
    return rows.at(static_cast<std::size_t>(state));
}

}  // namespace

QString statusText(State state) {
    return QStringView(rowOf(state).text).toString();
}

std::optional<State> stateOf(const QString& statusText) {
    const auto* found = std::find_if(rows.begin(), rows.end(),
                                     [&](const Row& row) { return statusText == QStringView(row.text); });
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
