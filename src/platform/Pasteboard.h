// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>

#include <optional>

namespace parlivo {

/// The places from which a system's applications paste. macOS has the first only.
enum class PasteboardPlace { Clipboard, PrimarySelection };

/// Plain texts by place; a place without plain text is absent.
using PasteboardTexts = QMap<PasteboardPlace, QString>;

/// The general pasteboard. Any thread; blocks while the owner of the present contents is asked for them (a
/// few seconds at most when it stalls).
class Pasteboard {
  public:
    /// Who may keep a copy of what is put there.
    enum class History {
        Keep,  ///< clipboard managers may record it
        Omit,  ///< marked as secret: no history should keep it
    };

    virtual ~Pasteboard() = default;

    /// The plain texts there now.
    virtual PasteboardTexts texts() = 0;

    /// Clears every place and puts `text` there as plain text. False if the system has not taken it, or does
    /// not tell: then nobody may be told that it is there.
    [[nodiscard]] virtual bool setText(const QString& text, History history) = 0;

    /// Puts texts back, each only into a place that still holds what we put there last.
    virtual void restore(const PasteboardTexts& texts) = 0;

    /// How often other programs have been given a text that was put there, since the start; nullopt where the
    /// system does not tell. At once.
    virtual std::optional<int> timesRead() { return std::nullopt; }
};

}  // namespace parlivo
