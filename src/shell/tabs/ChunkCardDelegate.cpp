#include "shell/tabs/ChunkCardDelegate.h"

#include "knowledge/IndexReport.h"
#include "shell/QtText.h"
#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/tabs/ChunkListModel.h"

#include <QIcon>
#include <QPainter>
#include <QTextLayout>

#include <cmath>
#include <memory>
#include <vector>

namespace ombrel {

// A card's texts, with their lines broken for a width.
struct CardLayout {
    struct Piece {
        std::unique_ptr<QTextLayout> layout;
        bool isSecondary = false;
        QPointF place; // in the card
    };

    int width = 0;
    QString number;
    QString breadcrumb;
    QString tokens;
    std::vector<Piece> pieces;
    double moreTop = 0;    // where the note, the parent and the questions begin and end;
    double moreBottom = 0; // equal when there is none
    int height = 0;        // of the row: the card and the gap below it
};

namespace {

constexpr int gap = spacing::small; // below a card
constexpr int keptLayouts = 200;

QFontMetrics metricsOf(TextRole role) {
    return QFontMetrics(Theme::current().font(role));
}

QString shownText(const std::string& text) {
    QString shown = toQt(text);
    if (shown.size() > ChunkCardDelegate::mostCharacters) {
        const auto more = shown.size() - ChunkCardDelegate::mostCharacters;
        int end = ChunkCardDelegate::mostCharacters;
        end -= shown[end].isLowSurrogate() ? 1 : 0;
        shown.truncate(end);
        shown += ChunkCardDelegate::tr("\u2026\n(%1 more characters; press Enter to read all)")
                     .arg(numberText(more));
    }
    return shown;
}

// Breaks the text into lines of the width; its height.
double breakLines(QTextLayout& layout, double width) {
    QTextOption wrapping;
    wrapping.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(wrapping);
    layout.setCacheEnabled(true);
    double y = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, y});
        y += line.height();
    }
    layout.endLayout();
    return std::ceil(y);
}

QList<QTextLayout::FormatRange> marksOf(const QString& text, const QString& words) {
    QList<QTextLayout::FormatRange> marks;
    if (words.isEmpty()) {
        return marks;
    }
    QTextCharFormat format;
    format.setBackground(Theme::current().colors().warningSoft);
    format.setForeground(Theme::current().colors().warning);
    for (auto at = text.indexOf(words, 0, Qt::CaseInsensitive); at >= 0;
         at = text.indexOf(words, at + words.size(), Qt::CaseInsensitive)) {
        marks.append({static_cast<int>(at), static_cast<int>(words.size()), format});
    }
    return marks;
}

} // namespace

ChunkCardDelegate::ChunkCardDelegate(const ChunkListModel& model, QObject* owner)
    : QAbstractItemDelegate(owner), m_model(model), m_strong(metricsOf(TextRole::strong)),
      m_body(metricsOf(TextRole::body)), m_caption(metricsOf(TextRole::caption)),
      m_layouts(keptLayouts) {}

ChunkCardDelegate::~ChunkCardDelegate() = default;

int ChunkCardDelegate::headerHeight() const {
    return m_strong.height() + spacing::medium + spacing::small;
}

int ChunkCardDelegate::noChunksHeight() const {
    return m_body.height() + spacing::medium;
}

