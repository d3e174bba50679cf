#pragma once

#include "shell/design/TextLabel.h"

#include <QWidget>

class QHBoxLayout;

namespace ombrel {

// The head of a page: its title, what the page is, and controls at its end.
class PageHeader final : public QWidget {
    Q_OBJECT

  public:
    PageHeader(const QString& title, const QString& subtitle, QWidget* parent = nullptr);
    QString title() const { return m_title->text(); }
    QString subtitle() const { return m_subtitle->text(); }
    void setTitle(const QString& title);
    void setSubtitle(const QString& subtitle);
    void addControl(QWidget* control);

  private:
    QHBoxLayout* m_controls;
    TextLabel* m_title;
    TextLabel* m_subtitle;
};

} // namespace ombrel
