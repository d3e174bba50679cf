#pragma once

#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace ombrel {

// A failure as the user reads it. Subsystems that need to tell failures apart derive nothing from
// this: they have a typed error of their own that carries its message.
struct Error {
    std::string message;
    bool operator==(const Error&) const = default;
};

// What an operation that can fail returns: its value, or the error. Must be looked at.
template <class T, class E = Error>
class [[nodiscard]] Result : public tl::expected<T, E> {
  public:
    using tl::expected<T, E>::expected;
};

inline tl::unexpected<Error> failure(std::string message) {
    return tl::unexpected<Error>(Error{std::move(message)});
}

} // namespace ombrel
