#include "shell/agents/SwiftSourceEditor.h"

#include "generable/ImportTexts.h"
#include "shell/QtText.h"
#include "shell/agents/LineNumbers.h"
#include "shell/design/LongText.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

namespace ombrel {

namespace {

QColor colorOf(SwiftColoring::Part part) {
    const ThemeColors& colors = Theme::current().colors();
    switch (part) {
    case SwiftColoring::Part::keyword:
    case SwiftColoring::Part::attribute:
        return colors.accentText;
    case SwiftColoring::Part::type:
    case SwiftColoring::Part::number:
        return colors.warning;
    case SwiftColoring::Part::string:
        return colors.success;
    case SwiftColoring::Part::comment:
        return colors.secondary;
    }
    return colors.text;
}

// How many UTF-16 units a text has up to a byte.
int unitsUpTo(std::string_view line, std::size_t byte) {
    return static_cast<int>(toQt(line.substr(0, byte)).size());
}

} // namespace

SwiftSourceEditor::SwiftSourceEditor(QWidget* parentWidget)
    : QPlainTextEdit(parentWidget), m_coloring(std::make_shared<SwiftColoring>()),
      m_numbers(new LineNumbers(this)) {
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setTabChangesFocus(true);
    setPlaceholderText(toQt(importSample));
    setFont(Theme::current().font(TextRole::code));
    connect(this, &QPlainTextEdit::blockCountChanged, this, &SwiftSourceEditor::placeNumbers);
    connect(this, &QPlainTextEdit::textChanged, this, &SwiftSourceEditor::colorVisible);
    connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect& rect, int dy) {
        if (dy != 0) {
            m_numbers->scroll(0, dy);
        } else {
            m_numbers->update(0, rect.y(), m_numbers->width(), rect.height());
        }
        colorVisible();
    });
    connect(&Theme::current(), &Theme::changed, this, [this] {
        setFont(Theme::current().font(TextRole::code));
        placeNumbers();
        colorVisible();
        m_numbers->update();
    });
    placeNumbers();
}

QString SwiftSourceEditor::source() const {
    // The editor's own reading of its text would turn no-break spaces into plain ones.
    QString text = document()->toRawText();
    return text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

void SwiftSourceEditor::replaceSource(const QString& text) {
    QTextCursor cursor(document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    moveCursor(QTextCursor::Start);
}

void SwiftSourceEditor::setColoring(std::shared_ptr<const SwiftColoring> coloring) {
    m_coloring = std::move(coloring);
    colorVisible();
}

void SwiftSourceEditor::setWarnings(const std::vector<GenerableImportWarning>& warnings) {
    m_warnings.clear();
    for (const GenerableImportWarning& warning : warnings) {
        QString& text = m_warnings[static_cast<int>(warning.line.value_or(0))];
        constexpr int mostOfLine = 2000; // characters in a tooltip
        if (text.size() < mostOfLine) {
            text += (text.isEmpty() ? QString() : QStringLiteral("\n")) + toQt(warning.message);
        }
    }
    m_numbers->update();
    viewport()->update();
}

void SwiftSourceEditor::showLine(int line) {
    const QTextBlock block = document()->findBlockByNumber(line - 1);
    if (block.isValid()) {
        setTextCursor(QTextCursor(block));
        centerCursor();
    }
}

template <class Visit>
void SwiftSourceEditor::forVisibleBlocks(Visit visit) const {
    QTextBlock block = firstVisibleBlock();
    while (block.isValid()) {
        const QRectF place = blockBoundingGeometry(block).translated(contentOffset());
        if (place.top() > viewport()->height()) {
            return;
        }
        visit(block, place);
        block = block.next();
    }
}

int SwiftSourceEditor::numbersWidth() const {
    const auto digits = QString::number(std::max(blockCount(), 100)).size();
    return spacing::wide + spacing::small +
           static_cast<int>(digits) * fontMetrics().horizontalAdvance(QLatin1Char('9'));
}

void SwiftSourceEditor::placeNumbers() {
    setViewportMargins(numbersWidth(), 0, 0, 0);
    const QRect inside = contentsRect();
    m_numbers->setGeometry(inside.left(), inside.top(), numbersWidth(), inside.height());
}

void SwiftSourceEditor::paintNumbers(QPaintEvent* event) {
    QPainter painter(m_numbers);
    const ThemeColors& colors = Theme::current().colors();
    painter.fillRect(event->rect(), colors.raised);
    painter.setFont(font());
    const int shift = viewport()->y() - m_numbers->y();
    forVisibleBlocks([&](const QTextBlock& block, const QRectF& place) {
        const int line = block.blockNumber() + 1;
        // The last line is as high as the margin below it, too.
        const QRectF row(0, place.top() + shift, m_numbers->width(), fontMetrics().height());
        const bool isWarned = m_warnings.contains(line);
        if (isWarned) {
            painter.fillRect(row, colors.warningSoft);
            const double side = 6;
            painter.setPen(Qt::NoPen);
            painter.setBrush(colors.warning);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.drawEllipse(QPointF(spacing::small + 1, row.center().y()), side / 2, side / 2);
        }
        painter.setPen(isWarned ? colors.warning : colors.secondary);
        painter.drawText(row.adjusted(0, 0, -spacing::small, 0), Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(line));
    });
}

QString SwiftSourceEditor::warningAt(int y) const {
    QString found;
    forVisibleBlocks([&](const QTextBlock& block, const QRectF& place) {
        if (y >= place.top() && y < place.bottom()) {
            found = m_warnings.value(block.blockNumber() + 1);
        }
    });
    return found;
}

void SwiftSourceEditor::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !(event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier))) {
        breakLine();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void SwiftSourceEditor::breakLine() {
    QTextCursor cursor = textCursor();
    const int begin = cursor.selectionStart();
    const QTextBlock block = document()->findBlock(begin);
    constexpr int farthest = 400;
    const QString before = block.text().left(std::min(begin - block.position(), farthest));
    const auto isBlank = [](QChar c) { return c == QLatin1Char(' ') || c == QLatin1Char('\t'); };
    const auto text = std::ranges::find_if_not(before, isBlank);
    QString indentation = before.left(text - before.begin());
    if (before.trimmed().endsWith(QLatin1Char('{'))) {
        indentation += QStringLiteral("    ");
    }
    cursor.insertText(QLatin1Char('\n') + indentation);
    setTextCursor(cursor);
    ensureCursorVisible();
}

bool SwiftSourceEditor::canInsertFromMimeData(const QMimeData* mime) const {
    return !mime->hasUrls() && QPlainTextEdit::canInsertFromMimeData(mime);
}

void SwiftSourceEditor::paintEvent(QPaintEvent* event) {
    if (!m_warnings.isEmpty()) {
        QPainter painter(viewport());
        const QColor color = Theme::current().colors().warningSoft;
        forVisibleBlocks([&](const QTextBlock& block, const QRectF& place) {
            if (m_warnings.contains(block.blockNumber() + 1)) {
                painter.fillRect(QRectF(0, place.top(), viewport()->width(), place.height()),
                                 color);
            }
        });
    }
    QPlainTextEdit::paintEvent(event);
}

void SwiftSourceEditor::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    placeNumbers();
    colorVisible();
}

