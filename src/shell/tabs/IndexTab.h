#pragma once

#include "shell/TabPage.h"

#include <QPointer>

#include <memory>
#include <vector>

class QStackedWidget;
class QToolButton;

namespace ombrel {

class Banner;
class ChunkListModel;
class ChunkListView;
class EmptyState;
class StatTile;
class TextField;
class TextLabel;

// What the build produced: figures, and every chunk of every source.
class IndexTab final : public TabPage {
    Q_OBJECT

  public:
    IndexTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Search;

    void addReport(QVBoxLayout* column);
    void addChunks(QVBoxLayout* column);
    // Looks for the words in all chunks on another thread; goes to the first match if told to.
    void look(bool goes);
    static Task<void> lookFor(QPointer<IndexTab> tab, std::shared_ptr<MainExecutor> executor,
                              std::shared_ptr<const Search> search);
    void showMatches(std::vector<int> rows, bool goes);
    // To the next match, or the one before; round at the ends.
    void goToMatch(int step);
    void showPosition();
    void openChunk(int row);

    EmptyState* m_empty;
    QWidget* m_report;
    Banner* m_stale;
    std::vector<StatTile*> m_tiles;
    TextField* m_words;
    TextLabel* m_position;
    QToolButton* m_previous;
    QToolButton* m_next;
    ChunkListModel* m_model;
    ChunkListView* m_list;

    std::shared_ptr<const Search> m_search; // the last one
    std::vector<int> m_matches;             // rows, ascending
    int m_match = -1;                       // which of them is shown
    bool m_chunksChanged = false;
};

} // namespace ombrel
