#pragma once

#include <QString>
#include <QWidget>

#include <utility>
#include <vector>

namespace ombrel {

// The connections that leave a node: a row of port and target each, named "connection." and its
// number from 0.
class ConnectionList final : public QWidget {
    Q_OBJECT

  public:
    using Rows = std::vector<std::pair<QString, QString>>; // port (may be empty) and target

    explicit ConnectionList(QWidget* parent = nullptr);
    void showRows(const Rows& rows);

  private:
    Rows m_shown;
};

} // namespace ombrel
