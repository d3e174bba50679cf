#pragma once

#include "core/Confirmation.h"

#include <QWidget>

#include <functional>

// Questions and messages over a window. None of them waits: the window goes on, and what was
// chosen comes as a call, unless the window goes first.
namespace ombrel {

// Asks before something is taken away; Escape is the cancel button. The object name of the dialog
// is "confirmation", of its buttons "confirmation.confirm" and "confirmation.cancel".
void confirm(QWidget* over, const Confirmation& question, std::function<void()> confirmed);

// Tells of a problem; "OK" ends it. The object name of the dialog is "alert", of its button
// "alert.ok".
void alert(QWidget* over, const QString& title, const QString& message,
           std::function<void()> closed = {});

} // namespace ombrel
