// SPDX-License-Identifier: MIT
#pragma once

#include <QPointF>
#include <QSizeF>

#include <array>
#include <span>
#include <vector>

namespace parlivo {

/// One thread of the ribbon.
struct Strand {
    double u = 0;   ///< its place across the ribbon, −1 to +1
    double ph = 0;  ///< its phase in radians
};

/// The shape of the ribbon at one moment: where its strands and its centre line run.
///
/// Points are in the view's units with the origin at the top left, y downwards; x grows along a line. The
/// spans that are handed out stay valid until the next call.
class WaveformGeometry {
  public:
    static constexpr std::size_t strandCount = 64;

    /// The strands, from one edge of the ribbon to the other. Their phases step by nearly the golden angle,
    /// so that neighbours never move in step.
    static std::array<Strand, strandCount> makeStrands();
    /// How dark a strand is: the middle ones most.
    static double strandAlpha(const Strand& strand);

    /// The height above which the ribbon swings, from the top of a view of this height.
    static double baseLine(double height);

    /// Sets the moment that is computed next: the view's size, the seconds since the animation began, the
    /// smoothed level (0–1).
    void update(QSizeF size, double seconds, double level);

    std::span<const QPointF> strand(const Strand& strand);
    std::span<const QPointF> centreLine();

  private:
    /// What the formulas need at one x along the ribbon; it changes only with the width of the view.
    struct Abscissa {
        double x = 0;
        double envelope = 0;       ///< fades the ends
        double profile = 0;        ///< the fixed, speech-like shape, for an amplitude of 1
        double spread = 0;         ///< how far the strands fan out at silence
        double upperWidening = 0;  ///< factor on the spread of the strands with u > 0
        double sinFast = 0, cosFast = 0, sinSlow = 0, cosSlow = 0;  ///< of the two waves' own angles
    };
    /// The two waves of a line, as sines and cosines of their angles at the ribbon's beginning.
    struct Phase {
        Phase(double fast, double slow);
        double waveAt(const Abscissa& at) const;
        double sinFast, cosFast, sinSlow, cosSlow;
    };

    static std::vector<Abscissa> abscissae(double width, double step);
    static Abscissa makeAbscissa(double x, double s);

    QSizeF size_;
    double seconds_ = 0;
    double amplitude_ = 0;
    double waveHeight_ = 0;
    double spreadFactor_ = 0;
    double base_ = 0;
    std::vector<Abscissa> strandAbscissae_;
    std::vector<Abscissa> centreAbscissae_;
    std::vector<QPointF> points_;
};

}  // namespace parlivo
