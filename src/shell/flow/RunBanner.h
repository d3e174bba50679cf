#pragma once

#include "core/FlowRunHighlight.h"

#include <QFrame>

namespace ombrel {

class IconView;
class TextLabel;

// How far the run is whose path the canvas shows, and the way to clear it.
class RunBanner final : public QFrame {
    Q_OBJECT

  public:
    explicit RunBanner(QWidget* parent = nullptr);
    void showHighlight(const FlowRunHighlight& highlight);

  Q_SIGNALS:
    void clearAsked();

  private:
    IconView* m_icon;
    TextLabel* m_text;
};

} // namespace ombrel
