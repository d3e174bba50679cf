#include "platform/Date.h"

#include <chrono>

namespace ombrel {

Date Date::now() {
    const std::chrono::duration<double> since1970 =
        std::chrono::system_clock::now().time_since_epoch();
    return Date{since1970.count() - referenceDateSince1970};
}

} // namespace ombrel
