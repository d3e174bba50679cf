#include "shell/RecoveryDialog.h"

#include "shell/QtText.h"
#include "shell/TwoLineDelegate.h"
#include "shell/design/Button.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QListWidget>
#include <QLocale>
#include <QVBoxLayout>

namespace ombrel {

RecoveryDialog::RecoveryDialog(const std::vector<RecoveredProject>& found, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("recovery"));
    setWindowTitle(tr("Recover projects"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::small);
    column->addWidget((new TextLabel(tr("Ombrel Studio ended before these projects were saved"),
                                     TextRole::heading))
                          ->wrapping());
    column->addWidget((new TextLabel(tr("Recovering opens each with its last edits. Nothing is "
                                        "overwritten until you save."),
                                     TextRole::body, TextLabel::Ink::secondary))
                          ->wrapping());
    auto* list = named(new QListWidget, QStringLiteral("recovery.list"), tr("Unsaved projects"));
    list->setItemDelegate(new TwoLineDelegate(list));
    list->setSelectionMode(QAbstractItemView::NoSelection);
    list->setFocusPolicy(Qt::NoFocus);
    for (const RecoveredProject& project : found) {
        auto* item = new QListWidgetItem(themeIcon(QStringLiteral("recover"), Tone::accent),
                                         toQt(project.name), list);
        const QDateTime kept = QFileInfo(toQt(project.contents)).lastModified();
        item->setData(Qt::UserRole,
                      tr("Kept %1").arg(QLocale().toString(kept, QLocale::ShortFormat)));
        item->setToolTip(project.file ? toQt(*project.file) : toQt(project.name));
    }
    list->setMaximumHeight(220);
    column->addWidget(list);
    auto* discard = named(makeButton(tr("Discard"), ButtonKind::danger),
                          QStringLiteral("recovery.discard"), tr("Discard"));
    auto* later = named(makeButton(tr("Not Now")), QStringLiteral("recovery.later"), tr("Not Now"));
    auto* recover = named(makeButton(tr("Recover"), ButtonKind::primary),
                          QStringLiteral("recovery.recover"), tr("Recover"));
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    row->addWidget(discard);
    row->addStretch(1);
    row->addWidget(later);
    row->addWidget(recover);
    column->addSpacing(spacing::small);
    column->addLayout(row);
    setFixedWidth(460);
    connect(discard, &QPushButton::clicked, this, [this] { done(discarded); });
    connect(later, &QPushButton::clicked, this, &QDialog::reject);
    connect(recover, &QPushButton::clicked, this, &QDialog::accept);
    recover->setDefault(true);
    recover->setFocus();
}

} // namespace ombrel
