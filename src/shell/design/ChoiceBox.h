#pragma once

#include <QComboBox>

class QStyleOptionComboBox;

namespace ombrel {

// A menu of which one entry is chosen. Connect to `activated`, which only the user's choice emits.
// The wheel is left to the page.
class ChoiceBox final : public QComboBox {
    Q_OBJECT
    Q_PROPERTY(QString text READ currentText)

  public:
    explicit ChoiceBox(QWidget* parent = nullptr);
    // Shows these entries; does nothing when they are what it has.
    void showEntries(const QStringList& entries);
    // Shows which is chosen, and no entry for -1: then `otherwise` stands in its place.
    void showChoice(int index, const QString& otherwise = {});

    // Long entries are cut with "…" where they have no room.
    QSize minimumSizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    // What it says, and as much of it as there is room for.
    QString shownText() const { return currentIndex() < 0 ? placeholderText() : currentText(); }
    QString elided(const QStyleOptionComboBox& option) const;

    QStringList m_entries;
};

} // namespace ombrel
