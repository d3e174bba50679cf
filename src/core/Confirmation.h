#pragma once

#include <string>
#include <string_view>

namespace ombrel {

// What the user is asked before an operation that takes much away.
struct Confirmation {
    std::string title;
    std::string message;
    std::string confirm; // the button that goes on
    std::string cancel;  // the button that does nothing
};

Confirmation resetProjectConfirmation(std::string_view projectName);

} // namespace ombrel
