#pragma once

#include <string>
#include <utility>
#include <vector>

namespace ombrel {

// The type of a property: a name, or a shape that is told in words, in any number of arrays and
// optionals. Kept flat, since source may nest them without end.
struct TypeRef {
    enum class Kind { named, unsupported };
    enum class Wrapper { array, optional };

    Kind kind = Kind::named;
    std::string text;              // the name; or the shape, as in "a dictionary"
    std::vector<Wrapper> wrappers; // from the inside out

    static TypeRef named(std::string name) { return {Kind::named, std::move(name), {}}; }
    static TypeRef unsupported(std::string shape) {
        return {Kind::unsupported, std::move(shape), {}};
    }
    static TypeRef array(TypeRef element) { return wrapped(std::move(element), Wrapper::array); }
    static TypeRef optional(TypeRef type) { return wrapped(std::move(type), Wrapper::optional); }

    bool operator==(const TypeRef&) const = default;

  private:
    static TypeRef wrapped(TypeRef type, Wrapper wrapper) {
        type.wrappers.push_back(wrapper);
        return type;
    }
};

} // namespace ombrel
