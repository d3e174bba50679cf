#pragma once

#include "shell/design/TextLabel.h"

#include <QWidget>

class QHBoxLayout;

namespace ombrel {

// The title of a section of a page, with a line that explains it, a "?" and controls at its end
// where they are given.
class SectionTitle final : public QWidget {
    Q_OBJECT

  public:
    explicit SectionTitle(const QString& title, const QString& note = {},
                          TextRole role = TextRole::heading, QWidget* parent = nullptr);
    void setTitle(const QString& title);
    void setNote(const QString& note);
    // Puts the button that explains it right beside the title.
    void setHelp(QWidget* button);
    void addControl(QWidget* control);

  private:
    QHBoxLayout* m_row;
    TextLabel* m_title;
    TextLabel* m_note;
};

} // namespace ombrel
