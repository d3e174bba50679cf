#pragma once

#include "shell/design/Tone.h"

#include <QIcon>
#include <QWidget>

namespace ombrel {

// An icon that stands by itself.
class IconView final : public QWidget {
    Q_OBJECT

  public:
    IconView(const QString& name, Tone tone, int side, QWidget* parent = nullptr);
    void setIcon(const QString& name, Tone tone);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QIcon m_icon;
};

} // namespace ombrel
