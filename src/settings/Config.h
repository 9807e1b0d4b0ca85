#pragma once

#include <QDateTime>
#include <QLatin1String>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

#include <optional>

/// Every setting and every place on disk. Stateless: each call reads the store afresh, so a change counts
/// from the next use on. No accessor fails; what is missing or of another type reads as absent. Any thread.
///
/// Paths are absolute. What concerns models is in models/ModelPaths.h, the cleanup prompt in
/// engines/CleanupPrompt.h.
namespace parlivo::Config {

/// The keys of the settings store.
namespace Key {
inline constexpr QLatin1String onboardingDone{"onboardingDone"};
inline constexpr QLatin1String asrTier{"asrTier"};
inline constexpr QLatin1String cleanupTier{"cleanupTier"};
inline constexpr QLatin1String cleanupLevel{"cleanupLevel"};
inline constexpr QLatin1String cleanupModel{"cleanupModel"};
inline constexpr QLatin1String cleanupMinChars{"cleanupMinChars"};
inline constexpr QLatin1String customPromptEnabled{"customPromptEnabled"};
inline constexpr QLatin1String dictionary{"dictionary"};
inline constexpr QLatin1String dictationMode{"dictationMode"};
inline constexpr QLatin1String hotkeyPreset{"hotkeyPreset"};
inline constexpr QLatin1String language{"language"};
inline constexpr QLatin1String typingSpeed{"typingSpeed"};
inline constexpr QLatin1String soundsEnabled{"soundsEnabled"};
inline constexpr QLatin1String overlayEnabled{"overlayEnabled"};
inline constexpr QLatin1String debugMode{"debugMode"};
inline constexpr QLatin1String modelsDir{"modelsDir"};
inline constexpr QLatin1String dictationCount{"dictationCount"};
inline constexpr QLatin1String feedbackGiven{"feedbackGiven"};
inline constexpr QLatin1String feedbackPromptLastShown{"feedbackPromptLastShown"};
inline constexpr QLatin1String pendingChangelog{"pendingChangelog"};
inline constexpr QLatin1String lastSeenVersion{"lastSeenVersion"};
}  // namespace Key

/// Posted (NotificationCenter) after `hotkeyPreset` was changed: the one setting that something holds on to.
inline constexpr QLatin1String pvHotkeyChanged{"pvHotkeyChanged"};

/// The stored boolean when there is any object under `key` (a number counts as "not zero", a text as true
/// when it says so, anything else as false), otherwise `absent`.
bool boolean(const QString& key, bool absent);
/// The stored text, or nothing when no text is stored.
std::optional<QString> string(const QString& key);
QString string(const QString& key, const QString& absent);
/// The stored integer when there is any object under `key` (0 for what is no number), otherwise `absent`.
qint64 integer(const QString& key, qint64 absent);

void set(const QString& key, const QVariant& value);
void remove(const QString& key);

/// The folder "Parlivo" under the user's application support; created on first use, once a process.
QString appSupportDir();
QString modelsDir();
QString promptFile();
/// The engines: from the bundle, else where a developer builds them. Whether the file exists is found out by
/// its user.
QString whisperServer();
QString llamaServerBinary();

/// The user's terms, one a line in the setting, trimmed, in their order.
QStringList dictionary();
/// Texts of at most this many characters are not cleaned.
qint64 cleanupMinChars();

std::optional<QDateTime> feedbackPromptLastShown();
void setFeedbackPromptLastShown(const QDateTime& moment);

QString appVersion();
QUrl ollamaURL();
/// The product's web site. The environment variable PARLIVO_SITE_BASE overrides what was built in.
QUrl siteBase();

/// The bundle's resource of this name, or else this path below the user's home, where a developer builds it.
QString resourceOrHome(const QString& resource, const QString& belowHome);

}  // namespace parlivo::Config
