#pragma once

#include "shell/design/TextRole.h"
#include "shell/design/Tone.h"

#include <QLabel>

namespace ombrel {

// A text in one of the roles of the type scale, as plain text. Wraps when it is told to.
class TextLabel final : public QLabel {
    Q_OBJECT

  public:
    // Which colour of the theme the text has.
    enum class Ink { text, secondary, faint, accent, success, warning, danger };

    explicit TextLabel(const QString& text = {}, TextRole role = TextRole::body,
                       Ink ink = Ink::text, QWidget* parent = nullptr);
    // Lets the text wrap, and take the width that there is.
    TextLabel* wrapping();
    // Lets the user select and copy the text.
    TextLabel* selectable();
    void setInk(Ink ink);
    void setTone(Tone tone);

    // A word without end makes a wrapping text no wider than it has to be.
    QSize minimumSizeHint() const override;

  private:
    void applyTheme();

    TextRole m_role;
    Ink m_ink;
};

} // namespace ombrel
