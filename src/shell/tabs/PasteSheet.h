#pragma once

#include <QDialog>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace ombrel {

// Where the user types or pastes a text that becomes a source, or edits one that is one.
class PasteSheet final : public QDialog {
    Q_OBJECT

  public:
    enum class Purpose { add, edit };

    PasteSheet(Purpose purpose, const QString& title, const QString& text, QWidget* over);

  Q_SIGNALS:
    // The user wants it; `text` is what was handed in when nobody typed in it.
    void submitted(const QString& title, const QString& text);

  public Q_SLOTS:
    void reject() override;

  private:
    QString text() const;
    void submit();

    QString m_givenText;
    QLineEdit* m_title;
    QPlainTextEdit* m_area;
    QPushButton* m_go;
};

} // namespace ombrel
