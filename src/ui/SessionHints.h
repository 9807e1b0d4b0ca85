// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SessionHint.h"
#include "ui/views/Labels.h"

#include <QMargins>
#include <QTimer>
#include <QWidget>

#include <vector>

class QVBoxLayout;

namespace parlivo {

/// What the user should know of this session, or has to do once, on one topic: each hint with its button, or
/// with exact lines that can be copied. While its page is shown it follows what was done meanwhile; without a
/// hint it takes no room.
class SessionHints : public QWidget {
    Q_OBJECT

  public:
    struct Look {
        TextStyle style = TextStyle::Caption;
        PaletteColour colour = primaryColour;
        Qt::AlignmentFlag alignment = Qt::AlignLeft;
        QMargins margins;
    };
    /// For a page, which is its parent.
    SessionHints(SessionHint::Topic topic, Look look, QWidget& page);

  Q_SIGNALS:
    /// Other hints are shown now.
    void changed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void refresh();
    void rebuild();
    QWidget* makeBlock(const SessionHint& hint);
    QWidget* makeButtons(const SessionHint& hint, QWidget* parent);

    const SessionHint::Topic topic_;
    const Look look_;
    QVBoxLayout* column_;
    std::vector<SessionHint> hints_;
    QTimer poll_;
};

}  // namespace parlivo
