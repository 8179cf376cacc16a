// SPDX-License-Identifier: Apache-2.0
// Build step: renders the application's SVG icon as a square PNG.
//   quarbel_render_icon ICON.svg SIZE OUT.png
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: quarbel_render_icon ICON.svg SIZE OUT.png\n", stderr);
        return 2;
    }
    QSvgRenderer renderer(QString::fromLocal8Bit(argv[1]));
    if (!renderer.isValid()) {
        std::fprintf(stderr, "quarbel_render_icon: cannot read %s\n", argv[1]);
        return 1;
    }
    const int size = std::stoi(argv[2]);
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter);
    painter.end();
    const QString out = QString::fromLocal8Bit(argv[3]);
    QDir().mkpath(QFileInfo(out).absolutePath());
    if (!image.save(out, "PNG")) {
        std::fprintf(stderr, "quarbel_render_icon: cannot write %s\n", argv[3]);
        return 1;
    }
    return 0;
}
