#pragma once

#include "core/AppState.h"

#include <QObject>

#include <memory>

class QAbstractButton;
class QEvent;
class QWidget;

namespace ombrel {

class StudioServices;

// Lets the user choose a folder, and exports all flows of the project as a package to it. A dialog
// over the window follows the export and tells how it ended. While an export of this window goes
// on, its dialog is shown instead. Returns at once.
void exportFlowsPackage(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

// Makes a button the one that exports: it is disabled as long as an export of its window goes on.
class FlowExportAction final : public QObject {
    Q_OBJECT

  public:
    // Belongs to the button.
    FlowExportAction(std::shared_ptr<AppState> state, StudioServices& services,
                     QAbstractButton* button);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void follow();

    QAbstractButton* m_button;
};

} // namespace ombrel
