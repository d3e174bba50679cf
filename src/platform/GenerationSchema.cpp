#include "platform/GenerationSchema.h"

#include "platform/Text.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <set>
#include <string_view>

namespace ombrel {

namespace {

using Schema = DynamicGenerationSchema;

constexpr int maximumDepth = 64;
constexpr int maximumParts = 10'000;
// What a server's grammar can repeat.
constexpr int maximumElementCount = 1'000;

// Looks for what no decoder can hold. Gives the first objection, or an empty text.
class Inspector {
  public:
    std::string objectionTo(const Schema& schema, int depth) {
        if (depth > maximumDepth) {
            return "The schema is nested more than " + std::to_string(maximumDepth) +
                   " levels deep.";
        }
        if (++m_parts > maximumParts) {
            return "The schema has more than " + std::to_string(maximumParts) + " parts.";
        }
        if (const auto* object = std::get_if<Schema::Object>(&schema.form)) {
            return objectionTo(*object, depth);
        }
        if (const auto* anyOf = std::get_if<Schema::AnyOf>(&schema.form)) {
            return anyOf->choices.empty() ? "The choice \"" + anyOf->name + "\" has no values."
                                          : std::string();
        }
        if (const auto* array = std::get_if<Schema::ArrayOf>(&schema.form)) {
            return objectionTo(*array, depth);
        }
        return {};
    }

  private:
    std::string objectionTo(const Schema::Object& object, int depth) {
        std::set<std::string> names;
        for (const Schema::Property& property : object.properties) {
            if (!names.insert(repairUtf8(property.name)).second) {
                return "The object \"" + object.name + "\" has two properties named \"" +
                       property.name + "\".";
            }
            if (!property.schema) {
                return "The property \"" + property.name + "\" has no type.";
            }
            std::string objection = objectionTo(*property.schema, depth + 1);
            if (!objection.empty()) {
                return objection;
            }
        }
        return {};
    }

    std::string objectionTo(const Schema::ArrayOf& array, int depth) {
        const int minimum = array.minimumElements.value_or(0);
        const int maximum = array.maximumElements.value_or(maximumElementCount);
        if (minimum < 0 || maximum < 0) {
            return "An array can't have fewer than 0 elements.";
        }
        if (minimum > maximumElementCount || maximum > maximumElementCount) {
            return "The number of an array's elements can't be held to more than " +
                   std::to_string(maximumElementCount) + ".";
        }
        if (minimum > maximum) {
            return "An array can't have at least " + std::to_string(minimum) + " and at most " +
                   std::to_string(maximum) + " elements.";
        }
        if (!array.element) {
            return "An array's elements have no type.";
        }
        return objectionTo(*array.element, depth + 1);
    }

    int m_parts = 0;
};

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

class SchemaWriter {
  public:
    std::string text(const Schema& schema) {
        write(schema);
        return {m_buffer.GetString(), m_buffer.GetSize()};
    }

  private:
    void write(const Schema& schema) {
        m_writer.StartObject();
        writeContents(schema);
        m_writer.EndObject();
    }
    void write(const Schema::Property& property) {
        m_writer.StartObject();
        if (property.description) {
            key("description");
            string(*property.description);
        }
        if (property.isOptional) {
            key("anyOf");
            m_writer.StartArray();
            write(*property.schema);
            m_writer.StartObject();
            type("null");
            m_writer.EndObject();
            m_writer.EndArray();
        } else {
            writeContents(*property.schema);
        }
        m_writer.EndObject();
    }
    void writeContents(const Schema& schema) {
        std::visit([this](const auto& form) { writeForm(form); }, schema.form);
    }
    void writeForm(Schema::Scalar scalar) {
        switch (scalar) {
        case Schema::Scalar::string:
            return type("string");
        case Schema::Scalar::integer:
            return type("integer");
        case Schema::Scalar::number:
            return type("number");
        case Schema::Scalar::boolean:
            return type("boolean");
        }
    }
    void writeForm(const Schema::Object& object) {
        type("object");
        key("properties");
        m_writer.StartObject();
        for (const Schema::Property& property : object.properties) {
            key(property.name);
            write(property);
        }
        m_writer.EndObject();
        key("required");
        m_writer.StartArray();
        for (const Schema::Property& property : object.properties) {
            string(property.name);
        }
        m_writer.EndArray();
        key("additionalProperties");
        m_writer.Bool(false);
    }
    void writeForm(const Schema::AnyOf& anyOf) {
        type("string");
        key("enum");
        m_writer.StartArray();
        std::set<std::string_view> written;
        for (const std::string& choice : anyOf.choices) {
            if (written.insert(choice).second) {
                string(choice);
            }
        }
        m_writer.EndArray();
    }
    void writeForm(const Schema::ArrayOf& array) {
        type("array");
        key("items");
        write(*array.element);
        if (array.minimumElements) {
            key("minItems");
            m_writer.Int(*array.minimumElements);
        }
        if (array.maximumElements) {
            key("maxItems");
            m_writer.Int(*array.maximumElements);
        }
    }

    void type(std::string_view name) {
        key("type");
        string(name);
    }
    void key(std::string_view name) { string(name); }
    void string(std::string_view text) {
        const std::string valid = repairUtf8(text);
        m_writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
    }

    rapidjson::StringBuffer m_buffer;
    Writer m_writer{m_buffer};
};

} // namespace

Result<GenerationSchema> GenerationSchema::make(DynamicGenerationSchema root) {
    std::string objection = Inspector().objectionTo(root, 1);
    if (!objection.empty()) {
        return failure(std::move(objection));
    }
    return GenerationSchema(std::make_shared<const DynamicGenerationSchema>(std::move(root)));
}

std::string GenerationSchema::jsonSchema() const {
    return SchemaWriter().text(*m_root);
}

} // namespace ombrel
