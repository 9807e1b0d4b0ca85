// SPDX-License-Identifier: MIT
#pragma once

/// Quartz event services and Accessibility, recording.
namespace parlivo::mac {

struct QuartzScript {
    bool sources = true;     ///< whether event sources can be made
    int eventsToRefuse = 0;  ///< the next events that cannot be made
    bool trusted = false;    ///< what Accessibility answers
};
QuartzScript& quartz();

}  // namespace parlivo::mac
