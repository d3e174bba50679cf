#include "shell/agents/PropertyListEditor.h"
#include "shell/agents/EnumCaseListEditor.h"
#include "tests/agents/Properties.h"
#include "tests/shell/Choose.h"

#include <QCheckBox>

namespace ombrel {
namespace {

using namespace test;

struct Properties {
    explicit Properties(std::vector<AgentProperty> shown = {}, bool allowsNesting = true)
        : list(QStringLiteral("list"), QStringLiteral("Fields"), allowsNesting) {
        list.setProperties(std::move(shown));
        QObject::connect(&list, &PropertyListEditor::changed, [this] { ++changes; });
    }
    const AgentProperty& first() const { return list.properties().front(); }

    PropertyListEditor list;
    int changes = 0;
};

TEST(PropertyListEditor, AddsAPropertyOfStringsWithoutAName) {
    Properties p;
    EXPECT_TRUE(isShown(p.list, "list.empty"));
    click(p.list, "list.add");
    ASSERT_EQ(p.list.properties().size(), 1U);
    EXPECT_EQ(p.first().name, "");
    EXPECT_EQ(p.first().kind, stringKind());
    EXPECT_EQ(p.first().description, std::nullopt);
    EXPECT_FALSE(p.first().isOptional);
    EXPECT_EQ(p.changes, 1);
    EXPECT_FALSE(isShown(p.list, "list.empty"));
    EXPECT_EQ(find<QLineEdit>(p.list, "list.0.name").placeholderText(), "propertyName");
    EXPECT_EQ(fromQt(find<QLineEdit>(p.list, "list.0.description").placeholderText()),
              "Description \u2014 tells the model what to put here (optional)");
}

TEST(PropertyListEditor, EditsNameDescriptionAndOptionality) {
    Properties p;
    click(p.list, "list.add");
    type(p.list, "list.0.name", QStringLiteral("title"));
    type(p.list, "list.0.description", QStringLiteral("Short"));
    click(p.list, "list.0.optional");
    EXPECT_EQ(p.first().name, "title");
    EXPECT_EQ(p.first().description, "Short");
    EXPECT_TRUE(p.first().isOptional);
    type(p.list, "list.0.description", {});
    EXPECT_EQ(p.first().description, std::nullopt);
}

TEST(PropertyListEditor, RemovesTheRowThatWasAskedFor) {
    Properties p(
        {property("a", stringKind()), property("b", stringKind()), property("c", stringKind())});
    click(p.list, "list.1.remove");
    ASSERT_EQ(p.list.properties().size(), 2U);
    EXPECT_EQ(p.list.properties()[1].name, "c");
    EXPECT_EQ(textOf(p.list, "list.1.name"), "c");
}

TEST(PropertyListEditor, KeepsSubPropertiesAsTheElementsWhenAnObjectBecomesAnArray) {
    const PropertyKind object = objectOf({property("title", stringKind())});
    Properties p({property("book", object)});
    EXPECT_EQ(textOf(p.list, "list.0.fold"), "Properties of book");
    choose(p.list, "list.0.type", "Array");
    EXPECT_EQ(p.first().kind, arrayOf(object));
    EXPECT_EQ(find<QComboBox>(p.list, "list.0.element").currentText(), "Object");
    EXPECT_EQ(textOf(p.list, "list.0.properties.0.name"), "title");
}

TEST(PropertyListEditor, KeepsCasesWhenAnArrayOfEnumsBecomesAnEnum) {
    const PropertyKind choice = enumerationOf({"low", "high"});
    Properties p({property("", arrayOf(choice))});
    EXPECT_EQ(textOf(p.list, "list.0.fold"), "Cases of this property");
    choose(p.list, "list.0.type", "Enum");
    EXPECT_EQ(p.first().kind, choice);
    EXPECT_EQ(textOf(p.list, "list.0.cases.1.name"), "high");
}

TEST(PropertyListEditor, LosesSubPropertiesWhenAnObjectBecomesAString) {
    Properties p({property("book", objectOf({property("title", stringKind())}))});
    choose(p.list, "list.0.type", "String");
    EXPECT_FALSE(isShown(p.list, "list.0.fold"));
    choose(p.list, "list.0.type", "Object");
    EXPECT_EQ(p.first().kind, objectOf({}));
    EXPECT_TRUE(isShown(p.list, "list.0.properties.empty"));
}

TEST(PropertyListEditor, EditsTheListsInARow) {
    Properties p({property("book", objectOf({}))});
    click(p.list, "list.0.properties.add");
    type(p.list, "list.0.properties.0.name", QStringLiteral("mood"));
    choose(p.list, "list.0.properties.0.type", "Enum");
    click(p.list, "list.0.properties.0.cases.add");
    type(p.list, "list.0.properties.0.cases.0.name", QStringLiteral("calm"));
    const auto& inner = std::get<PropertyKind::Object>(p.first().kind.value).properties.front();
    EXPECT_EQ(inner.name, "mood");
    EXPECT_EQ(std::get<PropertyKind::Enumeration>(inner.kind.value).cases.front().name, "calm");
    type(p.list, "list.0.name", QStringLiteral("novel"));
    EXPECT_EQ(textOf(p.list, "list.0.fold"), "Properties of novel");
    click(p.list, "list.0.fold");
    EXPECT_FALSE(isShown(p.list, "list.0.properties"));
}

TEST(PropertyListEditor, OffersNoArraysOfArraysAndShowsThoseThatWereImported) {
    Properties p({property("grid", arrayOf(arrayOf(intKind())))});
    auto& element = find<QComboBox>(p.list, "list.0.element");
    EXPECT_EQ(element.findText(QStringLiteral("Array")), -1);
    EXPECT_EQ(element.count(), 6);
    EXPECT_EQ(element.currentIndex(), -1);
    EXPECT_EQ(element.placeholderText(), "[Int]");
    choose(p.list, "list.0.element", "Bool");
    EXPECT_EQ(p.first().kind, arrayOf(boolKind()));
}

TEST(PropertyListEditor, ShowsNoListsWithoutNesting) {
    Properties p({property("tags", arrayOf(objectOf({})))}, false);
    EXPECT_FALSE(isShown(p.list, "list.0.element"));
    EXPECT_FALSE(isShown(p.list, "list.0.fold"));
    EXPECT_EQ(find<QComboBox>(p.list, "list.0.type").count(), 7);
}

TEST(PropertyListEditor, ShowsALongListInPages) {
    std::vector<AgentProperty> many;
    for (int i = 0; i < 3 * PagedRows::rowsOfPage; ++i) {
        many.push_back(property("p" + std::to_string(i), stringKind()));
    }
    Properties p(many);
    EXPECT_EQ(textOf(p.list, "list.pages"), "1\u201340 of 120");
    EXPECT_FALSE(find<QWidget>(p.list, "list.previous").isEnabled());
    click(p.list, "list.next");
    EXPECT_EQ(textOf(p.list, "list.0.name"), "p40");
    type(p.list, "list.0.name", QStringLiteral("renamed"));
    EXPECT_EQ(p.list.properties()[40].name, "renamed");
    click(p.list, "list.add");
    EXPECT_EQ(p.list.properties().size(), 121U);
    EXPECT_EQ(textOf(p.list, "list.pages"), "121\u2013121 of 121");
    click(p.list, "list.0.remove");
    EXPECT_EQ(textOf(p.list, "list.pages"), "81\u2013120 of 120");
}

TEST(PropertyListEditor, TellsNobodyWhatItIsGiven) {
    Properties p;
    p.list.setProperties({property("a", objectOf({property("b", boolKind(), true)}))});
    EXPECT_EQ(p.changes, 0);
    EXPECT_TRUE(find<QCheckBox>(p.list, "list.0.properties.0.optional").isChecked());
}

TEST(PropertyListEditor, LeavesTheCursorWhereItIsWhenTheListIsShownAgain) {
    Properties p({property("title", stringKind())});
    p.list.show();
    p.list.activateWindow();
    QCoreApplication::processEvents();
    auto& name = find<QLineEdit>(p.list, "list.0.name");
    name.setFocus();
    name.setCursorPosition(2);
    std::vector<AgentProperty> other = p.list.properties();
    other[0].isOptional = true;
    p.list.setProperties(other);
    EXPECT_TRUE(name.hasFocus());
    EXPECT_EQ(name.cursorPosition(), 2);
}

TEST(EnumCaseListEditor, AddsEditsAndRemovesCases) {
    EnumCaseListEditor list(QStringLiteral("list"), QStringLiteral("Cases"));
    int changes = 0;
    QObject::connect(&list, &EnumCaseListEditor::changed, [&] { ++changes; });
    click(list, "list.add");
    EXPECT_EQ(find<QLineEdit>(list, "list.0.name").placeholderText(), "caseName");
    EXPECT_EQ(find<QLineEdit>(list, "list.0.description").placeholderText(),
              "Description (optional)");
    type(list, "list.0.name", QStringLiteral("bug"));
    type(list, "list.0.description", QStringLiteral("x"));
    EXPECT_EQ(list.cases().front().name, "bug");
    EXPECT_EQ(list.cases().front().description, "x");
    type(list, "list.0.description", {});
    EXPECT_EQ(list.cases().front().description, std::nullopt);
    EXPECT_EQ(changes, 6);
    click(list, "list.0.remove");
    EXPECT_TRUE(list.cases().empty());
}

} // namespace
} // namespace ombrel
