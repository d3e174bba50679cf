#pragma once

#include "platform/Text.h"

#include <cstdint>
#include <optional>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>
#include <string_view>

// JSON from and to other programs, in which anything may be missing or of another type.
namespace ombrel {

// Whether a JSON text has arrays and objects in each other beyond what any program means. What
// walks a document does so by recursion.
inline bool nestsTooDeeply(std::string_view text) {
    constexpr int deepest = 500;
    int depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size() && depth <= deepest; i++) {
        const char byte = text[i];
        if (isInString) {
            i += byte == '\\' ? 1 : 0;
            isInString = byte != '"';
        } else if (byte == '"') {
            isInString = true;
        } else if (byte == '{' || byte == '[') {
            depth++;
        } else if (byte == '}' || byte == ']') {
            depth--;
        }
    }
    return depth > deepest;
}

// The document; `HasParseError` tells whether the text is JSON that can be used. Invalid UTF-8 is
// repaired.
inline rapidjson::Document parseServerJson(std::string_view text) {
    rapidjson::Document document;
    std::string repaired;
    if (!isValidUtf8(text)) {
        repaired = repairUtf8(text);
        text = repaired;
    }
    if (nestsTooDeeply(text)) {
        text = ""; // Which is an error.
    }
    document.Parse(text.data(), text.size());
    return document;
}

// The value under a key of an object, or null.
inline const rapidjson::Value* jsonMember(const rapidjson::Value& value, const char* name) {
    if (!value.IsObject()) {
        return nullptr;
    }
    const auto found = value.FindMember(name);
    return found == value.MemberEnd() ? nullptr : &found->value;
}

inline std::optional<std::string> jsonText(const rapidjson::Value* value) {
    if (!value || !value->IsString()) {
        return std::nullopt;
    }
    return std::string(value->GetString(), value->GetStringLength());
}

inline std::optional<std::int64_t> jsonInteger(const rapidjson::Value* value) {
    if (!value || !value->IsInt64()) {
        return std::nullopt;
    }
    return value->GetInt64();
}

inline std::optional<bool> jsonBoolean(const rapidjson::Value* value) {
    if (!value || !value->IsBool()) {
        return std::nullopt;
    }
    return value->GetBool();
}

using JsonStream = rapidjson::Writer<rapidjson::StringBuffer>;

inline void writeJsonKey(JsonStream& json, std::string_view key) {
    json.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
}

inline void writeJsonText(JsonStream& json, std::string_view text) {
    const std::string valid = isValidUtf8(text) ? std::string(text) : repairUtf8(text);
    json.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
}

} // namespace ombrel
