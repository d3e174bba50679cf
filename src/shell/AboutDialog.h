#pragma once

#include <QDialog>

namespace ombrel {

// What the program is, and its version.
class AboutDialog final : public QDialog {
    Q_OBJECT

  public:
    explicit AboutDialog(QWidget* parent);
};

} // namespace ombrel
