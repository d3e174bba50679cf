#pragma once

#include "platform/Result.h"

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace ombrel {

// What the model's answer must look like. Built four ways, as the members of `Form`.
struct DynamicGenerationSchema {
    enum class Scalar { string, integer, number, boolean };
    struct Property {
        std::string name;
        std::optional<std::string> description;
        std::shared_ptr<const DynamicGenerationSchema> schema;
        bool isOptional = false;
    };
    struct Object {
        std::string name;
        std::vector<Property> properties;
    };
    // A choice of strings. One that is there twice counts once.
    struct AnyOf {
        std::string name;
        std::vector<std::string> choices;
    };
    struct ArrayOf {
        std::shared_ptr<const DynamicGenerationSchema> element;
        std::optional<int> minimumElements;
        std::optional<int> maximumElements;
    };
    using Form = std::variant<Scalar, Object, AnyOf, ArrayOf>;
    Form form;
};

// A schema that has been checked: everything in it can be held by a constrained decoder.
class GenerationSchema {
  public:
    // Fails with a message for the user when the schema says something that no server can hold
    // (a choice of nothing, an array with more minimum than maximum elements or with limits of
    // elements that are negative or above 1,000, a repeated property name in one object, more than
    // 64 levels or 10,000 parts).
    static Result<GenerationSchema> make(DynamicGenerationSchema root);

    const DynamicGenerationSchema& root() const { return *m_root; }
    // The JSON Schema text: every property in the declared order, no others allowed. An optional
    // one may be null, which stands for its absence: servers write properties that may be left out
    // behind all the others, whatever their order in the schema.
    std::string jsonSchema() const;

  private:
    explicit GenerationSchema(std::shared_ptr<const DynamicGenerationSchema> root)
        : m_root(std::move(root)) {}
    std::shared_ptr<const DynamicGenerationSchema> m_root;
};

} // namespace ombrel
