#include "shell/QtText.h"
#include "shell/design/Theme.h"
#include "shell/glossary/GlossaryPopoverView.h"
#include "shell/glossary/GlossaryTopic.h"
#include "shell/glossary/HelpButton.h"
#include "shell/glossary/TopicDiagram.h"
#include "tests/shell/PaintedText.h"
#include "tests/shell/Studio.h"

#include <QLayout>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

namespace ombrel {
namespace {

using namespace test;

TEST(GlossaryTopic, HasAllFourTextsForEachOfTheNineTopics) {
    EXPECT_EQ(rawValues(GlossaryTopic{}).size(), 9U);
    for (const auto& [topic, name] : rawValues(GlossaryTopic{})) {
        EXPECT_FALSE(title(topic).isEmpty()) << name;
        EXPECT_FALSE(definition(topic).isEmpty()) << name;
        EXPECT_FALSE(explanation(topic).isEmpty()) << name;
        EXPECT_FALSE(example(topic).isEmpty()) << name;
    }
}

TEST(GlossaryTopic, SeparatesParagraphsByABlankLine) {
    const auto paragraphs =
        explanation(GlossaryTopic::chunkingStrategy).split(QStringLiteral("\n\n"));
    ASSERT_EQ(paragraphs.size(), 4);
    EXPECT_TRUE(paragraphs[0].startsWith(QStringLiteral("RAG never searches a whole document")));
    EXPECT_TRUE(paragraphs[1].startsWith(QStringLiteral("• Fixed — cuts every N tokens")));
    EXPECT_EQ(explanation(GlossaryTopic::queryTransform).count(QStringLiteral("\n\n• ")), 4);
}

class GlossaryPopover : public ::testing::Test {
  protected:
    GlossaryPopover() {
        studio.newDocument().document().state()->setSelectedTab(AppTab::settings);
        if (!studio.until([&] { return isShown(window(), "help.topK"); })) {
            throw std::runtime_error("the tab doesn't come");
        }
        studio.settle();
    }
    QWidget& window() { return *studio.application().documentWindows().first(); }
    GlossaryPopoverView* popover() { return window().findChild<GlossaryPopoverView*>(); }

