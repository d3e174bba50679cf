#pragma once

#include <QStringList>
#include <QWidget>

class QDropEvent;

namespace ombrel {

// Lets the user drop files and folders anywhere on a widget. While they are dragged over it, it is
// covered by what dropping them would do.
class FileDropArea final : public QWidget {
    Q_OBJECT

  public:
    // `title` says what dropping does, `text` what can be dropped. The target owns it.
    FileDropArea(const QString& title, const QString& text, QWidget* target);
    void setTitle(const QString& title);

  Q_SIGNALS:
    // Absolute paths.
    void dropped(const QStringList& paths);

  protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    bool handle(QEvent* event, bool covers);
    void takeDrop(QDropEvent* event);

    QString m_title;
    QString m_text;
};

} // namespace ombrel
