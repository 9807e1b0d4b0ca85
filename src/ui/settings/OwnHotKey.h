// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QWidget>

#include <functional>

namespace parlivo {

class KeyCaptureButton;
struct KeyCapture;
class Label;

/// Below the list of presets: the combination of the user's own, and what is wrong with the hot key in force.
class OwnHotKey : public QWidget {
    Q_OBJECT

  public:
    /// `adopted` is called after a combination became the chosen one.
    explicit OwnHotKey(std::function<void()> adopted, QWidget* parent = nullptr);

    /// Offers to press a combination; otherwise that is offered only while one is the chosen one.
    void offer();
    /// Shows what is in force.
    void refresh();

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void take(const KeyCapture& capture);
    void judge(KeyCode key, HotKeyModifiers modifiers);
    void sayInForce();
    void say(const QString& verdict);

    const std::function<void()> adopted_;
    KeyCaptureButton* button_;
    Label* verdict_;
    Label* warning_;
};

}  // namespace parlivo
