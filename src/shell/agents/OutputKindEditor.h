#pragma once

#include "core/AgentOutputKind.h"
#include "platform/MainExecutor.h"

#include <QWidget>

#include <memory>

namespace ombrel {

class OutputSummaryView;

// An output among other things that are edited: what it holds, and the button that opens its
// sheet. Below the object name NAME: the OutputSummaryView NAME.summary and NAME.edit.
class OutputKindEditor final : public QWidget {
    Q_OBJECT

  public:
    OutputKindEditor(const QString& name, std::shared_ptr<MainExecutor> executor,
                     QWidget* parent = nullptr);
    void showOutput(const AgentOutputKind& output);

  Q_SIGNALS:
    // The user saved another output.
    void edited(const AgentOutputKind& output);

  private:
    void openSheet();

    std::shared_ptr<MainExecutor> m_executor;
    AgentOutputKind m_output;
    OutputSummaryView* m_summary;
};

} // namespace ombrel
