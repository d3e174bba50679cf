#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

// How a record describes its stored form. The description stands in the record itself and nowhere
// else; the property list of the project file, the JSON of the wire and the JSON that the command
// line prints are encoders and decoders of it.
//
//   struct Variant {
//       Uuid id;
//       std::optional<double> mrr;
//       static constexpr auto keys() {
//           return std::tuple(required("id", &Variant::id), optional("mrr", &Variant::mrr));
//       }
//   };
//
// Keys are written in this order. An enumeration without payload is described by a function
// `rawValues(E)` beside it, an enumeration with payload by `static constexpr auto cases()`, whose
// alternatives are records themselves (an unlabelled payload has the key "_0"). A record that is
// stored as an array of its fields lists them by `static constexpr auto elements()`.
namespace ombrel {

enum class KeyRule {
    required,  // its absence fails the decoding
    optional,  // a std::optional: absent means none, and none writes no key
    defaulted, // its absence leaves the value of a default-constructed record; always written
};

template <class Owner, class Field>
struct Key {
    std::string_view name;
    Field Owner::*field;
    KeyRule rule;
};

template <class Owner, class Field>
constexpr Key<Owner, Field> required(std::string_view name, Field Owner::*field) {
    return {name, field, KeyRule::required};
}
template <class Owner, class Field>
constexpr Key<Owner, Field> optional(std::string_view name, Field Owner::*field) {
    return {name, field, KeyRule::optional};
}
template <class Owner, class Field>
constexpr Key<Owner, Field> defaulted(std::string_view name, Field Owner::*field) {
    return {name, field, KeyRule::defaulted};
}

// An enumeration without payload: its cases in order, each with the raw value that is stored and
// shown.
template <class E>
struct RawValue {
    E value;
    std::string_view raw;
};

template <class E>
concept RawEnum = std::is_enum_v<E> && requires(E e) { rawValues(e); };

template <RawEnum E>
constexpr std::string_view rawValue(E value) {
    for (const auto& entry : rawValues(value)) {
        if (entry.value == value) {
            return entry.raw;
        }
    }
    return {};
}

// An enumeration with payload holds a std::variant named `value`; `cases()` lists a name for each
// alternative, in the variant's order.
template <class Alternative>
struct PayloadCase {
    using Type = Alternative;
    std::string_view name;
};

template <class Alternative>
constexpr PayloadCase<Alternative> payloadCase(std::string_view name) {
    return {name};
}

template <class T>
concept RecordType = requires { T::keys(); };
template <class T>
concept ElementsType = requires { T::elements(); };
template <class T>
concept PayloadEnum = requires(T t) {
    T::cases();
    t.value;
};

// Values nest at most this deep in what is stored: every array and dictionary counts. It keeps the
// stack safe, and is far beyond what a project needs.
inline constexpr int maximumNesting = 1024;

// What decoding an enumeration with payload says of a value with other than one key.
inline constexpr std::string_view invalidNumberOfKeys =
    "Invalid number of keys found, expected one.";

} // namespace ombrel
