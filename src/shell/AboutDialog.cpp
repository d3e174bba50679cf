#include "shell/AboutDialog.h"

#include "shell/design/Button.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QIcon>
#include <QVBoxLayout>

namespace ombrel {

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("about"));
    setWindowTitle(tr("About Ombrel Studio"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::page, spacing::page, spacing::page, spacing::large);
    column->setSpacing(spacing::tight);
    auto* mark = new QLabel;
    mark->setPixmap(QIcon(QStringLiteral(":/icons/ombrel-studio.svg"))
                        .pixmap(QSize(80, 80), devicePixelRatioF()));
    column->addWidget(mark, 0, Qt::AlignHCenter);
    column->addSpacing(spacing::small);
    column->addWidget(new TextLabel(tr("Ombrel Studio"), TextRole::title), 0, Qt::AlignHCenter);
    column->addWidget(new TextLabel(tr("Version ") + QStringLiteral(OMBREL_VERSION),
                                    TextRole::caption, TextLabel::Ink::secondary),
                      0, Qt::AlignHCenter);
    column->addSpacing(spacing::medium);
    auto* text = (new TextLabel(tr("Builds on-device AI features from your own documents. Nothing "
                                   "leaves your machine."),
                                TextRole::body, TextLabel::Ink::secondary))
                     ->wrapping();
    text->setAlignment(Qt::AlignHCenter);
    column->addWidget(text);
    column->addSpacing(spacing::large);
    auto* close = named(makeButton(tr("Close")), QStringLiteral("about.close"), tr("Close"));
    column->addWidget(close, 0, Qt::AlignHCenter);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    setFixedWidth(360);
}

} // namespace ombrel
