#include "shell/design/Icon.h"

#include "shell/design/Theme.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <optional>
#include <utility>

namespace ombrel {

namespace {

class ThemeIconEngine final : public QIconEngine {
  public:
    ThemeIconEngine(QString name, std::optional<Tone> tone)
        : m_name(std::move(name)), m_tone(tone) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1;
        QPixmap drawn = pixmap(rect.size() * ratio, mode, state);
        drawn.setDevicePixelRatio(ratio);
        painter->drawPixmap(rect.topLeft(), drawn);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        if (size.isEmpty()) {
            return {}; // a button that has no room asks for such a one
        }
        const QColor color = colorOf(mode, state);
        const QString key = QStringLiteral("ombrel/%1/%2/%3x%4")
                                .arg(m_name, color.name(QColor::HexArgb))
                                .arg(size.width())
                                .arg(size.height());
        QPixmap drawn;
        if (QPixmapCache::find(key, &drawn)) {
            return drawn;
        }
        drawn = QPixmap(size);
        drawn.fill(Qt::transparent);
        QFile file(QStringLiteral(":/icons/%1.svg").arg(m_name));
        if (file.open(QIODevice::ReadOnly)) {
            QByteArray svg = file.readAll();
            svg.replace("currentColor", color.name().toLatin1());
            QSvgRenderer renderer(svg);
            QPainter painter(&drawn);
            const int side = qMin(size.width(), size.height());
            renderer.render(&painter, QRectF((size.width() - side) / 2.0,
                                             (size.height() - side) / 2.0, side, side));
        }
        QPixmapCache::insert(key, drawn);
        return drawn;
    }

    QIconEngine* clone() const override { return new ThemeIconEngine(m_name, m_tone); }

  private:
    QColor colorOf(QIcon::Mode mode, QIcon::State state) const {
        const ThemeColors& colors = Theme::current().colors();
        if (mode == QIcon::Disabled) {
            return colors.faint;
        }
        if (!m_tone) {
            return colors.onAccent;
        }
        if (state == QIcon::On) {
            return colors.accentText;
        }
        return colors.strong(*m_tone);
    }

    QString m_name;
    std::optional<Tone> m_tone; // none: it stands on the accent's colour
};

} // namespace

QIcon themeIcon(const QString& name, Tone tone) {
    return QIcon(new ThemeIconEngine(name, tone));
}

QIcon onAccentIcon(const QString& name) {
    return QIcon(new ThemeIconEngine(name, std::nullopt));
}

} // namespace ombrel
