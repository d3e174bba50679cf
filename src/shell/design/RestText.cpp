#include "shell/design/RestText.h"

#include "shell/QtText.h"

#include <QCoreApplication>

#include <cstdint>

namespace ombrel {

QString restText(std::size_t count) {
    return QCoreApplication::translate("RestText", "and %1 more")
        .arg(numberText(static_cast<std::int64_t>(count)));
}

} // namespace ombrel