    Studio studio;
};

TEST_F(GlossaryPopover, OpensBesideEverySettingWithTheTextsOfItsTopic) {
    for (const auto& [topic, name] : rawValues(GlossaryTopic{})) {
        auto& button = find<HelpButton>(window(), ("help." + std::string(name)).c_str());
        EXPECT_EQ(button.topic(), topic);
        EXPECT_FALSE(button.isPresented());
        button.click();
        EXPECT_TRUE(button.isPresented());
        ASSERT_TRUE(popover()) << name;
        EXPECT_TRUE(popover()->isVisible());
        EXPECT_EQ(popover()->topic(), topic);
        EXPECT_EQ(textOf(*popover(), "glossary.title"), "What is " + fromQt(title(topic)) + "?");
        EXPECT_EQ(textOf(*popover(), "glossary.definition"), fromQt(definition(topic)));
        EXPECT_EQ(textOf(*popover(), "glossary.explanation"), fromQt(explanation(topic)));
        EXPECT_EQ(textOf(*popover(), "glossary.exampleTitle"), "EXAMPLE");
        EXPECT_EQ(textOf(*popover(), "glossary.example"), fromQt(example(topic)));
        EXPECT_EQ(find<TopicDiagram>(*popover(), "glossary.diagram").topic(), topic);
        popover()->close();
        studio.settle();
        EXPECT_FALSE(button.isPresented());
        EXPECT_FALSE(popover());
    }
}

TEST_F(GlossaryPopover, KeepsTheTitleInTheHeadingWhateverItsForm) {
    const auto heading = [&](const char* button) {
        click(window(), button);
        const std::string text = textOf(*popover(), "glossary.title");
        popover()->close();
        studio.settle();
        return text;
    };
    EXPECT_EQ(heading("help.topK"), "What is Top-k?");
    EXPECT_EQ(heading("help.rerank"), "What is Rerank with model?");
}

TEST_F(GlossaryPopover, StaysOnTheScreenAndScrollsByTheKeys) {
    click(window(), "help.queryTransform");
    studio.settle();
    const QRect screen = window().screen()->availableGeometry();
    EXPECT_TRUE(screen.contains(popover()->frameGeometry()));
    auto& area = find<QScrollArea>(*popover(), "glossary.scroll");
    QScrollBar* bar = area.verticalScrollBar();
    // All of it is there, at once or by scrolling.
    EXPECT_GE(area.viewport()->height() + bar->maximum(),
              area.widget()->layout()->totalHeightForWidth(area.viewport()->width()));
    EXPECT_EQ(bar->value(), 0);
    pressKey(*popover(), Qt::Key_PageDown);
    pressKey(*popover(), Qt::Key_PageDown);
    pressKey(*popover(), Qt::Key_PageDown);
    EXPECT_EQ(bar->value(), bar->maximum());
    pressKey(*popover(), Qt::Key_Up);
    EXPECT_LE(bar->value(), bar->maximum());
    pressKey(*popover(), Qt::Key_PageUp);
    pressKey(*popover(), Qt::Key_PageUp);
    pressKey(*popover(), Qt::Key_PageUp);
    EXPECT_EQ(bar->value(), 0);
}

TEST_F(GlossaryPopover, IsClosedByEscape) {
    click(window(), "help.index");
    ASSERT_TRUE(popover());
    pressKey(*popover(), Qt::Key_Escape);
    studio.settle();
    EXPECT_FALSE(popover());
}

TEST(TopicDiagram, DrawsItsFixedWords) {
    Theme::current();
    const auto drawn = [](GlossaryTopic topic) {
        TopicDiagram diagram(topic);
        return PaintedText::of(diagram, 400);
    };
    const auto expectWords = [&](GlossaryTopic topic, const QStringList& texts) {
        const QString all = drawn(topic);
        for (QString text : texts) {
            EXPECT_TRUE(all.contains(text.remove(QLatin1Char(' '))))
                << fromQt(text) << " in " << fromQt(all);
        }
    };
    expectWords(GlossaryTopic::chunkingStrategy, {"Fixed", "Paragraph", "Heading-aware"});
    expectWords(GlossaryTopic::chunkSize, {"Small (~150 tokens)", "more precise, more chunks",
                                           "Large (~800 tokens)", "more context, fewer chunks"});
    expectWords(GlossaryTopic::overlap,
                {"Chunk 1", "shared", "Chunk 2", "the overlap text appears in both chunks"});
    expectWords(GlossaryTopic::index,
                {"Query: “battery drain”", "...the battery may drain faster...", "Vector",
                 "close in meaning = close together"});
    expectWords(
        GlossaryTopic::enrichment,
        {"small chunk matches search", "→ whole parent sent to model", "parent section", "match"});
    expectWords(GlossaryTopic::queryTransform,
                {"Why is my phone hot?", "causes of device overheating", "3 phrasings, merged",
                 "a drafted, hypothetical answer", "call 1: \"battery overheating causes\"",
                 "call 2: \"charging habits and heat\""});
    expectWords(GlossaryTopic::rerank, {"From index", "After rerank"});
    expectWords(GlossaryTopic::topK, {"top-k = 6: only the 6 highest-scoring chunks are used"});
    expectWords(GlossaryTopic::contextBudget,
                {"Instructions", "Retrieved chunks", "Question", "Answer reserve", "~120 tokens",
                 "~2,400 tokens", "~40 tokens", "~440 tokens"});
}

TEST(TopicDiagram, IsHigherWhereItsTextsWrap) {
    Theme::current();
    TopicDiagram diagram(GlossaryTopic::queryTransform);
    EXPECT_GT(diagram.heightForWidth(260), diagram.heightForWidth(420));
}

} // namespace
} // namespace ombrel
