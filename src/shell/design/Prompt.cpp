#include "shell/design/Prompt.h"

#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

struct Question {
    QDialog* dialog;
    QHBoxLayout* buttons;
};

Question makeDialog(QWidget* over, const QString& name, const QString& title,
                    const QString& message) {
    auto* dialog = new QDialog(over);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName(name);
    dialog->setWindowTitle(title);
    dialog->setAccessibleName(title);
    dialog->setAccessibleDescription(message);
    auto* column = new QVBoxLayout(dialog);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::small);
    auto* heading = (new TextLabel(title, TextRole::heading))->wrapping();
    heading->setObjectName(name + QStringLiteral(".title"));
    auto* text = (new TextLabel(message, TextRole::body, TextLabel::Ink::secondary))->wrapping();
    text->setObjectName(name + QStringLiteral(".message"));
    text->selectable();
    column->addWidget(heading);
    column->addWidget(text);
    column->addSpacing(spacing::medium);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    buttons->addStretch(1);
    column->addLayout(buttons);
    dialog->setFixedWidth(420);
    column->setSizeConstraint(QLayout::SetMinimumSize);
    return {dialog, buttons};
}

} // namespace

void confirm(QWidget* over, const Confirmation& question, std::function<void()> confirmed) {
    const auto [dialog, buttons] =
        makeDialog(over, QStringLiteral("confirmation"), desktopText(question.title),
                   desktopText(question.message));
    auto* cancel = makeButton(desktopText(question.cancel));
    cancel->setObjectName(QStringLiteral("confirmation.cancel"));
    auto* go = makeButton(desktopText(question.confirm), ButtonKind::dangerFill);
    go->setObjectName(QStringLiteral("confirmation.confirm"));
    buttons->addWidget(cancel);
    buttons->addWidget(go);
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    QObject::connect(go, &QPushButton::clicked, dialog, &QDialog::accept);
    QObject::connect(dialog, &QDialog::accepted, over, std::move(confirmed));
    go->setDefault(true);
    dialog->open();
    go->setFocus();
}

void alert(QWidget* over, const QString& title, const QString& message,
           std::function<void()> closed) {
    const auto [dialog, buttons] = makeDialog(over, QStringLiteral("alert"), title, message);
    auto* ok = makeButton(QObject::tr("OK"), ButtonKind::primary);
    ok->setObjectName(QStringLiteral("alert.ok"));
    ok->setDefault(true);
    buttons->addWidget(ok);
    QObject::connect(ok, &QPushButton::clicked, dialog, &QDialog::accept);
    if (closed) {
        QObject::connect(dialog, &QDialog::finished, over ? static_cast<QObject*>(over) : dialog,
                         [told = std::move(closed)] { told(); });
    }
    dialog->open();
    ok->setFocus();
}

} // namespace ombrel
