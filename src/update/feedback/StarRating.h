// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <vector>

namespace parlivo {

class StarButton;

/// One to five stars; none until the user chooses. To the keyboard and to a screen reader the stars are radio
/// buttons.
class StarRating : public QWidget {
    Q_OBJECT

  public:
    explicit StarRating(QWidget* parent = nullptr);

    /// 0 to 5.
    int rating() const { return rating_; }

  private:
    void rate(int rating);

    int rating_ = 0;
    std::vector<StarButton*> stars_;
};

}  // namespace parlivo
