// SPDX-License-Identifier: MIT
#pragma once

#include "support/Lifetime.h"
#include "support/Worker.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QPlainTextEdit;
class QPushButton;
class QStackedWidget;

namespace parlivo {

class FormPage;
class Label;
class StarRating;
class TextField;

/// Stars and a few lines for the makers, sent to the product's site. After a success it shows its thanks for
/// as long as it lives.
class FeedbackView : public QWidget {
    Q_OBJECT

  public:
    explicit FeedbackView(std::function<void()> onClose, QWidget* parent = nullptr);

  private:
    QWidget* makeForm();
    void fill(QWidget& form);
    QWidget* makeTextField(QWidget& form);
    QWidget* makeButtons(QWidget& form);
    QWidget* makeThanks();
    void refresh();
    void send();
    void answered(bool success);

    const std::function<void()> onClose_;
    bool sending_ = false;
    std::optional<QString> error_;

    QStackedWidget* pages_;
    FormPage* page_ = nullptr;
    StarRating* rating_ = nullptr;
    QPlainTextEdit* text_ = nullptr;
    TextField* email_ = nullptr;
    Label* errorLine_ = nullptr;
    QPushButton* send_ = nullptr;
    QPushButton* close_ = nullptr;
    std::unique_ptr<Worker> request_;
    Lifetime lifetime_;
};

}  // namespace parlivo
