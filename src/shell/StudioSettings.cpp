#include "shell/StudioSettings.h"

#include "shell/QtText.h"

#include <QDir>

namespace ombrel {

namespace {
const QString welcomeKey = QStringLiteral("showWelcomeWindowAtLaunch");
const QString navigatorKey = QStringLiteral("navigatorSelectedNavigator");
const QString debugHeightKey = QStringLiteral("flowDebugAreaHeight");
const QString debugExpandedKey = QStringLiteral("flowDebugAreaExpanded");
const QString appearanceKey = QStringLiteral("appearance");
const QString geometryKey = QStringLiteral("windowGeometry");
const QString recentKey = QStringLiteral("recentProjects");
const QString openKey = QStringLiteral("openDocuments");
const QString folderKey = QStringLiteral("lastFolder");
} // namespace

StudioSettings::StudioSettings(const std::filesystem::path& file)
    : m_store(toQt(file), QSettings::IniFormat) {}

bool StudioSettings::showWelcomeWindowAtLaunch() const {
    return m_store.value(welcomeKey, true).toBool();
}

void StudioSettings::setShowWelcomeWindowAtLaunch(bool shows) {
    m_store.setValue(welcomeKey, shows);
}

QString StudioSettings::navigatorSelectedNavigator() const {
    return m_store.value(navigatorKey).toString();
}

void StudioSettings::setNavigatorSelectedNavigator(const QString& rawValue) {
    m_store.setValue(navigatorKey, rawValue);
}

double StudioSettings::flowDebugAreaHeight() const {
    return m_store.value(debugHeightKey, 0.0).toDouble();
}

void StudioSettings::setFlowDebugAreaHeight(double height) {
    m_store.setValue(debugHeightKey, height);
}

bool StudioSettings::flowDebugAreaExpanded() const {
    return m_store.value(debugExpandedKey, false).toBool();
}

void StudioSettings::setFlowDebugAreaExpanded(bool expanded) {
    m_store.setValue(debugExpandedKey, expanded);
}

Appearance StudioSettings::appearance() const {
    const std::string raw = fromQt(m_store.value(appearanceKey).toString());
    for (const auto& [value, name] : rawValues(Appearance{})) {
        if (name == raw) {
            return value;
        }
    }
    return Appearance::system;
}

void StudioSettings::setAppearance(Appearance appearance) {
    for (const auto& [value, name] : rawValues(Appearance{})) {
        if (value == appearance) {
            m_store.setValue(appearanceKey, toQt(name));
        }
    }
}

QByteArray StudioSettings::windowGeometry() const {
    return m_store.value(geometryKey).toByteArray();
}

void StudioSettings::setWindowGeometry(const QByteArray& geometry) {
    m_store.setValue(geometryKey, geometry);
}

QStringList StudioSettings::recentProjects() const {
    return m_store.value(recentKey).toStringList();
}

void StudioSettings::setRecentProjects(const QStringList& paths) {
    m_store.setValue(recentKey, paths);
    m_store.sync();
}

QStringList StudioSettings::openDocuments() const {
    return m_store.value(openKey).toStringList();
}

void StudioSettings::setOpenDocuments(const QStringList& paths) {
    m_store.setValue(openKey, paths);
    m_store.sync(); // what was open is to be known after a crash too
}

QString StudioSettings::lastFolder() const {
    const QString folder = m_store.value(folderKey).toString();
    return !folder.isEmpty() && QDir(folder).exists() ? folder : QDir::homePath();
}

void StudioSettings::setLastFolder(const QString& path) {
    m_store.setValue(folderKey, path);
}

} // namespace ombrel
