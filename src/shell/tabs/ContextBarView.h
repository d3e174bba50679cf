#pragma once

#include "retrieval/PlaygroundTexts.h"

#include <QWidget>

#include <cstdint>
#include <vector>

namespace ombrel {

// What fills the context window, as the parts of a bar and a line for each below it.
class ContextBarView final : public QWidget {
    Q_OBJECT

  public:
    explicit ContextBarView(QWidget* parent = nullptr);
    // `budget` is what the whole bar stands for, unless the parts are more.
    void show(std::vector<ContextSegment> segments, std::int64_t budget);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::vector<ContextSegment> m_segments;
    std::int64_t m_budget = 0;
};

} // namespace ombrel
