#pragma once

#include <QDialog>

#include <array>

namespace ombrel {

// A question with three answers, of which the last is the usual one and the first changes nothing.
// `finished` tells `first` (also for Escape), `second` or `third`. The object names of the buttons
// are the dialog's with ".first" and so on.
class SaveQuestion final : public QDialog {
    Q_OBJECT

  public:
    enum Answer { first = QDialog::Rejected, second = 2, third = 3 };

    SaveQuestion(const QString& name, const QString& title, const QString& message,
                 const std::array<QString, 3>& answers, QWidget* parent);
};

} // namespace ombrel
