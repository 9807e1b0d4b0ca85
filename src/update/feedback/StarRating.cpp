// SPDX-License-Identifier: MIT
#include "update/feedback/StarRating.h"

#include "ui/views/SymbolView.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QRadioButton>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr int starCount = 5;
constexpr int starSize = 26;
constexpr int spacing = 8;

}  // namespace

class StarButton : public QRadioButton {
  public:
    StarButton(const QString& name, QWidget* parent) : QRadioButton(parent), star_({}, starSize, {}, this) {
        setAccessibleName(name);
        setFixedSize(starSize, starSize);
        setFilled(false);
    }

    void setFilled(bool filled) {
        if (filled) {
            star_.setSymbol(u"star.fill"_s, starColour);
        } else {
            star_.setSymbol(u"star"_s, secondaryColour);
        }
    }

  protected:
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }
    void paintEvent(QPaintEvent*) override {
        if (!hasFocus()) return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(accentColour(palette()));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
    }

  private:
    SymbolView star_;
};

StarRating::StarRating(QWidget* parent) : QWidget(parent) {
    setAccessibleName(tr("Come valuti Parlivo?"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing);
    for (int position = 1; position <= starCount; ++position) {
        const QString name = position == 1 ? tr("1 stella") : tr("%1 stelle").arg(position);
        auto* star = new StarButton(name, this);
        connect(star, &QRadioButton::toggled, this, [this, position](bool on) {
            if (on) rate(position);
        });
        row->addWidget(star);
        stars_.push_back(star);
    }
    row->addStretch(1);
}

void StarRating::rate(int rating) {
    rating_ = rating;
    for (int position = 1; position <= starCount; ++position) {
        stars_[static_cast<std::size_t>(position - 1)]->setFilled(position <= rating);
    }
}

}  // namespace parlivo
