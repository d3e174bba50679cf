#include "shell/RecentProjects.h"

#include "shell/QtText.h"

#include <sys/stat.h>

namespace ombrel {

namespace {
constexpr qsizetype mostRecents = 20;
} // namespace

void noteRecentProject(StudioSettings& settings, const std::filesystem::path& path) {
    QStringList paths = settings.recentProjects();
    const QString noted = toQt(path);
    paths.removeAll(noted);
    paths.prepend(noted);
    settings.setRecentProjects(paths.mid(0, mostRecents));
}

std::vector<RecentProject> loadRecentProjects(const StudioSettings& settings) {
    std::vector<RecentProject> recents;
    const QStringList paths = settings.recentProjects();
    for (const QString& name : paths) {
        RecentProject recent{pathFromQt(name), {}};
        struct stat status {};
        if (::stat(recent.url.c_str(), &status) == 0) {
            recent.modified =
                Date{static_cast<double>(status.st_mtim.tv_sec) - referenceDateSince1970};
        } else if (errno == ENOENT || errno == ENOTDIR) {
            continue;
        }
        recents.push_back(std::move(recent));
    }
    return recents;
}

} // namespace ombrel
