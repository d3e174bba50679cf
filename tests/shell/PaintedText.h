#pragma once

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QTextItem>
#include <QWidget>

namespace ombrel::test {

// Collects the texts that a widget paints, for what is drawn and not made of labels.
class PaintedText final : public QPaintDevice {
  public:
    // Everything that is painted at that width, in the order of painting and without blanks, since
    // lines break at them.
    static QString of(QWidget& widget, int width) {
        widget.resize(width, widget.heightForWidth(width));
        PaintedText device(widget.size());
        widget.render(&device, {}, {}, {});
        return device.m_engine.text.remove(QLatin1Char(' '));
    }

    QPaintEngine* paintEngine() const override { return &m_engine; }

  protected:
    int metric(PaintDeviceMetric metric) const override {
        constexpr int dotsPerInch = 96;
        switch (metric) {
        case PdmWidth:
            return m_size.width();
        case PdmHeight:
            return m_size.height();
        case PdmNumColors:
            return 1 << 24;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return dotsPerInch;
        }
    }

  private:
    class Engine final : public QPaintEngine {
      public:
        Engine() : QPaintEngine(AllFeatures) {}
        bool begin(QPaintDevice*) override { return true; }
        bool end() override { return true; }
        void updateState(const QPaintEngineState&) override {}
        void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
        void drawPath(const QPainterPath&) override {}
        void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
        void drawTextItem(const QPointF&, const QTextItem& item) override { text += item.text(); }
        Type type() const override { return User; }
        QString text;
    };

    explicit PaintedText(QSize size) : m_size(size) {}

    QSize m_size;
    mutable Engine m_engine;
};

} // namespace ombrel::test
