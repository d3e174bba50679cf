#pragma once

#include "shell/design/Card.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/TextLabel.h"

namespace ombrel {

// One figure of a report: a title, which is shown in upper case, a value and a line below.
class StatTile final : public Card {
    Q_OBJECT

  public:
    explicit StatTile(const QString& title, QWidget* parent = nullptr);
    void setFigure(const QString& value, const QString& subtitle,
                   TextLabel::Ink subtitleInk = TextLabel::Ink::secondary);
    // The same with words in place of a figure, which are set smaller.
    void setWords(const QString& words, const QString& subtitle);
    QString value() const { return m_value->text(); }
    QString subtitle() const { return m_subtitle->text(); }

  private:
    TextLabel* m_title;
    ElidedLabel* m_value;
    ElidedLabel* m_words; // shown in its place
    TextLabel* m_subtitle;
};

} // namespace ombrel