QSize ChunkCardDelegate::sizeHint(const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const {
    const int width = option.rect.width();
    switch (m_model.kindOf(index.row())) {
    case ChunkListModel::RowKind::header:
        return {width, headerHeight()};
    case ChunkListModel::RowKind::noChunks:
        return {width, noChunksHeight()};
    case ChunkListModel::RowKind::card:
        break;
    }
    return {width, layoutOf(index.row(), width).height};
}

int ChunkCardDelegate::estimatedHeight(int row, int width) const {
    switch (m_model.kindOf(row)) {
    case ChunkListModel::RowKind::header:
        return headerHeight();
    case ChunkListModel::RowKind::noChunks:
        return noChunksHeight();
    case ChunkListModel::RowKind::card:
        break;
    }
    const int room = std::max(80, width - 2 * spacing::large);
    const auto lines = [room](std::size_t bytes, const QFontMetrics& metrics) {
        const auto shown = std::min<std::size_t>(bytes, mostCharacters);
        const int perLine = std::max(1, room / std::max(1, metrics.averageCharWidth()));
        return (1 + static_cast<int>(shown) / perLine) * metrics.height();
    };
    const DocumentChunk& chunk = m_model.cardOf(row).chunk;
    int height = 2 * spacing::medium + m_strong.height() + spacing::small + gap +
                 lines(chunk.text.size(), m_body);
    if (chunk.contextualNote) {
        height += lines(chunk.contextualNote->size(), m_caption);
    }
    if (chunk.parentText) {
        height += lines(1, m_caption);
    }
    if (chunk.generatedQuestions) {
        height += static_cast<int>(chunk.generatedQuestions->size() + 1) * m_caption.height();
    }
    return height;
}

const CardLayout& ChunkCardDelegate::layoutOf(int row, int width) const {
    if (const CardLayout* kept = m_layouts.object(row); kept && kept->width == width) {
        return *kept;
    }
    m_layoutCount += 1;
    const ChunkCard card = m_model.cardOf(row);
    auto made = std::make_unique<CardLayout>();
    made->width = width;
    made->number = toQt(card.number());
    made->breadcrumb = toQt(card.breadcrumb());
    made->tokens = toQt(card.tokens());

    double y = spacing::medium + m_strong.height() + spacing::small;
    const auto add = [&](QString text, TextRole role, bool isSecondary, int indent) {
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        text.replace(QLatin1Char('\n'), QChar::LineSeparator);
        auto layout = std::make_unique<QTextLayout>(text, Theme::current().font(role));
        const double height = breakLines(*layout, std::max(40, width - 2 * indent));
        made->pieces.push_back({std::move(layout), isSecondary, {double(indent), y}});
        y += height;
    };
    add(shownText(card.chunk.text), TextRole::body, false, spacing::large);

    const auto note = card.note();
    const auto parent = card.parent();
    const auto& questions = card.questions();
    if (note || parent || !questions.empty()) {
        constexpr int indent = spacing::large + spacing::medium;
        y += spacing::medium;
        made->moreTop = y;
        y += spacing::small;
        bool isFirst = true;
        const auto addMore = [&](const QString& text, TextRole role) {
            y += isFirst ? 0 : spacing::tight;
            isFirst = false;
            add(text, role, true, indent);
        };
        if (note) {
            addMore(shownText(*note), TextRole::caption);
        }
        if (parent) {
            addMore(toQt(*parent), TextRole::caption);
        }
        if (!questions.empty()) {
            addMore(toQt(ChunkCard::questionsHeading), TextRole::caption);
            for (const std::string& question : questions) {
                addMore(QStringLiteral("\u2022 ") + shownText(question), TextRole::caption);
            }
        }
        y += spacing::small;
        made->moreBottom = y;
    }
    made->height = static_cast<int>(y) + spacing::medium + gap;
    CardLayout* const kept = made.get();
    m_layouts.insert(row, made.release());
    return *kept;
}

void ChunkCardDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    painter->save();
    switch (m_model.kindOf(index.row())) {
    case ChunkListModel::RowKind::header:
        paintHeader(painter, option, index.row());
        break;
    case ChunkListModel::RowKind::noChunks:
        painter->setFont(Theme::current().font(TextRole::body));
        painter->setPen(Theme::current().colors().secondary);
        painter->drawText(option.rect.adjusted(spacing::large, 0, 0, 0),
                          Qt::AlignVCenter | Qt::TextSingleLine, toQt(noChunksNote));
        break;
    case ChunkListModel::RowKind::card:
        paintCard(painter, option, index.row());
        break;
    }
    painter->restore();
}

