#include "shell/SaveQuestion.h"

#include "shell/design/Button.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ombrel {

SaveQuestion::SaveQuestion(const QString& name, const QString& title, const QString& message,
                           const std::array<QString, 3>& answers, QWidget* parent)
    : QDialog(parent) {
    setObjectName(name);
    setWindowTitle(title);
    setAccessibleName(title);
    setAccessibleDescription(message);
    setAttribute(Qt::WA_DeleteOnClose);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::small);
    auto* heading = (new TextLabel(title, TextRole::heading))->wrapping();
    heading->setObjectName(name + QStringLiteral(".title"));
    auto* text = (new TextLabel(message, TextRole::body, TextLabel::Ink::secondary))->wrapping();
    text->setObjectName(name + QStringLiteral(".message"));
    column->addWidget(heading);
    column->addWidget(text);
    column->addSpacing(spacing::medium);
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    const auto add = [&](const char* which, const QString& answer, ButtonKind kind, int result) {
        auto* button = makeButton(answer, kind);
        button->setObjectName(name + QLatin1Char('.') + QLatin1String(which));
        connect(button, &QPushButton::clicked, this, [this, result] { done(result); });
        return button;
    };
    auto* other = add("second", answers[1], ButtonKind::secondary, second);
    auto* cancel = add("first", answers[0], ButtonKind::secondary, first);
    auto* usual = add("third", answers[2], ButtonKind::primary, third);
    row->addWidget(other);
    row->addStretch(1);
    row->addWidget(cancel);
    row->addWidget(usual);
    column->addLayout(row);
    setFixedWidth(440);
    column->setSizeConstraint(QLayout::SetMinimumSize);
    usual->setDefault(true);
    usual->setFocus();
}

} // namespace ombrel
