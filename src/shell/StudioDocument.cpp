#include "shell/StudioDocument.h"

#include "platform/MainExecutor.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/Worker.h"

#include <QElapsedTimer>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

// How long after an edit it is kept for recovery; longer where keeping takes long.
constexpr qint64 autosaveDelay = 5'000;
constexpr qint64 autosaveShare = 10;

struct Written {
    ProjectDocument file;
    StudioDocument::Saved saved;
};

Written written(ProjectDocument file, const PersistedProject& snapshot,
                const std::optional<std::filesystem::path>& path, Overwrite overwrite) {
    auto result = path ? file.saveAs(*path, snapshot, overwrite) : file.save(snapshot, overwrite);
    Written end{std::move(file), {}};
    if (result) {
        end.saved.keptOldFile = result->keptOldFile;
    } else {
        end.saved.error = result.error();
    }
    return end;
}

Task<void> writeOnWorker(std::shared_ptr<MainExecutor> executor, std::function<Written()> work,
                         std::function<void(Written)> ended) {
    Written end = co_await onWorker<Written>(executor, work);
    ended(std::move(end));
}

Task<void> keepOnWorker(std::shared_ptr<MainExecutor> executor, std::function<bool()> work,
                        std::function<void()> ended) {
    co_await onWorker<bool>(executor, work);
    ended();
}

} // namespace

StudioDocument::StudioDocument(StudioServices& services, const QString& name, QObject* parent)
    : QObject(parent), m_services(services), m_state(AppState::make(services.platform())),
      m_undoManager(std::make_shared<UndoManager>()), m_untitledName(name),
      m_recovery(services.recoveryFolder()), m_recoveryID(Uuid::random()) {
    m_state->undoManager = m_undoManager;
    m_undoManager->setChanged([this] { stackChanged(); });
    m_autosaveTimer.setSingleShot(true);
    connect(&m_autosaveTimer, &QTimer::timeout, this, &StudioDocument::autosave);
}

StudioDocument::~StudioDocument() {
    m_undoManager->setChanged({});
}

void StudioDocument::takeOpened(OpenedProject opened) {
    m_file = std::move(opened.document);
    m_state->load(opened.snapshot);
    Q_EMIT changed();
}

void StudioDocument::takeRecovered(const RecoveredProject& recovered,
                                   const PersistedProject& snapshot,
                                   std::optional<ProjectDocument> file) {
    m_recoveryID = recovered.id;
    m_hasRecovery = true;
    m_untitledName = toQt(recovered.name);
    if (file) {
        m_file = std::move(*file);
    }
    m_state->load(snapshot);
    markSaved(std::nullopt);
}

QString StudioDocument::name() const {
    return hasFile() ? toQt(path().stem()) : m_untitledName;
}

bool StudioDocument::isEdited() const {
    return m_savedDepth != m_undoManager->count() || m_state->hasPendingCheckpoint();
}

bool StudioDocument::isWorking() const {
    return std::ranges::any_of(*m_state->ragIndexes, [](const RAGIndex& index) {
        return index.isEnriching || index.isDrafting || index.isEvaluating || index.isAsking ||
               index.importProgress || index.embedProgress;
    });
}

void StudioDocument::stackChanged() {
    const std::size_t depth = m_undoManager->count();
    if (depth > m_lastDepth) {
        // A new step lies on those below; what stood above them can't come back.
        for (auto* saved : {&m_savedDepth, &m_savingDepth}) {
            if (*saved && **saved >= depth) {
                saved->reset();
            }
        }
    }
    m_lastDepth = depth;
    if (isEdited()) {
        autosaveLater();
    } else if (m_hasRecovery && !m_isAutosaving) {
        m_recovery.remove(m_recoveryID);
        m_hasRecovery = false;
    }
    Q_EMIT undoChanged();
    Q_EMIT changed();
}

void StudioDocument::markSaved(std::optional<std::size_t> depth) {
    m_savedDepth = depth;
    if (!isEdited()) {
        m_autosaveTimer.stop();
        if (m_hasRecovery && !m_isAutosaving) {
            m_recovery.remove(m_recoveryID);
            m_hasRecovery = false;
        }
    }
    Q_EMIT changed();
}

