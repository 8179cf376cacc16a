// A paint device that keeps the texts painted on it, in order, and draws nothing: what
// a card says, read without looking at its pixels.
#pragma once

#include <QPaintDevice>
#include <QPaintEngine>
#include <QSize>
#include <QStringList>

namespace quarbel::test {

class TextRecorder : public QPaintDevice {
  public:
    explicit TextRecorder(QSize size) : size_(size) {}
    QPaintEngine* paintEngine() const override { return &engine_; }
    const QStringList& texts() const { return engine_.texts; }

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
        void updateState(const QPaintEngineState&) override {}
        void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
        void drawImage(const QRectF&, const QImage&, const QRectF&, Qt::ImageConversionFlags) override {}
        void drawPath(const QPainterPath&) override {}
        void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
        void drawTextItem(const QPointF&, const QTextItem& item) override { texts.push_back(item.text()); }
        Type type() const override { return QPaintEngine::User; }
        QStringList texts;
    };
    QSize size_;
    mutable Engine engine_;
};

} // namespace quarbel::test
