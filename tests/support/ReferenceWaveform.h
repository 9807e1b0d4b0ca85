// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QSizeF>

#include <cmath>
#include <vector>

/// The ribbon evaluated formula by formula, point by point, and stroked and filled by QPainter: slow, and
/// written independently of what it checks. Coordinates have their origin at the bottom left, y upwards,
/// until they are painted.
namespace parlivo::reference {

struct Moment {
    QSizeF size;
    double seconds = 0;
    double level = 0;
};

inline double gauss(double s, double c, double sigma) {
    return std::exp(-std::pow((s - c) / sigma, 2));
}

inline double smooth(double x) {
    if (x < 0) x = 0;
    if (x > 1) x = 1;
    return 3 * std::pow(x, 2) - 2 * std::pow(x, 3);
}

/// The ordinate of a line at the abscissa x: strand (u, ph), or the centre line.
struct Line {
    bool centre = false;
    double u = 0;
    double ph = 0;

    double yAt(const Moment& m, double x) const {
        const double w = m.size.width();
        const double h = m.size.height();
        const double s = (x / w - 0.045) / 0.91;
        const double fade = smooth(s / 0.09) * (1 - 0.9 * smooth((s - 0.86) / 0.14));
        const double amplitude = 0.72 * h * (0.55 + 0.5 * m.level);
        const double shape = amplitude * (0.46 * gauss(s, 0.37, 0.08) - 0.13 * gauss(s, 0.12, 0.075) -
                                          0.21 * gauss(s, 0.55, 0.085) + 0.07 * gauss(s, 0.71, 0.09) -
                                          0.06 * gauss(s, 0.85, 0.09));
        const double wave = 0.55 * std::sin(0.55 * m.seconds + ph + 9.5 * s) +
                            0.45 * std::sin(0.38 * m.seconds + 4.2 * s - 0.7 * ph);
        double spread = (0.5 + 4.4 * gauss(s, 0.37, 0.1) + 1.8 * gauss(s, 0.55, 0.12)) * (1 + 1.5 * m.level);
        if (u > 0) spread *= 1 + 1.4 * gauss(s, 0.37, 0.09);
        const double y = fade * (shape + (centre ? 0.5 : 1.0) * wave * (0.4 + 1.4 * m.level) + u * spread);
        return 0.5 * h + 0.03 * h - y;
    }
};

inline Line strand(int i) {
    return {.u = 2 * (i / 63.0) - 1, .ph = i * 2.399};
}

inline Line centreLine() {
    return {.centre = true};
}

inline std::vector<double> abscissae(double width, double step) {
    std::vector<double> result;
    for (int i = 0; i * step <= width; ++i) {
        const double p = i * step / width;
        if (!(p < 0.045) && !(p > 0.955)) result.push_back(i * step);
    }
    return result;
}

inline QPainterPath path(const Moment& m, const Line& line, double step) {
    QPainterPath result;
    for (const double x : abscissae(m.size.width(), step)) {
        const QPointF point(x, m.size.height() - line.yAt(m, x));
        if (result.elementCount() == 0)
            result.moveTo(point);
        else
            result.lineTo(point);
    }
    return result;
}

inline QColor ink(int red, int green, int blue, double alpha) {
    QColor colour(red, green, blue);
    colour.setAlphaF(static_cast<float>(alpha));
    return colour;
}

/// By the outline of the stroke: for pens thinner than a device pixel QPainter's own stroking is only a rough
/// approximation.
inline void stroke(QPainter& painter, const QPainterPath& line, const QPen& pen) {
    QPainterPath outline = QPainterPathStroker(pen).createStroke(line);
    outline.setFillRule(Qt::WindingFill);
    painter.fillPath(outline, pen.color());
}

inline void paintCard(QPainter& painter, const Moment& m) {
    const double w = m.size.width();
    const double h = m.size.height();
    QPainterPath card;
    card.addRoundedRect(QRectF(0, 0, w, h), 20, 20);
    painter.setClipPath(card);
    QLinearGradient gradient(w / 2, 0, w / 2, h);
    gradient.setColorAt(0, QColor(244, 240, 231));
    gradient.setColorAt(0.55, QColor(239, 234, 223));
    gradient.setColorAt(1, QColor(234, 228, 215));
    painter.fillRect(QRectF(0, 0, w, h), gradient);
    QPainterPath highlight(QPointF(20, 0.75));
    highlight.lineTo(w - 20, 0.75);
    stroke(painter, highlight, QPen(ink(255, 255, 255, 0.7), 1.5, Qt::SolidLine, Qt::FlatCap));
    stroke(painter, card, QPen(ink(0, 0, 0, 0.06), 1));
}

inline void paint(QPainter& painter, const Moment& m) {
    painter.setRenderHint(QPainter::Antialiasing);
    paintCard(painter, m);
    for (int i = 0; i < 64; ++i) {
        const Line line = strand(i);
        const double alpha = 0.03 + 0.08 * std::exp(-std::pow(1.35 * line.u, 2));
        stroke(painter, path(m, line, 3),
               QPen(ink(66, 60, 53, alpha), 0.7, Qt::SolidLine, Qt::RoundCap, Qt::MiterJoin));
    }
    stroke(painter, path(m, centreLine(), 2),
           QPen(ink(56, 50, 43, 0.62), 1.2, Qt::SolidLine, Qt::RoundCap, Qt::MiterJoin));
}

inline QImage picture(const Moment& m, double scale) {
    QImage image((m.size * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.scale(scale, scale);
    paint(painter, m);
    return image;
}

}  // namespace parlivo::reference
