// SPDX-License-Identifier: MIT

// Takes pictures of the program's indicators, on a desktop of 1280 x 800 points.
//
// usage: indicator_pictures FOLDER SCALE [page]     writes FOLDER/NAME.png, at scale 2 FOLDER/NAME@2x.png
//
// With "page" only the card on a white page, and beside it NAME.json with its place, for tools/contrast.

#include "audio/overlay/WaveformPainter.h"
#include "desktop/indicators/IndicatorProcess.h"
#include "desktop/indicators/Screen.h"
#include "desktop/tray/StateIcons.h"
#include "desktop/tray/TrayHost.h"
#include "platform/Adapters.h"
#include "platform/Platform.h"
#include "support/Error.h"
#include "support/ReferenceWaveform.h"
#include "ui/views/SymbolIcon.h"

#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLinearGradient>
#include <QPaintEvent>
#include <QPainter>
#include <QWidget>

#include <array>
#include <cstdio>
#include <span>
#include <utility>
#include <vector>

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

using Panel = StateIcon::Panel;

constexpr QSize screenSize(1280, 800);  // this and what follows in points
constexpr int panelHeight = 32;
constexpr QRect trayPlace(1150, 0, 40, panelHeight);
constexpr QSize cardSize(240, 84);
constexpr QRect cardSurroundings((1280 - 320) / 2, 800 - 110 - 84 - 30, 320, 144);
constexpr QColor wallpaper(0x5f, 0x7b, 0x86);

constexpr std::array symbols{"mic",
                             "mic.fill",
                             "waveform",
                             "wand.and.stars",
                             "keyboard",
                             "keyboard.fill",
                             "folder.fill",
                             "character.book.closed",
                             "gearshape",
                             "checkmark.circle.fill",
                             "checkmark.seal.fill",
                             "circle",
                             "largecircle.fill.circle",
                             "star",
                             "star.fill",
                             "heart.fill"};

void require(bool condition, const char* complaint) {
    if (!condition) throw Error(QStringLiteral("Pictures"), 1, QString::fromUtf8(complaint));
}

bool isDark(Panel panel) {
    return panel == Panel::Dark;
}

QString nameOf(Panel panel) {
    return isDark(panel) ? QStringLiteral("dark") : QStringLiteral("light");
}

QColor foreground(Panel panel) {
    return isDark(panel) ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x22, 0x22, 0x22);
}

/// The wallpaper, with the panel along its upper edge.
class Backdrop : public QWidget {
  public:
    explicit Backdrop(const QColor& panel, const QColor& ground = wallpaper)
        : panel_(panel), ground_(ground) {
        setAttribute(Qt::WA_X11NetWmWindowTypeDesktop);
        setGeometry(QRect(QPoint(), screenSize));
        show();
    }

  private:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.fillRect(rect(), ground_);
        painter.fillRect(QRect(0, 0, width(), panelHeight), panel_);
        painter.setPen(panel_.lightnessF() < 0.5 ? foreground(Panel::Dark) : foreground(Panel::Light));
        painter.drawText(QRect(trayPlace.right(), 0, width() - trayPlace.right() - 14, panelHeight),
                         Qt::AlignRight | Qt::AlignVCenter, QStringLiteral("sab 10:41"));
    }

    QColor panel_;
    QColor ground_;
};

/// Pictures of one size, from left to right.
QImage sideBySide(const std::vector<QImage>& pictures) {
    const QSize size = pictures.front().size();
    QImage row(size.width() * static_cast<int>(pictures.size()), size.height(), QImage::Format_RGB32);
    QPainter painter(&row);
    int left = 0;
    for (const QImage& picture : pictures)
        painter.drawImage(std::exchange(left, left + size.width()), 0, picture);
    return row;
}

class Studio {
  public:
    Studio(QString folder, int scale) : folder_(std::move(folder)), scale_(scale) {}

