#pragma once

#include "retrieval/PlaygroundTexts.h"

#include <QWidget>

#include <vector>

namespace ombrel {

// The stages of an ask with bars as long as they took.
class StageTimesView final : public QWidget {
    Q_OBJECT

  public:
    explicit StageTimesView(QWidget* parent = nullptr);
    void show(std::vector<TimingStage> stages);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::vector<TimingStage> m_stages;
};

} // namespace ombrel
