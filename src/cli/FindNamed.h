#pragma once

#include "cli/Command.h"
#include "platform/Text.h"
#include "platform/Uuid.h"

#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// The id of the one element with this name or id. Throws `Failure` when there is none, and when
// several have the name: then it lists their ids. `noun` is what an element is called.
template <class T>
Uuid findNamed(const std::vector<T>& list, const std::string& nameOrID, const std::string& noun) {
    const std::optional<Uuid> id = Uuid::parse(nameOrID);
    std::vector<Uuid> found;
    for (const T& element : list) {
        if (id == element.id) {
            return element.id;
        }
        if (canonicallyEqual(element.name, nameOrID)) {
            found.push_back(element.id);
        }
    }
    if (found.empty()) {
        throw Failure{"There is no " + noun + " named “" + nameOrID + "”."};
    }
    if (found.size() > 1) {
        std::string message = "Several have the name “" + nameOrID + "”. Use an id:";
        for (const Uuid& candidate : found) {
            message += "\n  " + candidate.text();
        }
        throw Failure{message};
    }
    return found.front();
}

} // namespace ombrel
