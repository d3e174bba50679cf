#include "shell/design/SwiftCodeView.h"

#include "export/SwiftHighlight.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>

namespace ombrel {

namespace {

QColor colorOf(SwiftTokenKind kind) {
    const ThemeColors& colors = Theme::current().colors();
    switch (kind) {
    case SwiftTokenKind::keyword:
        return colors.accentText;
    case SwiftTokenKind::type:
    case SwiftTokenKind::number:
        return colors.warning;
    case SwiftTokenKind::string:
        return colors.success;
    case SwiftTokenKind::comment:
        return colors.secondary;
    case SwiftTokenKind::plain:
        break;
    }
    return colors.text;
}

} // namespace

SwiftCodeView::SwiftCodeView(QWidget* parentWidget) : QFrame(parentWidget), m_label(new QLabel) {
    setProperty("card", "flat");
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(spacing::large, spacing::medium, spacing::small, spacing::medium);
    row->setSpacing(spacing::small);
    m_label->setTextFormat(Qt::RichText);
    m_label->setFont(Theme::current().font(TextRole::code));
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_label->setAccessibleName(tr("Swift code"));
    row->addWidget(m_label, 1);
    auto* copy = makeIconButton(QStringLiteral("copy"), tr("Copy the code"));
    copy->setObjectName(QStringLiteral("copyCode"));
    connect(copy, &QToolButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(m_text); });
    row->addWidget(copy, 0, Qt::AlignTop);
    connect(&Theme::current(), &Theme::changed, this, &SwiftCodeView::showColored);
}

void SwiftCodeView::setText(const QString& text) {
    if (m_text != text) {
        m_text = text;
        showColored();
    }
}

void SwiftCodeView::showColored() {
    const std::string source = fromQt(m_text);
    QString html = QStringLiteral("<div style=\"white-space: pre-wrap\">");
    for (const SwiftToken& token : highlightSwift(source)) {
        html += QStringLiteral("<span style=\"color: %1\">%2</span>")
                    .arg(colorOf(token.kind).name(),
                         toQt(source.substr(token.begin, token.length)).toHtmlEscaped());
    }
    m_label->setText(html + QStringLiteral("</div>"));
}

} // namespace ombrel
