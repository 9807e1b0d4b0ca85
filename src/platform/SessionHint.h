// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

namespace parlivo {

/// Something about this session that the user should know, or has to do once, before all of it works.
struct SessionHint {
    enum class Topic { HotKey, Text };  ///< what it is about; decides where it is shown

    Topic topic = Topic::HotKey;
    QString text;         ///< in Italian, whole sentences
    QString lines;        ///< exact lines for a terminal or a file, to be copied; or empty
    QString actionLabel;  ///< of the button, or empty for none
    std::function<void()>
        action;  ///< called on the main thread when the user presses the button; returns at once
};

}  // namespace parlivo
