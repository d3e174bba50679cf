#pragma once

#include "shell/design/Appearance.h"

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QStringList>

#include <filesystem>

namespace ombrel {

// What the windows remember from one run to the next, in a file of their own. Main thread.
class StudioSettings {
  public:
    // The file need not exist; its folder is made with the first change.
    explicit StudioSettings(const std::filesystem::path& file);

    bool showWelcomeWindowAtLaunch() const; // true unless the user said no
    void setShowWelcomeWindowAtLaunch(bool shows);
    // The raw value of the navigator's kind.
    QString navigatorSelectedNavigator() const;
    void setNavigatorSelectedNavigator(const QString& rawValue);
    double flowDebugAreaHeight() const;
    void setFlowDebugAreaHeight(double height);
    bool flowDebugAreaExpanded() const;
    void setFlowDebugAreaExpanded(bool expanded);

    Appearance appearance() const;
    void setAppearance(Appearance appearance);
    // Of the document window that was moved or sized last, as QWidget saves it.
    QByteArray windowGeometry() const;
    void setWindowGeometry(const QByteArray& geometry);
    // Absolute paths: the projects opened before, most recent first, and those open now.
    QStringList recentProjects() const;
    void setRecentProjects(const QStringList& paths);
    QStringList openDocuments() const;
    void setOpenDocuments(const QStringList& paths);
    // The folder that the last panel ended in.
    QString lastFolder() const;
    void setLastFolder(const QString& path);

  private:
    QSettings m_store;
};

} // namespace ombrel
