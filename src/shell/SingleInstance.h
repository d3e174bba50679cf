#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

#include <filesystem>
#include <functional>
#include <vector>

namespace ombrel {

// Makes sure that one studio runs for a user and settings folder. The first listens on a socket
// that only this user can use; a second hands over the files that it was asked to open.
class SingleInstance final : public QObject {
    Q_OBJECT

  public:
    using Reopen = std::function<void(const std::vector<std::filesystem::path>& files)>;

    // `scope` tells apart studios that have nothing to do with each other.
    explicit SingleInstance(const std::filesystem::path& scope);

    // True when another studio runs, which was told of the files.
    bool handOver(const std::vector<std::filesystem::path>& files) const;
    // Becomes the one that others hand over to.
    bool listen(Reopen reopen);

  private:
    QString m_name;
    QLocalServer m_server;
    Reopen m_reopen;
};

} // namespace ombrel
