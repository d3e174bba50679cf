#pragma once

#include <QObject>

#include <functional>

class QDBusVariant;

namespace ombrel {

// Asks the desktop whether it is light or dark, over the settings portal that desktops share, and
// listens for changes. Without a desktop that answers, nothing is ever told.
class DesktopAppearance final : public QObject {
    Q_OBJECT

  public:
    DesktopAppearance(std::function<void(bool isDark)> told, QObject* parent);

  private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void take(const QVariant& value);

    std::function<void(bool)> m_told;
};

} // namespace ombrel
