#pragma once

#include <QAbstractItemDelegate>
#include <QCache>
#include <QFontMetrics>
#include <QString>

namespace ombrel {

class ChunkListModel;
struct CardLayout;

// Draws the rows of a ChunkListModel. What it laid out last is kept until `forget`.
class ChunkCardDelegate final : public QAbstractItemDelegate {
    Q_OBJECT

  public:
    // Of a longer text the card shows the beginning.
    static constexpr int mostCharacters = 12'000;

    ChunkCardDelegate(const ChunkListModel& model, QObject* parent);
    ~ChunkCardDelegate() override;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    // The height for the width of the option's rectangle; lays the row out.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    // About the same without reading the text.
    int estimatedHeight(int row, int width) const;

    // Words that are marked in the texts, in any case.
    void setMarkedWords(const QString& words) { m_markedWords = words; }
    // Texts, the type or the width changed.
    void forget() const { m_layouts.clear(); }
    // How many rows were laid out until now.
    int layoutCount() const { return m_layoutCount; }

  private:
    const CardLayout& layoutOf(int row, int width) const;
    void paintHeader(QPainter* painter, const QStyleOptionViewItem& option, int row) const;
    void paintCard(QPainter* painter, const QStyleOptionViewItem& option, int row) const;

    int headerHeight() const;
    int noChunksHeight() const;

    const ChunkListModel& m_model;
    QFontMetrics m_strong;
    QFontMetrics m_body;
    QFontMetrics m_caption;
    QString m_markedWords;
    mutable QCache<int, CardLayout> m_layouts; // by row
    mutable int m_layoutCount = 0;
};

} // namespace ombrel
