#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace ombrel {

// An array that is cheap to copy: copies share one immutable vector until one of them is edited.
// Things that are computed from the whole array can be kept with it (`derived`): they are shared
// by all copies and dropped with the vector, or when it is edited.
// Reading and `derived` may be used from any thread; `edit` only where no other thread reads this
// same CowArray object.
template <class T>
class CowArray {
  public:
    // Places for derived things; who uses which is agreed between the users.
    static constexpr std::size_t derivedSlots = 4;

    CowArray() = default;
    CowArray(std::vector<T> values) : m_node(std::make_shared<Node>(std::move(values))) {}
    CowArray(std::initializer_list<T> values) : CowArray(std::vector<T>(values)) {}

    const std::vector<T>& values() const {
        static const std::vector<T> none;
        return m_node ? m_node->values : none;
    }
    operator const std::vector<T>&() const { return values(); }
    std::size_t size() const { return values().size(); }
    bool empty() const { return values().empty(); }
    auto begin() const { return values().begin(); }
    auto end() const { return values().end(); }
    const T& operator[](std::size_t i) const { return values()[i]; }

    // The vector for writing; copied first when it is shared. Everything derived is dropped.
    // The reference is good until this object is next copied.
    std::vector<T>& edit() {
        if (!m_node) {
            m_node = std::make_shared<Node>(std::vector<T>{});
        } else if (m_node.use_count() > 1) {
            m_node = std::make_shared<Node>(m_node->values);
        } else {
            m_node->derived = {};
        }
        return m_node->values;
    }

    // Equal identities mean the same memory. Null for an array that never held anything.
    const void* identity() const { return m_node.get(); }

    // What `make` gave for this array: made at most once for each slot while the array is not
    // edited. `make` takes `const std::vector<T>&` and returns std::shared_ptr<const D>; it must
    // not ask for the same slot. Null for an array without memory.
    template <class D, class Make>
    std::shared_ptr<const D> derived(std::size_t slot, Make&& make) const {
        if (!m_node) {
            return nullptr;
        }
        std::lock_guard lock(m_node->mutex);
        auto& place = m_node->derived[slot];
        if (!place) {
            place = std::shared_ptr<const D>(make(std::as_const(m_node->values)));
        }
        return std::static_pointer_cast<const D>(place);
    }

    friend bool operator==(const CowArray& a, const CowArray& b) {
        return a.m_node == b.m_node || a.values() == b.values();
    }

  private:
    struct Node {
        explicit Node(std::vector<T> v) : values(std::move(v)) {}
        std::vector<T> values;
        std::mutex mutex;
        std::array<std::shared_ptr<const void>, derivedSlots> derived;
    };
    std::shared_ptr<Node> m_node;
};

} // namespace ombrel