    void takeAll() {
        for (const Panel panel : {Panel::Light, Panel::Dark}) takeStatusItem(panel);
        takeOverlay();
        compareRibbon();
        if (scale_ > 1) return;
        drawSymbols();
    }

    /// Where its edge is hardest to see. Without a compositing manager the edge is drawn another way.
    void takeCardOnPage() {
        const Backdrop page(Qt::white, Qt::white);
        IndicatorProcess indicators;
        indicators.perform(QStringLiteral("level 0"));
        indicators.perform(QStringLiteral("show"));
        letPass(1500ms);
        const bool composited = screen_.selectionOwner("_NET_WM_CM_S0") != XCB_NONE;
        const QString name =
            composited ? QStringLiteral("overlay-on-white") : QStringLiteral("overlay-on-white-uncomposited");
        save(picture(cardSurroundings), name);
        const QRect card(QPoint((cardSurroundings.width() - cardSize.width()) / 2,
                                (cardSurroundings.height() - cardSize.height()) / 2),
                         cardSize);
        describeCard(inPixels(card), name);
    }

  private:
    QString path(const QString& name, const QString& ending) const {
        const QString suffix = scale_ == 1 ? QString() : QStringLiteral("@%1x").arg(scale_);
        return folder_ + u'/' + name + suffix + ending;
    }

    void describeCard(const QRect& area, const QString& name) const {
        const QJsonObject card{
            {QStringLiteral("role"), QStringLiteral("card")},
            {QStringLiteral("name"), QStringLiteral("the overlay")},
            {QStringLiteral("area"), QJsonArray{area.x(), area.y(), area.width(), area.height()}}};
        QFile file(path(name, QStringLiteral(".json")));
        require(file.open(QIODevice::WriteOnly) &&
                    file.write(QJsonDocument(QJsonArray{card}).toJson(QJsonDocument::Compact)) > 0,
                "cannot write the card's place");
    }

    void save(const QImage& picture, const QString& name) const {
        const QString file = path(name, QStringLiteral(".png"));
        require(picture.save(file), "cannot write a picture");
        std::printf("%s\n", qPrintable(file));
    }

    QRect inPixels(const QRect& area) const { return {area.topLeft() * scale_, area.size() * scale_}; }
    /// The part of the screen, given in points.
    QImage picture(const QRect& area) const { return screen_.picture(inPixels(area)); }

    /// The icon in every state, and the menu open.
    void takeStatusItem(Panel panel) {
        const TrayHost tray(isDark(panel) ? TrayHost::Panel::Dark : TrayHost::Panel::Light,
                            inPixels(trayPlace), 22 * scale_);
        const Backdrop backdrop(tray.ground());
        IndicatorProcess indicators;
        require(waitFor([&] { return tray.icon().has_value(); }), "no icon came to the tray");
        std::vector<QImage> states;
        for (const StateIcon& state : stateIcons) {
            indicators.perform(QStringLiteral("icon ") + state.words());
            letPass(500ms);
            states.push_back(picture(trayPlace));
        }
        save(sideBySide(states), QStringLiteral("states-") + nameOf(panel));

        for (const char* line : {"title Pronto — tieni premuto Alt+Spazio per dettare", "icon mic none",
                                 "mic authorised", "trusted yes"})
            indicators.perform(QString::fromUtf8(line));
        screen_.click(tray.icon()->center());
        require(waitFor([&] { return !indicators.perform(QStringLiteral("lines")).isEmpty(); }),
                "no menu opens");
        const int last = indicators.perform(QStringLiteral("lines")).last().section(u' ', 1, 1).toInt();
        screen_.movePointer(QPoint(2, 790) * scale_);
        letPass(500ms);
        constexpr int width = 560;
        const QRect area(screenSize.width() - width, 0, width, last + 30);
        save(picture(area), QStringLiteral("menu-") + nameOf(panel));
        for (const char* line :
             {"title ⚠️ Impossibile avviare la registrazione: Microfono non disponibile", "mic denied",
              "trusted no", "update 1.1"})
            indicators.perform(QString::fromUtf8(line));
        letPass(500ms);
        save(picture(area.adjusted(0, 0, 0, 40)), QStringLiteral("menu-error-") + nameOf(panel));
    }

