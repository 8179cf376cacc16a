// SPDX-License-Identifier: Apache-2.0
// A paint device that draws nothing and keeps the texts painted on it, in order and where, and
// the bounds of the shapes it fills: what a card says and where, without looking at its pixels.
#pragma once

#include <gtest/gtest.h>

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QRectF>
#include <QSize>
#include <QStringList>
#include <QTransform>

#include <functional>
#include <string>
#include <vector>

namespace quarbel::test {

struct DrawnText {
    QString text;
    QRectF bounds; // the run's advance width by its ascent and descent, in device pixels
};

class TextRecorder : public QPaintDevice {
  public:
    explicit TextRecorder(QSize size) : size_(size) {}
    QPaintEngine* paintEngine() const override { return &engine_; }
    const QStringList& texts() const { return engine_.texts; }
    const std::vector<DrawnText>& drawnTexts() const { return engine_.drawn; }
    // Bounds of every filled path, polygon and rectangle (panels, tiles, pills, dots).
    const std::vector<QRectF>& shapes() const { return engine_.shapes; }

  protected:
    int metric(PaintDeviceMetric metric) const override {
        switch (metric) {
        case PdmWidth: return size_.width();
        case PdmHeight: return size_.height();
        case PdmDepth: return 32;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY: return 96;
        case PdmDevicePixelRatio: return 1;
        case PdmDevicePixelRatioScaled: return int(QPaintDevice::devicePixelRatioFScale());
        default: return QPaintDevice::metric(metric);
        }
    }

  private:
    struct Engine : QPaintEngine {
        Engine() : QPaintEngine(QPaintEngine::AllFeatures) {}
        bool begin(QPaintDevice*) override { return true; }
        bool end() override { return true; }
        void updateState(const QPaintEngineState& changed) override {
            if (changed.state() & QPaintEngine::DirtyTransform) transform = changed.transform();
        }
        void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
        void drawImage(const QRectF&, const QImage&, const QRectF&, Qt::ImageConversionFlags) override {}
        void drawPath(const QPainterPath& path) override {
            shapes.push_back(transform.mapRect(path.boundingRect()));
        }
        void drawPolygon(const QPointF* points, int count, PolygonDrawMode) override {
            shapes.push_back(
                transform.mapRect(QPolygonF(QList<QPointF>(points, points + count)).boundingRect()));
        }
        void drawRects(const QRectF* rects, int count) override {
            for (int i = 0; i < count; ++i)
                shapes.push_back(transform.mapRect(rects[i]));
        }
        void drawTextItem(const QPointF& at, const QTextItem& item) override {
            texts.push_back(item.text());
            drawn.push_back(
                {item.text(), transform.mapRect(QRectF(at.x(), at.y() - item.ascent(), item.width(),
                                                       item.ascent() + item.descent()))});
        }
        Type type() const override { return QPaintEngine::User; }
        QStringList texts;
        std::vector<DrawnText> drawn;
        std::vector<QRectF> shapes;
        QTransform transform;
    };
    QSize size_;
    mutable Engine engine_;
};

// The texts `paint` draws on a device of `size`, in order; with `legible`, a text that leaves
// the device or overlaps another text or a shape it does not belong to fails the running test.
inline QStringList recordTexts(QSize size, const std::function<void(QPainter&)>& paint,
                               bool legible = false) {
    TextRecorder recorder(size);
    QPainter painter(&recorder);
    paint(painter);
    painter.end();
    const auto& texts = recorder.drawnTexts();
    const auto name = [](const DrawnText& t) { return t.text.left(24).toStdString(); };
    for (std::size_t i = 0; legible && i < texts.size(); ++i) {
        const QRectF a = texts[i].bounds.adjusted(1, 1, -1, -1);
        if (!QRectF(QPointF(0, 0), size).contains(a)) ADD_FAILURE() << name(texts[i]) << " leaves the card";
        for (std::size_t j = i + 1; j < texts.size(); ++j)
            if (a.intersects(texts[j].bounds.adjusted(1, 1, -1, -1)))
                ADD_FAILURE() << name(texts[i]) << " overlaps " << name(texts[j]);
        // A text lies inside a shape (its panel, tile or pill) or clear of it.
        for (const QRectF& shape : recorder.shapes())
            if (a.intersects(shape) && !shape.contains(a))
                ADD_FAILURE() << name(texts[i]) << " runs over the edge of a shape";
    }
    return recorder.texts();
}

} // namespace quarbel::test
