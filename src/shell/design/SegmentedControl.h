#pragma once

#include <QFrame>

class QAbstractButton;
class QButtonGroup;
class QHBoxLayout;

namespace ombrel {

// A row of which one is chosen: the segments of a switch, or the tabs of a page. The arrow keys
// move the choice.
class SegmentedControl final : public QFrame {
    Q_OBJECT

  public:
    enum class Look { segments, tabs };

    explicit SegmentedControl(Look look = Look::segments, QWidget* parent = nullptr);
    // Adds one at the end; its index. The object name of its button is the control's own, a dot and
    // `name`. Set the control's object name first.
    int add(const QString& name, const QString& text, const QString& iconName = {});
    void setSegmentToolTip(int index, const QString& text);
    int currentIndex() const;
    // Tells nobody.
    void setCurrentIndex(int index);
    QAbstractButton* button(int index) const;
    // Shows text without icons, for want of room.
    void setIconsShown(bool shown);

  Q_SIGNALS:
    // The user chose another.
    void chosen(int index);

  private:
    Look m_look;
    QHBoxLayout* m_row;
    QButtonGroup* m_group;
};

} // namespace ombrel
