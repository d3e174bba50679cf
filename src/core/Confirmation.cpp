#include "core/Confirmation.h"

namespace ombrel {

Confirmation resetProjectConfirmation(std::string_view projectName) {
    return {"Reset this project?",
            "This removes every source, chunk, variant, and test question in \"" +
                std::string(projectName) + "\". You can undo it with \u2318Z right after.",
            "Reset Project", "Cancel"};
}

} // namespace ombrel
