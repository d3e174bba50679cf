#include "shell/tabs/PasteSheet.h"

#include "knowledge/SourceTexts.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Named.h"
#include "shell/design/Prompt.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTextDocument>
#include <QVBoxLayout>

namespace ombrel {

PasteSheet::PasteSheet(Purpose purpose, const QString& title, const QString& text, QWidget* over)
    : QDialog(over), m_givenText(text),
      m_title(named(new QLineEdit(title), QStringLiteral("paste.title"), tr("Title"))),
      m_area(named(new QPlainTextEdit, QStringLiteral("paste.text"), tr("Text"))) {
    const bool adds = purpose == Purpose::add;
    setObjectName(QStringLiteral("pasteSheet"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(adds ? tr("Paste Text") : tr("Edit Pasted Text"));
    setAccessibleName(windowTitle());
    setSizeGripEnabled(true);
    m_title->setPlaceholderText(tr("Pasted text"));
    m_area->setPlaceholderText(tr("Paste or type the text here"));
    m_area->setFont(Theme::current().font(TextRole::body));
    m_area->setTabChangesFocus(true);
    m_area->setPlainText(text);
    m_area->document()->setModified(false);
    m_area->setMinimumHeight(200);
    m_title->setModified(false);
    m_go = named(makeButton(adds ? tr("Add") : tr("Save"), ButtonKind::primary),
                 QStringLiteral("paste.go"), adds ? tr("Add") : tr("Save"));
    m_go->setDefault(true);
    auto* cancel = named(makeButton(tr("Cancel")), QStringLiteral("paste.cancel"), tr("Cancel"));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::small);
    auto* heading = new TextLabel(windowTitle(), TextRole::heading);
    heading->setObjectName(QStringLiteral("paste.heading"));
    column->addWidget(heading);
    column->addSpacing(spacing::tight);
    column->addWidget(new TextLabel(tr("Title"), TextRole::caption, TextLabel::Ink::secondary));
    column->addWidget(m_title);
    column->addSpacing(spacing::tight);
    column->addWidget(m_area, 1);
    auto* note =
        (new TextLabel(toQt(pasteNote), TextRole::caption, TextLabel::Ink::secondary))->wrapping();
    note->setObjectName(QStringLiteral("paste.note"));
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    buttons->addWidget(note, 1);
    buttons->addSpacing(spacing::large);
    buttons->addWidget(cancel);
    buttons->addWidget(m_go);
    column->addSpacing(spacing::tight);
    column->addLayout(buttons);
    resize(640, 480);

    const auto updateGo = [this] { m_go->setEnabled(!m_area->toPlainText().trimmed().isEmpty()); };
    connect(m_area, &QPlainTextEdit::textChanged, this, updateGo);
    connect(m_go, &QPushButton::clicked, this, &PasteSheet::submit);
    connect(cancel, &QPushButton::clicked, this, &PasteSheet::reject);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* submits = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        connect(submits, &QShortcut::activated, this, &PasteSheet::submit);
    }
    updateGo();
    if (adds && text.isEmpty()) {
        m_title->setFocus();
    } else {
        m_area->setFocus();
    }
}

QString PasteSheet::text() const {
    if (!m_area->document()->isModified()) {
        return m_givenText;
    }
    // The editor's own reading of its text would turn no-break spaces into plain ones.
    QString text = m_area->document()->toRawText();
    return text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

void PasteSheet::submit() {
    if (m_go->isEnabled()) {
        Q_EMIT submitted(m_title->text(), text());
        accept();
    }
}

void PasteSheet::reject() {
    const bool wouldLose = (m_area->document()->isModified() || m_title->isModified()) &&
                           !m_area->toPlainText().trimmed().isEmpty();
    if (!wouldLose) {
        QDialog::reject();
        return;
    }
    const Confirmation question{fromQt(tr("Discard your changes?")),
                                fromQt(tr("What you typed is not kept.")), fromQt(tr("Discard")),
                                fromQt(tr("Keep Editing"))};
    confirm(this, question, [this] { QDialog::reject(); });
}

} // namespace ombrel
