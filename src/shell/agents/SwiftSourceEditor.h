#pragma once

#include "generable/GenerableImportWarning.h"
#include "shell/agents/SwiftColoring.h"

#include <QHash>
#include <QPlainTextEdit>

#include <memory>
#include <vector>

namespace ombrel {

// Where Swift source is pasted and typed: in colours, with line numbers, and with the lines marked
// that warnings are about. Only what is seen is coloured, so that large sources cost no more.
class SwiftSourceEditor final : public QPlainTextEdit {
    Q_OBJECT

  public:
    explicit SwiftSourceEditor(QWidget* parent = nullptr);

    // As it is in the editor, lines ended by newlines.
    QString source() const;
    // Puts another source in, which undo takes back.
    void replaceSource(const QString& text);
    // The colours of a source. Lines that were edited since are coloured by themselves.
    void setColoring(std::shared_ptr<const SwiftColoring> coloring);
    void setWarnings(const std::vector<GenerableImportWarning>& warnings);
    // Goes to the line, counted from 1.
    void showLine(int line);

    int numbersWidth() const;
    void paintNumbers(QPaintEvent* event);
    QString warningAt(int y) const;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool canInsertFromMimeData(const QMimeData* mime) const override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;

  private:
    // Calls with each block that is seen, and with where it is.
    template <class Visit>
    void forVisibleBlocks(Visit visit) const;
    void placeNumbers();
    void colorVisible();
    void colorBlock(const QTextBlock& block);
    // A new line, as far in as the one that it follows, and further after an open brace.
    void breakLine();

    std::shared_ptr<const SwiftColoring> m_coloring;
    QHash<int, QString> m_warnings; // by line, from 1
    QWidget* m_numbers;
};

} // namespace ombrel
