#pragma once

#include "shell/flow/PendingPortChoice.h"

#include <QDialog>
#include <QString>

namespace ombrel {

// Asks by which port a wire leaves. It is named "portChoice", its buttons "portChoice.port." and
// their number from 0, and "portChoice.cancel". It deletes itself when it is closed.
class PortChoiceDialog final : public QDialog {
    Q_OBJECT

  public:
    PortChoiceDialog(const QString& question, const PendingPortChoice& choice, QWidget* parent);

  Q_SIGNALS:
    void chosen(const ombrel::FlowPort& port);
};

} // namespace ombrel
