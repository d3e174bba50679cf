#pragma once

#include "flows/RunHighlight.h"

#include <QFrame>

namespace ombrel {

// What a node saw during a run: its step, and a row for each thing. It is named "runDetail", and
// deletes itself when it is closed: by Escape, or by a click elsewhere.
class RunDetailPopover final : public QFrame {
    Q_OBJECT

  public:
    RunDetailPopover(const RunBubble& bubble, const QString& nodeTitle, QWidget* parent);
    // Opens beside what lies at `anchor` (in global coordinates).
    void openBeside(const QRect& anchor);
};

} // namespace ombrel
