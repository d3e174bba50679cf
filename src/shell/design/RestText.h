#pragma once

#include <QString>

#include <cstddef>

namespace ombrel {

// Below a list of which only the beginning is shown: "and 12 more".
QString restText(std::size_t count);

} // namespace ombrel
