#pragma once
// A camera-like picture for the benchmarks: smooth shading with fine noise,
// so that the JPEG has the size and the decoding work of a real photograph.

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QRandomGenerator>
#include <QSize>

inline QByteArray photo(QSize size, int quality = 90)
{
    QImage image(size, QImage::Format_RGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const int noise = int(random.bounded(24));
            line[x] = qRgb((x * 255 / size.width() + noise) & 255, (y * 255 / size.height() + noise) & 255,
                           (x + y + noise) & 255);
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", quality);
    return bytes;
}
