#pragma once

#include <QList>
#include <QWidget>

class QButtonGroup;

namespace ombrel {

class ChoiceTile;

// Tiles of which one is chosen, in rows that wrap. The arrow keys move the choice.
class ChoiceTileGroup final : public QWidget {
    Q_OBJECT

  public:
    // `columnWidth` is the least that a tile is wide.
    explicit ChoiceTileGroup(int columnWidth, QWidget* parent = nullptr);
    // Adds one at the end. The object name of the tile is the group's own, a dot and `name`. Set
    // the group's object name first.
    ChoiceTile* add(const QString& name, const QString& title, const QString& subtitle);
    ChoiceTile* tile(int index) const { return m_tiles[index]; }
    // Shows which is chosen; tells nobody. One that is disabled can be the chosen one.
    void setCurrentIndex(int index);

  Q_SIGNALS:
    // The user chose another.
    void chosen(int index);

  private:
    QButtonGroup* m_group;
    QList<ChoiceTile*> m_tiles;
    int m_current = -1;
};

} // namespace ombrel
