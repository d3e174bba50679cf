#pragma once

#include "core/AppState.h"
#include "platform/Task.h"

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <deque>
#include <filesystem>
#include <memory>
#include <vector>

namespace ombrel {

// Takes the files and folders that the user chose or dropped: finds the documents in them on
// another thread, then lets the engine read them into the index that was the current one. What
// comes while an index is being read waits for its turn. Main thread.
class SourceImport final : public QObject {
    Q_OBJECT

  public:
    explicit SourceImport(std::shared_ptr<AppState> state, QObject* parent = nullptr);
    // Ends the search, with what waits.
    ~SourceImport() override;

    void add(std::vector<std::filesystem::path> urls);
    // Ends the search, and drops what waits for one.
    void stopSearch();

    bool isSearching() const { return m_search != nullptr; }
    // Where it searches now, and how many documents it has found there so far.
    std::filesystem::path searchedPlace() const;
    std::size_t foundCount() const;
    // How many files were found and wait for the index to be read.
    std::size_t waitingCount() const;

  Q_SIGNALS:
    void changed();
    // There was no document at the places.
    void foundNothing(const std::vector<std::filesystem::path>& urls);

  private:
    struct Request {
        Uuid indexID;
        std::vector<std::filesystem::path> urls;
    };
    struct Search;
    struct Found {
        Uuid indexID;
        std::vector<std::filesystem::path> files;
    };

    void goOn();
    void startSearch();
    void searchEnded(const std::shared_ptr<Search>& search,
                     std::vector<std::filesystem::path> files);
    static Task<void> searchOnWorker(std::shared_ptr<MainExecutor> executor,
                                     std::shared_ptr<Search> search, SourceImport* asker);

    std::shared_ptr<AppState> m_state;
    Subscription m_indexes;
    std::deque<Request> m_requests;
    std::shared_ptr<Search> m_search;
    std::deque<Found> m_found;
    QTimer m_later; // goes on outside of the change that it follows
    QTimer m_pulse; // tells how far the search is
};

} // namespace ombrel
