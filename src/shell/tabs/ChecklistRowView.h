#pragma once

#include "export/ExportReadiness.h"

#include <QWidget>

namespace ombrel {

class IconView;
class TextLabel;

// A row of the checklist: how it stands as an icon, what it is about, and the detail.
class ChecklistRowView final : public QWidget {
    Q_OBJECT

  public:
    explicit ChecklistRowView(QWidget* parent = nullptr);
    void setRow(const ChecklistRow& row);

  private:
    ChecklistRow m_row;
    IconView* m_icon;
    TextLabel* m_title;
    TextLabel* m_detail;
};

} // namespace ombrel
