#include "shell/tabs/ChunkDialog.h"

#include "shell/QtText.h"
#include "shell/design/Badge.h"
#include "shell/design/Button.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextArea.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ombrel {

ChunkDialog::ChunkDialog(const ChunkCard& card, const QString& documentName, QWidget* parentWidget)
    : QDialog(parentWidget) {
    setObjectName(QStringLiteral("chunk"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Chunk %1 of %2").arg(toQt(card.number()), documentName));
    setAccessibleName(windowTitle());
    resize(680, 560);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::small);

    auto* top = new QHBoxLayout;
    top->setSpacing(spacing::small);
    auto* title = new ElidedLabel(documentName + QStringLiteral("  ") + toQt(card.number()),
                                  TextRole::heading);
    title->setObjectName(QStringLiteral("chunk.title"));
    title->setElideMode(Qt::ElideMiddle);
    top->addWidget(title, 1);
    top->addWidget(new Badge(toQt(card.tokens())));
    column->addLayout(top);
    if (!card.chunk.breadcrumb.empty()) {
        auto* breadcrumb =
            new ElidedLabel(toQt(card.breadcrumb()), TextRole::caption, TextLabel::Ink::secondary);
        breadcrumb->setElideMode(Qt::ElideMiddle);
        column->addWidget(breadcrumb);
    }
    column->addSpacing(spacing::tight);

    auto* text = named(new TextArea, QStringLiteral("chunk.text"), tr("The chunk\u2019s text"));
    text->setReadOnly(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text->setPlainText(toQt(card.bodyText()));
    column->addWidget(text, 1);
    auto* embedding =
        (new TextLabel(toQt(card.embedding()), TextRole::caption, TextLabel::Ink::secondary))
            ->wrapping();
    embedding->setObjectName(QStringLiteral("chunk.embedding"));
    column->addWidget(embedding);
    column->addSpacing(spacing::small);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    auto* copy = named(makeButton(tr("Copy Text")), QStringLiteral("chunk.copy"), tr("Copy Text"));
    connect(copy, &QPushButton::clicked, this, [chunkText = toQt(card.chunk.text)] {
        QGuiApplication::clipboard()->setText(chunkText);
    });
    auto* close = named(makeButton(tr("Close"), ButtonKind::primary), QStringLiteral("chunk.close"),
                        tr("Close"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    buttons->addWidget(copy);
    buttons->addStretch(1);
    buttons->addWidget(close);
    column->addLayout(buttons);
}

} // namespace ombrel
