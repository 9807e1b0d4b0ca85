// SPDX-License-Identifier: MIT
#include "ui/views/ScrollBars.h"

#include "ui/views/Contrast.h"
#include "ui/views/Labels.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QProxyStyle>
#include <QScrollBar>
#include <QStyleOptionSlider>

#include <algorithm>

namespace parlivo {

namespace {

// Device-independent pixels. All of the bar's breadth takes the mouse.
constexpr int barBreadth = 10;
constexpr int handleBreadth = 6;
constexpr int shortestHandle = 32;

/// A vertical bar from end to end, without the buttons and the frame that styles give it.
class SlimStyle : public QProxyStyle {
  public:
    explicit SlimStyle(const QAbstractScrollArea& area) : area_(area) {}

    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
        if (metric == PM_ScrollBarExtent) return barBreadth;
        if (metric == PM_ScrollBarSliderMin) return shortestHandle;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }

    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override {
        const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || !bar)
            return QProxyStyle::subControlRect(control, option, part, widget);
        const QRect handle = handleOf(*bar);
        switch (part) {
            case SC_ScrollBarSlider:
                return handle;
            case SC_ScrollBarSubPage:
                return {bar->rect.topLeft(), handle.topRight() - QPoint(0, 1)};
            case SC_ScrollBarAddPage:
                return {handle.bottomLeft() + QPoint(0, 1), bar->rect.bottomRight()};
            case SC_ScrollBarGroove:
                return bar->rect;
            default:
                return {};
        }
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override {
        const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || !bar || !painter) {
            QProxyStyle::drawComplexControl(control, option, painter, widget);
            return;
        }
        constexpr double side = (barBreadth - handleBreadth) / 2.0;
        const bool inUse = bar->state.testFlag(State_MouseOver) || bar->state.testFlag(State_Sunken);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(inUse ? secondaryColour(bar->palette) : restingColour(bar->palette));
        painter->drawRoundedRect(QRectF(handleOf(*bar)).adjusted(side, 1, -side, -1), handleBreadth / 2.0,
                                 handleBreadth / 2.0);
        painter->restore();
    }

  private:
    static QRect handleOf(const QStyleOptionSlider& bar) {
        const int room = bar.rect.height();
        const qint64 whole = qint64{bar.maximum} - bar.minimum + bar.pageStep;
        const auto share = whole > 0 ? static_cast<int>(room * qint64{bar.pageStep} / whole) : room;
        const int length = std::clamp(share, std::min(shortestHandle, room), room);
        const int start = sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition, room - length,
                                                  bar.upsideDown);
        return {bar.rect.left(), bar.rect.top() + start, bar.rect.width(), length};
    }

    /// The ground of a text is another than its window's.
    QColor restingColour(const QPalette& surroundings) const {
        const QWidget& behind = *area_.viewport();
        return legible(outlineColour(surroundings), behind.palette().color(behind.backgroundRole()),
                       drawingContrast);
    }

    const QAbstractScrollArea& area_;
};

}  // namespace

void useSlimScrollBar(QAbstractScrollArea& area) {
    QScrollBar& bar = *area.verticalScrollBar();
    if (bar.style()->styleHint(QStyle::SH_ScrollBar_Transient, nullptr, &bar) != 0) return;
    auto* style = new SlimStyle(area);
    style->setParent(&bar);
    bar.setStyle(style);
    // What lies behind the area shows beside the handle.
    bar.setAttribute(Qt::WA_OpaquePaintEvent, false);
}

}  // namespace parlivo
