#include "export/ExportAlert.h"

namespace ombrel {

namespace {

bool succeeded(const ExportAlert& alert) {
    return std::holds_alternative<ExportAlert::Success>(alert.value);
}

} // namespace

std::string ExportAlert::identity() const {
    return (succeeded(*this) ? "success:" : "failure:") + message();
}

std::string_view ExportAlert::title() const {
    return succeeded(*this) ? "Package generated" : "Export failed";
}

std::string ExportAlert::message() const {
    const Success* const success = std::get_if<Success>(&value);
    return success ? success->package.string() : std::get<Failure>(value).message;
}

} // namespace ombrel
