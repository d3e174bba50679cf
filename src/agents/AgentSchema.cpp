#include "agents/AgentSchema.h"

#include <memory>
#include <utility>
#include <variant>

namespace ombrel {

namespace {

using Schema = DynamicGenerationSchema;

constexpr const char* rootName = "Output";

Schema choice(const std::string& name, const std::vector<AgentEnumCase>& cases) {
    Schema::AnyOf anyOf{name, {}};
    for (const AgentEnumCase& each : cases) {
        anyOf.choices.push_back(each.name);
    }
    return {std::move(anyOf)};
}

std::shared_ptr<const Schema> shared(Schema schema) {
    return std::make_shared<const Schema>(std::move(schema));
}

} // namespace

Result<std::optional<GenerationSchema>> generationSchema(const AgentOutputKind& output) {
    std::optional<Schema> root;
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&output.value)) {
        if (!enumeration->cases.empty()) {
            root = choice(rootName, enumeration->cases);
        }
    } else if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        root = objectSchema(rootName, object->properties);
    }
    if (!root) {
        return std::nullopt;
    }
    Result<GenerationSchema> made = GenerationSchema::make(std::move(*root));
    if (!made) {
        return failure(made.error().message);
    }
    return std::optional(std::move(*made));
}

DynamicGenerationSchema dynamicSchema(const PropertyKind& kind, const std::string& name) {
    struct Visitor {
        const std::string& name;
        Schema operator()(const PropertyKind::String&) const { return {Schema::Scalar::string}; }
        Schema operator()(const PropertyKind::Int&) const { return {Schema::Scalar::integer}; }
        Schema operator()(const PropertyKind::Double&) const { return {Schema::Scalar::number}; }
        Schema operator()(const PropertyKind::Bool&) const { return {Schema::Scalar::boolean}; }
        Schema operator()(const PropertyKind::Object& object) const {
            return objectSchema(name, object.properties);
        }
        Schema operator()(const PropertyKind::Array& array) const {
            return {Schema::ArrayOf{shared(dynamicSchema(*array.element, name)), {}, {}}};
        }
        Schema operator()(const PropertyKind::Enumeration& enumeration) const {
            return enumeration.cases.empty() ? Schema{Schema::Scalar::string}
                                             : choice(name, enumeration.cases);
        }
    };
    return std::visit(Visitor{name}, kind.value);
}

DynamicGenerationSchema objectSchema(const std::string& name,
                                     const std::vector<AgentProperty>& properties) {
    Schema::Object object{name, {}};
    for (const AgentProperty& property : properties) {
        object.properties.push_back({property.name, property.description,
                                     shared(dynamicSchema(property.kind, property.name)),
                                     property.isOptional});
    }
    return {std::move(object)};
}

} // namespace ombrel
