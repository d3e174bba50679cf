#pragma once

#include "core/AppState.h"
#include "core/ProjectDocument.h"
#include "core/UndoManager.h"
#include "platform/Uuid.h"
#include "shell/RecoveryStore.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace ombrel {

class StudioServices;

// A project that is open in a window: its workspace, its undo stack, its file, and whether the two
// differ. Edited projects are kept in the recovery folder until they are saved or closed. Files
// are written on another thread. Main thread.
class StudioDocument final : public QObject {
    Q_OBJECT

  public:
    // A new project without a file, called `name` until it has one.
    StudioDocument(StudioServices& services, const QString& name, QObject* parent = nullptr);
    ~StudioDocument() override;

    const std::shared_ptr<AppState>& state() const { return m_state; }
    const std::shared_ptr<UndoManager>& undoManager() const { return m_undoManager; }

    // Becomes the opened project.
    void takeOpened(OpenedProject opened);
    // Becomes the project that a studio left behind when it ended; `file` is the one it belongs
    // to, as it stands on disk, or nothing. It is edited until it is saved.
    void takeRecovered(const RecoveredProject& recovered, const PersistedProject& snapshot,
                       std::optional<ProjectDocument> file);

    bool hasFile() const { return m_file.hasFile(); }
    const std::filesystem::path& path() const { return m_file.path(); }
    // The file's name without its extension; of a project without a file, what it was called.
    QString name() const;
    // Whether closing now would lose something.
    bool isEdited() const;
    bool isSaving() const { return m_isSaving; }
    // Whether a step of the engine is at work on the project.
    bool isWorking() const;

    struct Saved {
        std::optional<SaveError> error;
        std::optional<std::filesystem::path> keptOldFile;
    };
    using SaveEnd = std::function<void(const Saved&)>;
    // Saves what stands now; the end is told later. While a save runs, the next waits for it.
    void save(Overwrite overwrite, SaveEnd ended);
    void saveAs(const std::filesystem::path& path, Overwrite overwrite, SaveEnd ended);

    // Puts what isn't saved into the recovery folder, and waits for it: the studio has to end.
    void keepForRecoveryNow();
    // The window closes and the user wants nothing kept: what runs loses its place, and nothing
    // is left in the recovery folder.
    void discard();

  Q_SIGNALS:
    void changed(); // name, file, edited or saving
    void undoChanged();

  private:
    void stackChanged();
    void markSaved(std::optional<std::size_t> depth);
    void autosaveLater();
    void autosave();
    void runSave(std::optional<std::filesystem::path> path, Overwrite overwrite, SaveEnd ended);

    StudioServices& m_services;
    std::shared_ptr<AppState> m_state;
    std::shared_ptr<UndoManager> m_undoManager;
    ProjectDocument m_file;
    QString m_untitledName;
    bool m_isSaving = false;
    std::vector<std::function<void()>> m_waitingSaves;

    // The depths of the undo stack at which the project is what the file holds, and what the file
    // that is being written will hold. None: at no depth.
    std::optional<std::size_t> m_savedDepth = 0;
    std::optional<std::size_t> m_savingDepth;
    std::size_t m_lastDepth = 0;

    RecoveryStore m_recovery;
    Uuid m_recoveryID;
    bool m_isAutosaving = false;
    bool m_hasRecovery = false; // or is about to
    bool m_isDiscarded = false;
    qint64 m_autosaveCost = 0; // ms of the last one
    QTimer m_autosaveTimer;
};

} // namespace ombrel
