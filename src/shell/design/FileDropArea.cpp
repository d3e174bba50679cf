#include "shell/design/FileDropArea.h"

#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QDropEvent>
#include <QIcon>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

namespace ombrel {

namespace {

QStringList localPaths(const QMimeData* data) {
    QStringList paths;
    const auto urls = data->urls();
    for (const QUrl& url : urls) {
        if (const QString path = url.toLocalFile(); !path.isEmpty()) {
            paths.append(path);
        }
    }
    return paths;
}

} // namespace

FileDropArea::FileDropArea(const QString& title, const QString& text, QWidget* target)
    : QWidget(target), m_title(title), m_text(text) {
    setObjectName(QStringLiteral("dropArea"));
    setAccessibleName(title);
    setAcceptDrops(true);
    setFocusPolicy(Qt::NoFocus);
    hide();
    target->setAcceptDrops(true);
    target->installEventFilter(this);
}

void FileDropArea::setTitle(const QString& title) {
    m_title = title;
    setAccessibleName(title);
    update();
}

bool FileDropArea::event(QEvent* event) {
    return handle(event, true) || QWidget::event(event);
}

bool FileDropArea::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && isVisible()) {
        resize(parentWidget()->size());
    }
    return handle(event, false) || QWidget::eventFilter(watched, event);
}

bool FileDropArea::handle(QEvent* event, bool covers) {
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto* drag = static_cast<QDropEvent*>(event);
        if (localPaths(drag->mimeData()).isEmpty()) {
            return false;
        }
        // The files stay where they are.
        drag->setDropAction(Qt::CopyAction);
        drag->accept();
        setGeometry(parentWidget()->rect());
        raise();
        show();
        return true;
    }
    case QEvent::DragLeave:
        // From the target it goes over to what covers it.
        if (covers) {
            hide();
        }
        return covers;
    case QEvent::Drop:
        hide();
        takeDrop(static_cast<QDropEvent*>(event));
        return true;
    default:
        return false;
    }
}

void FileDropArea::takeDrop(QDropEvent* event) {
    const QStringList paths = localPaths(event->mimeData());
    if (paths.isEmpty()) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT dropped(paths);
}

void FileDropArea::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor veil = colors.window;
    veil.setAlphaF(0.86F);
    painter.fillRect(rect(), veil);

    const QRectF frame =
        QRectF(rect()).adjusted(spacing::large, spacing::large, -spacing::large, -spacing::large);
    QColor fill = colors.accentSoft;
    fill.setAlphaF(0.75F);
    painter.setBrush(fill);
    painter.setPen(QPen(colors.accent, 2, Qt::DashLine));
    painter.drawRoundedRect(frame, spacing::cardCorner, spacing::cardCorner);

    const QFontMetrics titleMetrics(theme.font(TextRole::heading));
    const QFontMetrics textMetrics(theme.font(TextRole::body));
    const int height = spacing::largeIcon + spacing::medium + titleMetrics.height() +
                       spacing::tight + textMetrics.height();
    int y = (this->height() - height) / 2;
    themeIcon(QStringLiteral("download"), Tone::accent)
        .paint(&painter, QRect((width() - spacing::largeIcon) / 2, y, spacing::largeIcon,
                               spacing::largeIcon));
    y += spacing::largeIcon + spacing::medium;
    const int room = width() - 4 * spacing::page;
    const auto line = [&](TextRole role, const QFontMetrics& metrics, const QColor& color,
                          const QString& text) {
        painter.setFont(theme.font(role));
        painter.setPen(color);
        painter.drawText(QRect((width() - room) / 2, y, room, metrics.height()), Qt::AlignCenter,
                         metrics.elidedText(text, Qt::ElideMiddle, room));
        y += metrics.height() + spacing::tight;
    };
    line(TextRole::heading, titleMetrics, colors.text, m_title);
    line(TextRole::body, textMetrics, colors.secondary, m_text);
}

} // namespace ombrel
