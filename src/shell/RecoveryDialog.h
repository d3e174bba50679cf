#pragma once

#include "shell/RecoveryStore.h"

#include <QDialog>

#include <vector>

namespace ombrel {

// Offers what a studio that ended unexpectedly left behind. Accepted: all of it is to be
// recovered; `discarded`: none of it is wanted; rejected: later.
class RecoveryDialog final : public QDialog {
    Q_OBJECT

  public:
    static constexpr int discarded = 2;

    RecoveryDialog(const std::vector<RecoveredProject>& found, QWidget* parent);
};

} // namespace ombrel
