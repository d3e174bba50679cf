#include "agents/PropertyEditing.h"

#include "tests/agents/Properties.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using namespace test;
using Base = PropertyKind::BaseKind;

const PropertyKind object = objectOf({property("title", stringKind())});
const PropertyKind choice = enumerationOf({"low", "high"});

TEST(KindAfterChange, GivesThePlainKindsAndLosesANestedList) {
    for (const PropertyKind& current : {object, choice, arrayOf(object), stringKind()}) {
        EXPECT_EQ(kindAfterChange(Base::string, current), stringKind());
        EXPECT_EQ(kindAfterChange(Base::integer, current), intKind());
        EXPECT_EQ(kindAfterChange(Base::number, current), doubleKind());
        EXPECT_EQ(kindAfterChange(Base::boolean, current), boolKind());
    }
}

TEST(KindAfterChange, FromObjectToStringLosesItsPropertiesForGood) {
    const PropertyKind text = kindAfterChange(Base::string, object);
    EXPECT_EQ(kindAfterChange(Base::object, text), objectOf({}));
}

TEST(KindAfterChange, FromObjectToArrayKeepsThePropertiesAsTheElements) {
    EXPECT_EQ(kindAfterChange(Base::array, object), arrayOf(object));
    EXPECT_EQ(kindAfterChange(Base::object, arrayOf(object)), object);
}

TEST(KindAfterChange, FromArrayOfEnumToEnumKeepsTheCases) {
    EXPECT_EQ(kindAfterChange(Base::enumeration, arrayOf(choice)), choice);
    EXPECT_EQ(kindAfterChange(Base::array, choice), arrayOf(choice));
}

TEST(KindAfterChange, LeavesWhatAlreadyIsOfTheKind) {
    EXPECT_EQ(kindAfterChange(Base::object, object), object);
    EXPECT_EQ(kindAfterChange(Base::enumeration, choice), choice);
    const PropertyKind rows = arrayOf(arrayOf(intKind()));
    EXPECT_EQ(kindAfterChange(Base::array, rows), rows);
}

TEST(KindAfterChange, StartsEmptyFromAnythingElse) {
    for (const PropertyKind& current :
         {stringKind(), intKind(), choice, arrayOf(choice), arrayOf(arrayOf(object))}) {
        EXPECT_EQ(kindAfterChange(Base::object, current), objectOf({}));
    }
    for (const PropertyKind& current : {boolKind(), object, arrayOf(object), arrayOf(intKind())}) {
        EXPECT_EQ(kindAfterChange(Base::enumeration, current), enumerationOf({}));
    }
    for (const PropertyKind& current : {stringKind(), intKind(), doubleKind(), boolKind()}) {
        EXPECT_EQ(kindAfterChange(Base::array, current), arrayOf(stringKind()));
    }
}

TEST(ElementKinds, AreAllButArrays) {
    EXPECT_EQ(elementKinds(), (std::vector{Base::string, Base::integer, Base::number, Base::boolean,
                                           Base::object, Base::enumeration}));
}

TEST(KindAfterElementChange, ChangesTheElementsAndStaysAnArray) {
    EXPECT_EQ(kindAfterElementChange(Base::integer, arrayOf(object)), arrayOf(intKind()));
    EXPECT_EQ(kindAfterElementChange(Base::object, arrayOf(object)), arrayOf(object));
    // An imported array of arrays.
    EXPECT_EQ(kindAfterElementChange(Base::object, arrayOf(arrayOf(object))), arrayOf(object));
    EXPECT_EQ(kindAfterElementChange(Base::integer, choice), choice);
}

TEST(NestedLists, AreThoseOfTheKindOrOfItsElements) {
    PropertyKind kind = arrayOf(object);
    ASSERT_NE(nestedProperties(kind), nullptr);
    nestedProperties(kind)->clear();
    EXPECT_EQ(kind, arrayOf(objectOf({})));
    kind = choice;
    ASSERT_NE(nestedCases(kind), nullptr);
    nestedCases(kind)->pop_back();
    EXPECT_EQ(std::get<PropertyKind::Enumeration>(kind.value).cases.size(), 1U);
    EXPECT_EQ(nestedProperties(kind), nullptr);
    kind = arrayOf(arrayOf(object));
    EXPECT_EQ(nestedProperties(kind), nullptr);
    EXPECT_EQ(nestedCases(kind), nullptr);
}

TEST(NestedLists, AreHeadedByTheName) {
    EXPECT_EQ(nestedPropertiesHeading("author"), "Properties of author");
    EXPECT_EQ(nestedPropertiesHeading(""), "Properties of this property");
    EXPECT_EQ(nestedCasesHeading("mood"), "Cases of mood");
}

TEST(NewRows, AreEmptyWithAnIDOfTheirOwn) {
    AgentProperty expected;
    const AgentProperty made = newProperty();
    expected.id = made.id;
    EXPECT_EQ(made, expected);
    EXPECT_EQ(made.kind, stringKind());
    EXPECT_NE(made.id, newProperty().id);
    const AgentEnumCase enumCase = newEnumCase();
    EXPECT_EQ(enumCase, (AgentEnumCase{enumCase.id, "", std::nullopt}));
    EXPECT_NE(enumCase.id, Uuid());
}

TEST(StoredDescription, IsAbsentWhenItWasEmptied) {
    EXPECT_EQ(storedDescription(""), std::nullopt);
    EXPECT_EQ(storedDescription(" "), " ");
}

} // namespace
} // namespace ombrel
