#include "shell/tabs/SourceImport.h"

#include "knowledge/Ingestion.h"
#include "platform/MainExecutor.h"
#include "shell/Worker.h"

#include <QPointer>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

namespace ombrel {

namespace {

namespace fs = std::filesystem;

} // namespace

// Shared with the thread that searches.
struct SourceImport::Search {
    Request request;
    std::atomic<std::size_t> found{0};
    std::atomic<bool> isStopped{false};
};

SourceImport::SourceImport(std::shared_ptr<AppState> state, QObject* parent)
    : QObject(parent), m_state(std::move(state)) {
    setObjectName(QStringLiteral("sources.import"));
    m_later.setSingleShot(true);
    m_later.setInterval(0);
    connect(&m_later, &QTimer::timeout, this, &SourceImport::goOn);
    m_pulse.setInterval(100);
    connect(&m_pulse, &QTimer::timeout, this, &SourceImport::changed);
    m_indexes = m_state->ragIndexes.observe([this] {
        if (!m_found.empty()) {
            m_later.start();
        }
    });
}

SourceImport::~SourceImport() {
    if (m_search) {
        m_search->isStopped = true;
    }
}

void SourceImport::add(std::vector<fs::path> urls) {
    m_requests.push_back({m_state->currentIndex().id, std::move(urls)});
    goOn();
}

void SourceImport::stopSearch() {
    m_requests.clear();
    if (m_search) {
        m_search->isStopped = true;
    }
    Q_EMIT changed();
}

fs::path SourceImport::searchedPlace() const {
    return m_search ? m_search->request.urls.front() : fs::path();
}

std::size_t SourceImport::foundCount() const {
    return m_search ? m_search->found.load() : 0;
}

std::size_t SourceImport::waitingCount() const {
    std::size_t count = 0;
    for (const Found& found : m_found) {
        count += found.files.size();
    }
    return count;
}

void SourceImport::goOn() {
    if (!m_search && !m_requests.empty()) {
        startSearch();
    }
    while (!m_found.empty()) {
        const RAGIndex* index = m_state->ragIndex(m_found.front().indexID);
        if (index && index->importProgress) {
            break;
        }
        Found next = std::move(m_found.front());
        m_found.pop_front();
        m_state->platform().executor->spawn(
            importDiscovered(m_state, next.indexID, std::move(next.files)));
    }
    Q_EMIT changed();
}

void SourceImport::startSearch() {
    m_search = std::make_shared<Search>();
    m_search->request = std::move(m_requests.front());
    m_requests.pop_front();
    m_pulse.start();
    const auto& executor = m_state->platform().executor;
    executor->spawn(searchOnWorker(executor, m_search, this));
}

Task<void> SourceImport::searchOnWorker(std::shared_ptr<MainExecutor> executor,
                                        std::shared_ptr<Search> search, SourceImport* asker) {
    using Files = std::vector<fs::path>;
    const QPointer<SourceImport> guarded(asker);
    const std::function<std::shared_ptr<Files>()> work = [search] {
        auto files = std::make_shared<Files>();
        for (const fs::path& url : search->request.urls) {
            const std::size_t before = files->size();
            std::vector<fs::path> inside = discoverFiles(url, [&](std::size_t found) {
                search->found = before + found;
                return !search->isStopped;
            });
            std::ranges::move(inside, std::back_inserter(*files));
            search->found = files->size();
        }
        return files;
    };
    const auto files = co_await onWorker<std::shared_ptr<Files>>(executor, work);
    if (guarded) {
        guarded->searchEnded(search, std::move(*files));
    }
}

void SourceImport::searchEnded(const std::shared_ptr<Search>& search, std::vector<fs::path> files) {
    m_search.reset();
    m_pulse.stop();
    if (!search->isStopped) {
        if (files.empty()) {
            Q_EMIT foundNothing(search->request.urls);
        }
        m_found.push_back({search->request.indexID, std::move(files)});
    }
    goOn();
}

} // namespace ombrel
