// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

#include <optional>

namespace parlivo {

/// The screens, and what a small panel that floats over all windows needs of them. Main thread.
///
/// Coordinates are the toolkit's: device-independent, y downwards.
class Screens {
  public:
    virtual ~Screens() = default;

    /// The main screen (the one that the user works on) without what docks and panels keep for themselves.
    /// nullopt if there is no screen.
    virtual std::optional<QRect> mainVisibleFrame() = 0;

    /// Whether windows can be partly transparent at this moment.
    virtual bool transparencyAvailable() = 0;
};

}  // namespace parlivo
