#pragma once

#include "shell/design/TextLabel.h"

#include <QWidget>

class QVBoxLayout;

namespace ombrel {

class IconView;

// What stands where there is nothing yet: an icon, what is missing, and what would bring it.
class EmptyState final : public QWidget {
    Q_OBJECT

  public:
    EmptyState(const QString& iconName, const QString& title, const QString& text = {},
               QWidget* parent = nullptr);
    QString title() const { return m_title->text(); }
    QString text() const { return m_text->text(); }
    void setIcon(const QString& iconName);
    void setTexts(const QString& title, const QString& text);
    void addControl(QWidget* control);

  private:
    QVBoxLayout* m_column;
    IconView* m_icon;
    TextLabel* m_title;
    TextLabel* m_text;
};

} // namespace ombrel
