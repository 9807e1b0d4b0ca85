// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QLatin1String>
#include <QString>

#include <array>
#include <optional>
#include <tuple>
#include <type_traits>

/// The table of all settings: the key and type of each, and what it counts as while nothing is stored.
/// `Config::get` and `Config::set` read and write them; no other code names a key or a default.
///
/// A setting whose values are a closed set is an enum, with its stored words in `storedWords`. The values of
/// `hotkeyPreset` and of the two tiers are the ids of their own tables (HotKeyManager, ModelCatalog).
namespace parlivo {

/// One setting. An integer is a qint64.
template <typename T>
struct Setting {
    QLatin1String key;
    T absent;  ///< what it counts as while nothing of its type is stored
};

template <>
struct Setting<QString> {
    QLatin1String key;
    QLatin1String absent;
};

/// A setting without a default: nullopt while nothing of its type is stored.
template <typename T>
struct Setting<std::optional<T>> {
    QLatin1String key;
};

template <typename T>
concept Enumeration = std::is_enum_v<T>;

template <Enumeration T>
struct Setting<T> {
    QLatin1String key;
    T absent;
    T unknown = absent;  ///< what a stored text counts as that is none of the words
};

/// The stored words of an enum, in the order of its enumerators.
template <Enumeration T>
inline constexpr std::array<QLatin1String, 0> storedWords{};

enum class DictationMode {
    PushToTalk,
    Toggle,
    Unknown,  ///< starts a recording but never ends one
};
template <>
inline constexpr std::array storedWords<DictationMode>{QLatin1String("ptt"), QLatin1String("toggle")};

enum class TypingSpeed { Natural, Fast, Instant };
template <>
inline constexpr std::array storedWords<TypingSpeed>{QLatin1String("natural"), QLatin1String("fast"),
                                                     QLatin1String("instant")};

enum class CleanupLevel { None, Light, Medium, High };
template <>
inline constexpr std::array storedWords<CleanupLevel>{QLatin1String("none"), QLatin1String("light"),
                                                      QLatin1String("medium"), QLatin1String("high")};

/// The word that is stored for `value`, one of those that have a word.
template <Enumeration T>
constexpr QLatin1String wordOf(T value) {
    return storedWords<T>.at(static_cast<std::size_t>(value));
}

namespace Settings {

inline constexpr Setting<QString> hotkeyPreset{QLatin1String("hotkeyPreset"), QLatin1String("opt-space")};
/// The user's own combination, where `hotkeyPreset` says so: a key code and a mask of the hot-key port.
inline constexpr Setting<qint64> hotkeyCode{QLatin1String("hotkeyCode"), 0};
inline constexpr Setting<qint64> hotkeyModifiers{QLatin1String("hotkeyModifiers"), 0};
inline constexpr Setting<DictationMode> dictationMode{QLatin1String("dictationMode"),
                                                      DictationMode::PushToTalk, DictationMode::Unknown};
/// The code that the recogniser is given, or "auto".
inline constexpr Setting<QString> language{QLatin1String("language"), QLatin1String("it")};
inline constexpr Setting<QString> asrTier{QLatin1String("asrTier"), QLatin1String("best")};
inline constexpr Setting<TypingSpeed> typingSpeed{QLatin1String("typingSpeed"), TypingSpeed::Fast};
inline constexpr Setting<bool> soundsEnabled{QLatin1String("soundsEnabled"), true};
inline constexpr Setting<bool> overlayEnabled{QLatin1String("overlayEnabled"), true};
/// The id of a microphone; empty: the one that the system chooses.
inline constexpr Setting<QString> microphone{QLatin1String("microphone"), QLatin1String("")};
inline constexpr Setting<bool> notificationsEnabled{QLatin1String("notificationsEnabled"), true};
inline constexpr Setting<CleanupLevel> cleanupLevel{QLatin1String("cleanupLevel"), CleanupLevel::Medium};
inline constexpr Setting<QString> cleanupTier{QLatin1String("cleanupTier"), QLatin1String("none")};
/// The model that Ollama is asked for.
inline constexpr Setting<QString> cleanupModel{QLatin1String("cleanupModel"), QLatin1String("gemma3:4b")};
/// Texts of at most this many characters are not cleaned.
inline constexpr Setting<qint64> cleanupMinChars{QLatin1String("cleanupMinChars"), 50};
inline constexpr Setting<bool> customPromptEnabled{QLatin1String("customPromptEnabled"), false};
/// One term a line; `Config::dictionary` splits it.
inline constexpr Setting<QString> dictionary{QLatin1String("dictionary"), QLatin1String("")};
/// An absolute path; `Config::modelsDir` knows what stands for an empty one.
inline constexpr Setting<QString> modelsDir{QLatin1String("modelsDir"), QLatin1String("")};
inline constexpr Setting<bool> debugMode{QLatin1String("debugMode"), false};

inline constexpr Setting<bool> onboardingDone{QLatin1String("onboardingDone"), false};
inline constexpr Setting<qint64> dictationCount{QLatin1String("dictationCount"), 0};
inline constexpr Setting<bool> feedbackGiven{QLatin1String("feedbackGiven"), false};
inline constexpr Setting<std::optional<QDateTime>> feedbackPromptLastShown{
    QLatin1String("feedbackPromptLastShown")};
inline constexpr Setting<std::optional<QString>> pendingChangelog{QLatin1String("pendingChangelog")};
inline constexpr Setting<QString> lastSeenVersion{QLatin1String("lastSeenVersion"), QLatin1String("")};

/// What the user chooses: in the windows, or in the file by hand.
inline constexpr std::tuple chosenByUser{
    hotkeyPreset,         hotkeyCode,   hotkeyModifiers, dictationMode, language,
    microphone,           asrTier,      typingSpeed,     soundsEnabled, overlayEnabled,
    notificationsEnabled, cleanupLevel, cleanupTier,     cleanupModel,  cleanupMinChars,
    customPromptEnabled,  dictionary,   modelsDir,       debugMode};
/// What the program notes for itself.
inline constexpr std::tuple keptByProgram{onboardingDone,          dictationCount,   feedbackGiven,
                                          feedbackPromptLastShown, pendingChangelog, lastSeenVersion};

}  // namespace Settings

}  // namespace parlivo