bool SwiftSourceEditor::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        QToolTip::showText(help->globalPos(), toolTipText(warningAt(help->y())), viewport());
        return true;
    }
    return QPlainTextEdit::viewportEvent(event);
}

void SwiftSourceEditor::colorVisible() {
    forVisibleBlocks([this](const QTextBlock& block, const QRectF&) { colorBlock(block); });
}

void SwiftSourceEditor::colorBlock(const QTextBlock& block) {
    // A line of which only the beginning is worth colours.
    constexpr qsizetype longestLine = 4000;
    const std::string text = fromQt(block.text().left(longestLine));
    const auto fits = [&](std::ptrdiff_t index) {
        if (index < 0 || index >= static_cast<std::ptrdiff_t>(m_coloring->lineCount())) {
            return false;
        }
        const std::string_view line = m_coloring->line(static_cast<std::size_t>(index));
        return block.length() > longestLine ? line.starts_with(text) : line == text;
    };
    // The line may have moved since the source was read: as many lines as before are above it, or
    // below it.
    const std::ptrdiff_t fromTop = block.blockNumber();
    const std::ptrdiff_t fromEnd =
        fromTop + static_cast<std::ptrdiff_t>(m_coloring->lineCount()) - blockCount();
    std::vector<SwiftColoring::Span> spans;
    if (fits(fromTop)) {
        spans = m_coloring->spansOfLine(static_cast<std::size_t>(fromTop));
    } else if (fits(fromEnd)) {
        spans = m_coloring->spansOfLine(static_cast<std::size_t>(fromEnd));
    } else {
        spans = SwiftColoring(text).spansOfLine(0);
    }
    QList<QTextLayout::FormatRange> formats;
    for (const SwiftColoring::Span& span : spans) {
        if (span.begin >= text.size()) {
            break;
        }
        const int begin = unitsUpTo(text, span.begin);
        const int end = unitsUpTo(text, std::min(span.end, text.size()));
        QTextLayout::FormatRange range;
        range.start = begin;
        range.length = end - begin;
        range.format.setForeground(colorOf(span.part));
        formats.append(range);
    }
    if (formats != block.layout()->formats()) {
        block.layout()->setFormats(formats);
        document()->markContentsDirty(block.position(), block.length());
    }
}

} // namespace ombrel
