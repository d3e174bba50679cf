#pragma once

#include "platform/Uuid.h"

#include <utility>
#include <vector>

namespace ombrel {

// The first element with the id, or null. The pointer is good until the vector is changed.
template <class T>
const T* findByID(const std::vector<T>& list, Uuid id) {
    for (const T& element : list) {
        if (element.id == id) {
            return &element;
        }
    }
    return nullptr;
}

template <class T>
T* findByID(std::vector<T>& list, Uuid id) {
    return const_cast<T*>(findByID(std::as_const(list), id));
}

} // namespace ombrel
