// SPDX-License-Identifier: MIT
#pragma once

#include "support/Error.h"

#include <QCoreApplication>
#include <QString>

#include <functional>
#include <optional>

namespace parlivo {

/// What helps against an error: the one button of its notification.
enum class Remedy {
    OpenLog,
    SoundSettings,
    Download,   ///< the place where models are downloaded
    ChooseKey,  ///< the place where the hot key is chosen
};

/// What helps against a failure of a dictation.
Remedy remedyFor(const Error& error);

/// Tells errors by the desktop's notifications, for the user who does not look at the menu. Never shows
/// anything that was dictated. Main thread.
class ErrorNotices {
    Q_DECLARE_TR_FUNCTIONS(parlivo::ErrorNotices)

  public:
    struct Actions {
        std::function<void()> showDownloads;
        std::function<void()> showHotKeyChoice;
    };

    explicit ErrorNotices(Actions actions);

    /// Unless the user has turned notifications off.
    void show(const QString& message, Remedy remedy);
    /// Shows what is wrong with the hot key, if that is new, and takes it back once it is mended.
    void showHotKey(const std::optional<QString>& warning);

  private:
    std::function<void()> actionOf(Remedy remedy) const;

    const Actions actions_;
    std::optional<QString> hotKeyWarning_;  ///< the last one that was shown
    bool hotKeyShown_ = false;              ///< whether it is the last notification
};

}  // namespace parlivo
