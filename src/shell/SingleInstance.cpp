#include "shell/SingleInstance.h"

#include "shell/QtText.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QLocalSocket>
#include <QStandardPaths>

#include <utility>

namespace ombrel {

namespace {

constexpr int patience = 3000; // ms
constexpr qsizetype mostBytes = 1 << 20;
const QByteArray greeting = "ombrel-studio 1\n";

QString socketName(const std::filesystem::path& scope) {
    const QByteArray hash = QCryptographicHash::hash(QByteArray::fromStdString(scope.native()),
                                                     QCryptographicHash::Sha256)
                                .toHex()
                                .left(16);
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty()) {
        folder = QStandardPaths::writableLocation(QStandardPaths::TempLocation);
    }
    return folder + QStringLiteral("/ombrel-studio-") + QString::fromLatin1(hash);
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& scope) : m_name(socketName(scope)) {
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
}

bool SingleInstance::handOver(const std::vector<std::filesystem::path>& files) const {
    QLocalSocket socket;
    socket.connectToServer(m_name);
    if (!socket.waitForConnected(patience)) {
        return false;
    }
    QByteArray message = greeting;
    for (const auto& file : files) {
        message += QByteArray::fromStdString(std::filesystem::absolute(file).native()) + '\0';
    }
    socket.write(message);
    socket.flush();
    // The other side ends the conversation when it has understood.
    socket.waitForBytesWritten(patience);
    socket.waitForReadyRead(patience);
    return socket.readAll() == "ok";
}

bool SingleInstance::listen(Reopen reopen) {
    m_reopen = std::move(reopen);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                // A message is short and comes in one piece.
                const QByteArray message = socket->read(mostBytes);
                if (!message.startsWith(greeting)) {
                    socket->abort();
                    return;
                }
                std::vector<std::filesystem::path> files;
                for (const QByteArray& file : message.mid(greeting.size()).split('\0')) {
                    if (!file.isEmpty()) {
                        files.emplace_back(file.toStdString());
                    }
                }
                socket->write("ok");
                socket->flush();
                m_reopen(files);
            });
        }
    });
    if (m_server.listen(m_name)) {
        return true;
    }
    QLocalServer::removeServer(m_name); // left behind by one that was killed
    return m_server.listen(m_name);
}

} // namespace ombrel
