#include "shell/design/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

namespace ombrel {

namespace {
const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");
} // namespace

DesktopAppearance::DesktopAppearance(std::function<void(bool)> told, QObject* parent)
    : QObject(parent), m_told(std::move(told)) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    question << group << key;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question, 2000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (!reply.isError()) {
            take(reply.value().variant());
        }
        watcher->deleteLater();
    });
}

void DesktopAppearance::settingChanged(const QString& changedGroup, const QString& changedKey,
                                       const QDBusVariant& value) {
    if (changedGroup == group && changedKey == key) {
        take(value.variant());
    }
}

void DesktopAppearance::take(const QVariant& value) {
    QVariant inner = value; // portals disagree on how many variants it is wrapped in
    while (inner.canConvert<QDBusVariant>()) {
        inner = inner.value<QDBusVariant>().variant();
    }
    constexpr uint prefersDark = 1;
    constexpr uint prefersLight = 2;
    const uint preference = inner.toUInt();
    if (preference == prefersDark || preference == prefersLight) {
        m_told(preference == prefersDark);
    }
}

} // namespace ombrel
