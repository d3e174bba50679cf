#include "shell/design/ChoiceTileGroup.h"

#include "shell/design/ChoiceTile.h"
#include "shell/design/Spacing.h"
#include "shell/design/WrapLayout.h"

#include <QButtonGroup>

namespace ombrel {

ChoiceTileGroup::ChoiceTileGroup(int columnWidth, QWidget* parent)
    : QWidget(parent), m_group(new QButtonGroup(this)) {
    auto* rows = new WrapLayout(spacing::small, columnWidth);
    rows->setLastRowFills(true);
    setLayout(rows);
    connect(m_group, &QButtonGroup::idClicked, this, [this](int index) {
        if (index != m_current) {
            m_current = index;
            Q_EMIT chosen(index);
        }
    });
}

ChoiceTile* ChoiceTileGroup::add(const QString& name, const QString& title,
                                 const QString& subtitle) {
    auto* tile = new ChoiceTile(title, subtitle, this);
    tile->setObjectName(objectName() + QLatin1Char('.') + name);
    m_group->addButton(tile, static_cast<int>(m_tiles.size()));
    m_tiles.append(tile);
    layout()->addWidget(tile);
    return tile;
}

void ChoiceTileGroup::setCurrentIndex(int index) {
    m_current = index;
    ChoiceTile* current = m_tiles[index];
    current->setChecked(true);
    // Of a group, Tab reaches the chosen tile only; when that one is disabled, it reaches any.
    if (!current->isEnabled()) {
        for (ChoiceTile* tile : m_tiles) {
            tile->setFocusPolicy(Qt::TabFocus);
        }
    }
}

} // namespace ombrel
