#include "shell/tabs/ProjectTab.h"

#include "core/Confirmation.h"
#include "export/ExportReadiness.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"
#include "shell/design/Named.h"
#include "shell/design/Prompt.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"

#include <QDateTime>
#include <QLocale>

#include <iterator>
#include <utility>

namespace ombrel {

namespace {

// "21 Nov 2026 at 14:05", in the user's own order of things.
QString dateText(Date date) {
    const auto seconds = static_cast<qint64>(date.secondsSinceReference + referenceDateSince1970);
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(seconds);
    const QLocale locale;
    QString timeFormat = locale.timeFormat(QLocale::ShortFormat);
    timeFormat.remove(QStringLiteral(":ss"));
    const QString day = locale.toString(moment.date(), QStringLiteral("d MMM yyyy"));
    return ProjectTab::tr("%1 at %2").arg(day, locale.toString(moment.time(), timeFormat));
}

} // namespace

ProjectTab::ProjectTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                       QWidget* parent)
    : TabPage(AppTab::project, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_name(named(new TextField(tr("Project name")), QStringLiteral("project.name"), tr("Name"))),
      m_facts(new FactList) {
    content()->addWidget(makeIdentity());
    content()->addWidget(makeDangerZone());
    watch(state().project);
    watch(state().agents);
    watch(state().tools);
    watch(state().flows);
    watchIndex();
}

QWidget* ProjectTab::makeIdentity() {
    auto* card = new Card;
    card->content()->addWidget(new SectionTitle(tr("Identity")));
    card->content()->addSpacing(spacing::tight);
    card->content()->addWidget(
        new TextLabel(tr("NAME"), TextRole::overline, TextLabel::Ink::secondary));
    m_name->setMaximumWidth(460);
    card->content()->addWidget(m_name);
    card->content()->addSpacing(spacing::small);
    card->content()->addWidget(m_facts);
    connect(m_name, &TextField::edited, this, [this](const QString& text) {
        state().project.edit()->name = fromQt(text);
        state().scheduleCheckpoint();
    });
    return card;
}

QWidget* ProjectTab::makeDangerZone() {
    auto* card = new Card;
    card->content()->addWidget(new SectionTitle(tr("Danger zone")));
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::wide);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(spacing::hair);
    texts->addWidget(new TextLabel(tr("Reset project"), TextRole::strong));
    texts->addWidget((new TextLabel(tr("Removes every source, chunk, variant, and test question "
                                       "\u2014 keeps the name. Ctrl+Z undoes it immediately "
                                       "after."),
                                    TextRole::body, TextLabel::Ink::secondary))
                         ->wrapping());
    row->addLayout(texts, 1);
    auto* reset = named(makeButton(tr("Reset Project"), ButtonKind::danger),
                        QStringLiteral("project.reset"), tr("Reset Project"));
    row->addWidget(reset, 0, Qt::AlignVCenter);
    card->content()->addLayout(row);
    connect(reset, &QPushButton::clicked, this, [this] {
        confirm(window(), resetProjectConfirmation(state().project->name),
                [held = sharedState()] { held->resetProject(); });
    });
    return card;
}

void ProjectTab::refresh() {
    const Project& project = *state().project;
    m_name->showValue(toQt(project.name));
    std::int64_t sources = 0;
    std::int64_t chunks = 0;
    std::int64_t questions = 0;
    for (const RAGIndex& index : *state().ragIndexes) {
        sources += std::ssize(index.sources);
        questions += std::ssize(index.testQuestions);
        for (const SourceDocument& source : index.sources) {
            chunks += source.chunkCount;
        }
    }
    const auto fact = [this](const char* name, const QString& label, const QString& value) {
        m_facts->setFact(QString::fromLatin1(name), label, value);
    };
    fact("lastBuild", tr("Last build"), toQt(project.lastBuiltDescription));
    if (project.lastBuildFinishedAt) {
        fact("lastBuilt", tr("Last built"), dateText(*project.lastBuildFinishedAt));
    } else {
        m_facts->removeFact(QStringLiteral("lastBuilt"));
    }
    fact("indexes", tr("RAG indexes"), numberText(std::ssize(*state().ragIndexes)));
    fact("sources", tr("Sources"), numberText(sources));
    fact("chunks", tr("Chunks"), numberText(chunks));
    fact("questions", tr("Test questions"), numberText(questions));
    fact("agents", tr("Agents"), numberText(std::ssize(*state().agents)));
    fact("tools", tr("Tools"), numberText(std::ssize(*state().tools)));
    fact("flows", tr("Flows"), numberText(std::ssize(*state().flows)));
}

} // namespace ombrel
