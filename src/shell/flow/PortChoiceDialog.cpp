#include "shell/flow/PortChoiceDialog.h"

#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/LongText.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace ombrel {

PortChoiceDialog::PortChoiceDialog(const QString& question, const PendingPortChoice& choice,
                                   QWidget* parent)
    : QDialog(parent) {
    named(this, QStringLiteral("portChoice"), question);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Connect"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::large);
    constexpr qsizetype most = 300;
    const QString asked = question.size() > most
                              ? question.left(most / 2) + QChar(0x2026) + question.right(most / 2)
                              : question;
    auto* text = (new TextLabel(breakable(asked), TextRole::heading))->wrapping();
    text->setObjectName(QStringLiteral("portChoice.question"));
    text->setMinimumWidth(320);
    column->addWidget(text);

    auto* list = new QWidget;
    list->setProperty("page", "true");
    auto* rows = new QVBoxLayout(list);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(spacing::small);
    for (std::size_t i = 0; i < choice.ports.size(); ++i) {
        const FlowPort port = choice.ports[i];
        const QString name = port ? toQt(*port) : tr("Output");
        constexpr int mostWidth = 420; // of its words
        auto* button = makeButton(
            actionText(fontMetrics().elidedText(name.left(mostWidth), Qt::ElideRight, mostWidth)));
        button->setAccessibleName(name);
        button->setToolTip(toolTipText(name));
        button->setObjectName(QStringLiteral("portChoice.port.%1").arg(i));
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        button->setFocusPolicy(Qt::StrongFocus);
        connect(button, &QPushButton::clicked, this, [this, port] {
            Q_EMIT chosen(port);
            close();
        });
        rows->addWidget(button);
        if (i == 0) {
            button->setFocus();
        }
    }
    rows->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(list);
    constexpr int mostHeight = 360;
    const QSize wanted = list->sizeHint();
    scroll->setMinimumHeight(std::min(wanted.height(), mostHeight));
    scroll->setMinimumWidth(wanted.width() + (wanted.height() > mostHeight
                                                  ? scroll->verticalScrollBar()->sizeHint().width()
                                                  : 0));
    column->addWidget(scroll, 1);
    text->setMinimumHeight(
        text->heightForWidth(std::max(text->minimumWidth(), scroll->minimumWidth())));

    auto* cancel = named(makeButton(tr("Cancel"), ButtonKind::plain),
                         QStringLiteral("portChoice.cancel"), tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    column->addWidget(cancel, 0, Qt::AlignRight);
}

} // namespace ombrel