    void takeOverlay() {
        const Backdrop backdrop(wallpaper);
        IndicatorProcess indicators;
        for (const auto& [level, name] : {std::pair("0", "silent"), std::pair("0.2", "level-0.2"),
                                          std::pair("0.6", "level-0.6"), std::pair("1", "level-1.0")}) {
            indicators.perform(QStringLiteral("level ") + QLatin1String(level));
            indicators.perform(QStringLiteral("show"));
            letPass(1500ms);
            save(picture(cardSurroundings), QStringLiteral("overlay-") + QLatin1String(name));
            if (QLatin1String(name) == QLatin1String("silent")) {
                indicators.perform(QStringLiteral("rest"));
                letPass(1500ms);
                save(picture(cardSurroundings), QStringLiteral("overlay-at-work"));
            }
            indicators.perform(QStringLiteral("hide"));
        }
    }

    /// The ribbon as the program draws it, to the left of the same lines stroked by a general painter, which
    /// is slow.
    void compareRibbon() const {
        const reference::Moment moment{QSizeF(240, 84), 3.7, 0.6};
        WaveformPainter painter;
        const QImage ours = painter.frame(moment.size, scale_, FloatingPanel::Corners::Transparent,
                                          moment.seconds, moment.level);
        QImage slow = reference::picture(moment, scale_);
        slow.setDevicePixelRatio(scale_);
        QImage both(QSize(540, 124) * scale_, QImage::Format_RGB32);
        both.setDevicePixelRatio(scale_);
        both.fill(wallpaper);
        QPainter canvas(&both);
        canvas.drawImage(QPoint(20, 20), ours);
        canvas.drawImage(QPoint(280, 20), slow);
        canvas.end();
        save(both, QStringLiteral("ribbon-and-reference"));
    }

    /// Every symbol at the sizes of panels, for light panels and for dark ones.
    void drawSymbols() const {
        constexpr int cell = 44;
        constexpr std::array sizes{16, 22, 32};
        QImage sheet(cell * static_cast<int>(symbols.size()), cell * 6, QImage::Format_RGB32);
        sheet.fill(QColor(0xf0, 0xf0, 0xf0));
        QPainter painter(&sheet);
        painter.fillRect(QRect(0, 3 * cell, sheet.width(), 3 * cell), QColor(0x2e, 0x2e, 0x2e));
        int top = 0;
        for (const Panel panel : {Panel::Light, Panel::Dark}) {
            for (const int size : sizes) {
                int left = 0;
                for (const char* symbol : symbols) {
                    painter.drawImage(left + (cell - size) / 2, top + (cell - size) / 2,
                                      SymbolIcon::image(QLatin1String(symbol), foreground(panel), size));
                    left += cell;
                }
                top += cell;
            }
        }
        painter.end();
        save(sheet, QStringLiteral("symbols"));
    }

    QString folder_;
    int scale_;
    Screen screen_;
};

int run(std::span<char*> arguments) {
    const bool page = arguments.size() == 4 && QByteArray(arguments[3]) == "page";
    if (arguments.size() != 3 && !page) {
        std::fputs("usage: indicator_pictures FOLDER SCALE [page]\n", stderr);
        return 2;
    }
    Platform::install(makePlatform());
    Studio studio(QString::fromLocal8Bit(arguments[1]), QByteArray(arguments[2]).toInt());
    if (page) {
        studio.takeCardOnPage();
    } else {
        studio.takeAll();
    }
    Platform::install(nullptr);
    return 0;
}

}  // namespace
}  // namespace parlivo::desktop

int main(int argc, char** argv) {
    try {
        const QApplication application(argc, argv);
        return parlivo::desktop::run({argv, static_cast<std::size_t>(argc)});
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "indicator_pictures: %s\n", failure.what());
        return 1;
    }
}
