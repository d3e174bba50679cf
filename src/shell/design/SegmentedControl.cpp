#include "shell/design/SegmentedControl.h"

#include "shell/design/Segment.h"
#include "shell/design/Spacing.h"

#include <QButtonGroup>
#include <QHBoxLayout>

namespace ombrel {

SegmentedControl::SegmentedControl(Look look, QWidget* parent)
    : QFrame(parent), m_look(look), m_row(new QHBoxLayout(this)), m_group(new QButtonGroup(this)) {
    const int margin = look == Look::segments ? spacing::hair : 0;
    m_row->setContentsMargins(margin, margin, margin, margin);
    m_row->setSpacing(look == Look::segments ? 0 : spacing::hair);
    if (look == Look::segments) {
        setProperty("segmented", "true");
    }
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    // Tab reaches the chosen one; the arrow keys go on from there.
    connect(m_group, &QButtonGroup::idToggled, this, [this](int index, bool isChosen) {
        button(index)->setFocusPolicy(isChosen ? Qt::TabFocus : Qt::NoFocus);
    });
    connect(m_group, &QButtonGroup::idClicked, this, &SegmentedControl::chosen);
}

int SegmentedControl::add(const QString& name, const QString& text, const QString& iconName) {
    const int index = static_cast<int>(m_group->buttons().size());
    auto* button = new Segment(text, iconName, m_look == Look::tabs, this);
    button->setObjectName(objectName() + QLatin1Char('.') + name);
    m_group->addButton(button, index);
    m_row->addWidget(button);
    if (index == 0) {
        button->setChecked(true);
    }
    return index;
}

void SegmentedControl::setSegmentToolTip(int index, const QString& text) {
    button(index)->setToolTip(text);
}

int SegmentedControl::currentIndex() const {
    return m_group->checkedId();
}

void SegmentedControl::setCurrentIndex(int index) {
    if (auto* segment = m_group->button(index)) {
        segment->setChecked(true);
    }
}

QAbstractButton* SegmentedControl::button(int index) const {
    return m_group->button(index);
}

void SegmentedControl::setIconsShown(bool shown) {
    const auto buttons = m_group->buttons();
    for (auto* segment : buttons) {
        static_cast<Segment*>(segment)->setIconShown(shown);
    }
}

} // namespace ombrel