void StudioDocument::save(Overwrite overwrite, SaveEnd ended) {
    runSave(std::nullopt, overwrite, std::move(ended));
}

void StudioDocument::saveAs(const std::filesystem::path& path, Overwrite overwrite, SaveEnd ended) {
    runSave(path, overwrite, std::move(ended));
}

void StudioDocument::runSave(std::optional<std::filesystem::path> path, Overwrite overwrite,
                             SaveEnd ended) {
    if (m_isSaving) {
        m_waitingSaves.push_back(
            [this, path = std::move(path), overwrite, told = std::move(ended)]() mutable {
                runSave(std::move(path), overwrite, std::move(told));
            });
        return;
    }
    m_state->flushCheckpoint();
    m_isSaving = true;
    m_savingDepth = m_undoManager->count();
    Q_EMIT changed();
    auto snapshot = std::make_shared<const PersistedProject>(m_state->makeSnapshot());
    const auto executor = m_state->platform().executor;
    executor->spawn(writeOnWorker(
        executor,
        [file = m_file, snapshot, path, overwrite] {
            return written(file, *snapshot, path, overwrite);
        },
        [guarded = QPointer<StudioDocument>(this), told = std::move(ended)](Written end) {
            if (!guarded) {
                return;
            }
            guarded->m_isSaving = false;
            guarded->m_file = std::move(end.file);
            const auto depth = std::exchange(guarded->m_savingDepth, std::nullopt);
            if (!end.saved.error) {
                guarded->markSaved(depth);
            } else {
                Q_EMIT guarded->changed();
            }
            if (told) {
                told(end.saved);
            }
            if (guarded && !guarded->m_waitingSaves.empty()) {
                const auto next = std::move(guarded->m_waitingSaves.front());
                guarded->m_waitingSaves.erase(guarded->m_waitingSaves.begin());
                next();
            }
        }));
}

void StudioDocument::autosaveLater() {
    if (!m_autosaveTimer.isActive() && !m_isDiscarded) {
        m_autosaveTimer.start(
            static_cast<int>(std::max(autosaveDelay, autosaveShare * m_autosaveCost)));
    }
}

void StudioDocument::autosave() {
    if (!isEdited() || m_isDiscarded) {
        return;
    }
    if (m_isAutosaving || m_isSaving) {
        return autosaveLater();
    }
    m_isAutosaving = true;
    m_hasRecovery = true;
    auto snapshot = std::make_shared<const PersistedProject>(m_state->makeSnapshot());
    const std::optional<std::filesystem::path> file =
        hasFile() ? std::optional(path()) : std::nullopt;
    const auto executor = m_state->platform().executor;
    QElapsedTimer watch;
    watch.start();
    executor->spawn(keepOnWorker(
        executor,
        [store = m_recovery, id = m_recoveryID, name = fromQt(name()), file, snapshot] {
            return store.keep(id, name, file, *snapshot).has_value();
        },
        [guarded = QPointer<StudioDocument>(this), store = m_recovery, id = m_recoveryID, watch] {
            if (!guarded || guarded->m_isDiscarded) {
                return store.remove(id);
            }
            guarded->m_isAutosaving = false;
            guarded->m_autosaveCost = watch.elapsed();
            if (!guarded->isEdited()) {
                guarded->m_hasRecovery = false;
                store.remove(id);
            }
        }));
}

void StudioDocument::keepForRecoveryNow() {
    if (isEdited() && !m_isDiscarded) {
        const auto kept = m_recovery.keep(m_recoveryID, fromQt(name()),
                                          hasFile() ? std::optional(path()) : std::nullopt,
                                          m_state->makeSnapshot());
        m_hasRecovery = kept.has_value();
    }
}

void StudioDocument::discard() {
    m_isDiscarded = true;
    m_autosaveTimer.stop();
    if (!m_isAutosaving && m_hasRecovery) {
        m_recovery.remove(m_recoveryID);
    }
    m_undoManager->setChanged({});
    m_undoManager->removeAllActions();
    m_state->undoManager.reset();
    // Work finds its index gone and ends.
    m_state->ragIndexes = {RAGIndex(Uuid::random(), defaultIndexName)};
}

} // namespace ombrel
