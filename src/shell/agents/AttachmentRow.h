#pragma once

#include "core/Agent.h"
#include "core/RAGIndex.h"

#include <QWidget>

namespace ombrel {

class ElidedCheckBox;
class NumberBox;
class TextField;
class TextLabel;

// Whether an agent is given knowledge of a RAG index, and how much. Its controls have the object
// names NAME.attached, NAME.topK and NAME.threshold.
class AttachmentRow final : public QWidget {
    Q_OBJECT

  public:
    explicit AttachmentRow(const QString& name, QWidget* parent = nullptr);
    // `attachment`: null when it is not attached.
    void showIndex(const RAGIndex& index, const AgentRAGAttachment* attachment);

  Q_SIGNALS:
    void attachedChanged(bool attached);
    void topKChanged(int topK);
    void thresholdChanged(double threshold);

  private:
    ElidedCheckBox* m_attached;
    TextLabel* m_size;
    QWidget* m_settings;
    NumberBox* m_topK;
    TextField* m_threshold;
    QString m_thresholdText; // of the stored one
};

} // namespace ombrel
