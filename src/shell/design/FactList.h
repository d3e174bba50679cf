#pragma once

#include <QWidget>

#include <map>

class QGridLayout;

namespace ombrel {

class ElidedLabel;

// Rows of a label and a value.
class FactList final : public QWidget {
    Q_OBJECT

  public:
    explicit FactList(QWidget* parent = nullptr);
    // The row of the name, which is made at the end when there is none; the value's object name is
    // "fact." and the name.
    void setFact(const QString& name, const QString& label, const QString& value);
    void removeFact(const QString& name);

  private:
    struct Row {
        ElidedLabel* label;
        ElidedLabel* value;
    };
    QGridLayout* m_grid;
    std::map<QString, Row> m_rows;
};

} // namespace ombrel
