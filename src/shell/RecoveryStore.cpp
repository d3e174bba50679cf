#include "shell/RecoveryStore.h"

#include "core/ProjectDocument.h"
#include "shell/QtText.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>
#include <system_error>
#include <utility>

namespace ombrel {

namespace {
const QString nameKey = QStringLiteral("name");
const QString fileKey = QStringLiteral("file");
} // namespace

RecoveryStore::RecoveryStore(std::filesystem::path folder) : m_folder(std::move(folder)) {}

std::filesystem::path RecoveryStore::contentsOf(Uuid id) const {
    return m_folder / (id.text() + std::string(projectFileExtension));
}

std::filesystem::path RecoveryStore::noteOf(Uuid id) const {
    return m_folder / (id.text() + ".json");
}

Result<void> RecoveryStore::keep(Uuid id, const std::string& name,
                                 const std::optional<std::filesystem::path>& file,
                                 const PersistedProject& snapshot) const {
    std::error_code error;
    std::filesystem::create_directories(m_folder, error);
    std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all, error);
    QJsonObject note;
    note.insert(nameKey, toQt(name));
    if (file) {
        note.insert(fileKey, toQt(*file));
    }
    QSaveFile noteFile(toQt(noteOf(id)));
    if (!noteFile.open(QIODevice::WriteOnly) || noteFile.write(QJsonDocument(note).toJson()) < 0 ||
        !noteFile.commit()) {
        return tl::unexpected(Error{fromQt(noteFile.errorString())});
    }
    const auto kept = ProjectDocument::create(contentsOf(id), snapshot, Overwrite::anything);
    if (!kept) {
        return tl::unexpected(Error{kept.error().message});
    }
    return {};
}

void RecoveryStore::remove(Uuid id) const {
    std::error_code ignored;
    std::filesystem::remove(contentsOf(id), ignored);
    std::filesystem::remove(noteOf(id), ignored);
}

std::vector<RecoveredProject> RecoveryStore::list() const {
    std::vector<std::pair<std::filesystem::file_time_type, RecoveredProject>> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder, error)) {
        const auto& path = entry.path();
        const auto id = Uuid::parse(path.stem().string());
        if (!id || path.extension() != projectFileExtension) {
            continue;
        }
        QFile noteFile(toQt(noteOf(*id)));
        if (!noteFile.open(QIODevice::ReadOnly)) {
            continue;
        }
        const QJsonObject note = QJsonDocument::fromJson(noteFile.readAll()).object();
        RecoveredProject project{*id, fromQt(note.value(nameKey).toString()), {}, path};
        if (const QString file = note.value(fileKey).toString(); !file.isEmpty()) {
            project.file = pathFromQt(file);
        }
        std::error_code ignored;
        found.emplace_back(entry.last_write_time(ignored), std::move(project));
    }
    std::ranges::sort(found, [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<RecoveredProject> projects;
    for (auto& [time, project] : found) {
        projects.push_back(std::move(project));
    }
    return projects;
}

} // namespace ombrel