void ChunkCardDelegate::paintHeader(QPainter* painter, const QStyleOptionViewItem& option,
                                    int row) const {
    const Theme& theme = Theme::current();
    const auto& section = m_model.sectionOf(row);
    const QRect line = option.rect.adjusted(spacing::hair, spacing::small, -spacing::hair, 0);
    if (option.state.testFlag(QStyle::State_Selected)) {
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(theme.colors().accentSoft);
        painter->drawRoundedRect(line, spacing::corner, spacing::corner);
    }
    const QRect icon(line.left() + spacing::tight, line.top() + (line.height() - spacing::icon) / 2,
                     spacing::icon, spacing::icon);
    themeIcon(QStringLiteral("document")).paint(painter, icon);

    painter->setFont(theme.font(TextRole::caption));
    painter->setPen(theme.colors().secondary);
    const QRect text = line.adjusted(spacing::icon + spacing::medium, 0, -spacing::tight, 0);
    painter->drawText(text, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, section.totals);
    const int totals = painter->fontMetrics().horizontalAdvance(section.totals);

    painter->setFont(theme.font(TextRole::strong));
    painter->setPen(theme.colors().text);
    const QRect name = text.adjusted(0, 0, -totals - spacing::large, 0);
    painter->drawText(
        name, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        painter->fontMetrics().elidedText(section.name, Qt::ElideMiddle, name.width()));
}

void ChunkCardDelegate::paintCard(QPainter* painter, const QStyleOptionViewItem& option,
                                  int row) const {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    const CardLayout& card = layoutOf(row, option.rect.width());
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool hasKeyboard = option.state.testFlag(QStyle::State_HasFocus);

    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5 - gap);
    painter->setPen(hasKeyboard  ? QPen(colors.focus, 2)
                    : isSelected ? QPen(colors.accent, 1)
                                 : QPen(colors.border, 1));
    painter->setBrush(colors.surface);
    painter->drawRoundedRect(hasKeyboard ? frame.adjusted(0.5, 0.5, -0.5, -0.5) : frame,
                             spacing::cardCorner, spacing::cardCorner);
    if (isSelected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(colors.accentSoft);
        painter->drawRoundedRect(frame.adjusted(2, 2, -2, -2), spacing::small, spacing::small);
    }

    const QRect title(option.rect.left() + spacing::large, option.rect.top() + spacing::medium,
                      option.rect.width() - 2 * spacing::large, m_strong.height());
    constexpr int flags = Qt::AlignVCenter | Qt::TextSingleLine;
    painter->setFont(theme.font(TextRole::strong));
    painter->setPen(colors.accentText);
    painter->drawText(title, flags | Qt::AlignLeft, card.number);
    const int number = painter->fontMetrics().horizontalAdvance(card.number);
    painter->setFont(theme.font(TextRole::caption));
    painter->setPen(colors.secondary);
    painter->drawText(title, flags | Qt::AlignRight, card.tokens);
    const int tokens = painter->fontMetrics().horizontalAdvance(card.tokens);
    const QRect path = title.adjusted(number + spacing::small, 0, -tokens - spacing::medium, 0);
    painter->drawText(
        path, flags | Qt::AlignLeft,
        painter->fontMetrics().elidedText(card.breadcrumb, Qt::ElideMiddle, path.width()));

    if (card.moreBottom > card.moreTop) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(isSelected ? colors.surface : colors.raised);
        painter->drawRoundedRect(
            QRectF(option.rect.left() + spacing::large, option.rect.top() + card.moreTop,
                   option.rect.width() - 2 * spacing::large, card.moreBottom - card.moreTop),
            spacing::corner, spacing::corner);
    }
    const QRectF clip = painter->hasClipping() ? painter->clipBoundingRect() : QRectF();
    for (const CardLayout::Piece& piece : card.pieces) {
        painter->setPen(piece.isSecondary ? colors.secondary : colors.text);
        piece.layout->draw(painter, option.rect.topLeft() + piece.place,
                           marksOf(piece.layout->text(), m_markedWords), clip);
    }
}

} // namespace ombrel
