// SPDX-License-Identifier: MIT
#include "platform/linux/sway/SwayConfiguration.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <array>
#include <functional>
#include <utility>
#include <vector>

namespace parlivo::sway {

namespace {

struct ModifierName {
    const char* name;  // in lower case
    HotKeyModifiers mask;
};
constexpr std::array modifierNames{
    ModifierName{"ctrl", HotKeyModifier::control}, ModifierName{"control", HotKeyModifier::control},
    ModifierName{"mod1", HotKeyModifier::option},  ModifierName{"alt", HotKeyModifier::option},
    ModifierName{"shift", HotKeyModifier::shift},  ModifierName{"mod4", HotKeyModifier::command},
    ModifierName{"logo", HotKeyModifier::command},
};

HotKeyModifiers modifierOf(const QString& name) {
    const QString lower = name.toLower();
    const auto* const found = std::ranges::find_if(
        modifierNames, [&](const ModifierName& one) { return lower == QLatin1String(one.name); });
    return found == modifierNames.end() ? 0 : found->mask;
}

/// Reads a configuration line by line.
class Reader {
  public:
    explicit Reader(const Combination& wanted) : wanted_(wanted) {}

    bool finds(const QString& configuration) {
        QString whole = configuration;
        whole.replace(QLatin1String("\\\n"), QLatin1String(" "));
        const QStringList lines = whole.split(QLatin1Char('\n'));
        return std::ranges::any_of(lines, [this](const QString& line) { return binds(line.simplified()); });
    }

  private:
    bool binds(const QString& line) {
        if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) return false;
        if (line.startsWith(QLatin1Char('}'))) {
            if (!blocks_.empty()) blocks_.pop_back();
            return false;
        }
        QStringList words = line.split(QLatin1Char(' '));
        if (line.endsWith(QLatin1Char('{'))) {
            blocks_.push_back(words.first());
            return false;
        }
        // The lines of such a block leave its first word out.
        if (!blocks_.empty()) words.prepend(blocks_.back());
        if (words.first() == QLatin1String("set") && words.size() > 2) variables_[words[1]] = words[2];
        const bool bySymbol = words.first() == QLatin1String("bindsym");
        if ((!bySymbol && words.first() != QLatin1String("bindcode")) || blocks_.size() > 1) return false;
        words.removeFirst();
        while (!words.isEmpty() && words.first().startsWith(QLatin1String("--"))) words.removeFirst();
        return !words.isEmpty() && isWanted(expanded(words.first()), bySymbol);
    }

    /// The longest name first, as sway does.
    QString expanded(QString text) const {
        QStringList names = variables_.keys();
        std::ranges::sort(names, std::greater{}, &QString::size);
        for (const QString& name : std::as_const(names)) text.replace(name, variables_[name]);
        return text;
    }

    bool isWanted(const QString& chord, bool bySymbol) const {
        HotKeyModifiers modifiers = 0;
        QStringList keys;
        const QStringList parts = chord.split(QLatin1Char('+'));
        for (const QString& part : parts) {
            const auto modifier = modifierOf(part);
            modifiers |= modifier;
            if (modifier == 0) keys.append(part);
        }
        if (modifiers != wanted_.modifiers || keys.size() != 1) return false;
        if (!bySymbol) return keys.first() == QString::number(wanted_.code);
        return !wanted_.symbol.isEmpty() && keys.first().compare(wanted_.symbol, Qt::CaseInsensitive) == 0;
    }

    const Combination& wanted_;
    QHash<QString, QString> variables_;
    std::vector<QString> blocks_;  ///< the first words of those that are open
};

}  // namespace

bool configurationBinds(const QString& configuration, const Combination& combination) {
    return Reader(combination).finds(configuration);
}

}  // namespace parlivo::sway
