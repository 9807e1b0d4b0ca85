// SPDX-License-Identifier: MIT

/// Renders a drawing as PNG pictures, one for each size. The build makes the application's icons with it.
///
/// usage: render_icon DRAWING.svg FOLDER NAME SIZE...     writes FOLDER/SIZExSIZE/apps/NAME.png

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <span>

namespace {

bool render(QSvgRenderer& drawing, int size, const QString& file) {
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter, QRectF(picture.rect()));
    painter.end();
    return picture.save(file);
}

}  // namespace

int main(int count, char** values) {
    const std::span<char*> arguments(values, static_cast<std::size_t>(count));
    if (arguments.size() < 5) {
        std::fputs("usage: render_icon DRAWING.svg FOLDER NAME SIZE...\n", stderr);
        return 2;
    }
    QSvgRenderer drawing(QString::fromLocal8Bit(arguments[1]));
    if (!drawing.isValid()) {
        std::fprintf(stderr, "render_icon: %s is no drawing\n", arguments[1]);
        return 1;
    }
    for (const char* const number : arguments.subspan(4)) {
        const int size = QByteArray(number).toInt();
        QDir folder(QString::fromLocal8Bit(arguments[2]));
        const QString place = QStringLiteral("%1x%1/apps").arg(size);
        const QString file =
            folder.filePath(place + u'/' + QString::fromLocal8Bit(arguments[3])) + QStringLiteral(".png");
        if (size <= 0 || !folder.mkpath(place) || !render(drawing, size, file)) {
            std::fprintf(stderr, "render_icon: cannot write %s\n", qPrintable(file));
            return 1;
        }
    }
    return 0;
}
