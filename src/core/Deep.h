#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace ombrel {

// A value on the heap, so that a record can hold its own type, to any depth: copies share it, and
// copying, comparing, destroying, encoding and decoding never recurse into it. Immutable, but for
// who makes it. Any thread.
template <class T>
class Deep {
  public:
    Deep() = default;
    Deep(T value) : m_value(std::make_shared<T>(std::move(value))) {}
    Deep(const Deep&) = default;
    Deep(Deep&&) noexcept = default;
    Deep& operator=(Deep other) noexcept {
        m_value.swap(other.m_value);
        return *this;
    }
    ~Deep() { destroy(std::move(m_value)); }

    // A default value when none was given.
    const T& operator*() const {
        static const T none{};
        return m_value ? *m_value : none;
    }
    const T* operator->() const { return &**this; }

    // A new default value to fill in place, before there are copies.
    T& emplace() {
        destroy(std::move(m_value));
        m_value = std::make_shared<T>();
        return *m_value;
    }

    friend bool operator==(const Deep& a, const Deep& b) {
        return a.m_value == b.m_value || isEqual(*a, *b);
    }

  private:
    // Destroying a value destroys those inside it. The outermost call of a thread does it for all,
    // one after the other.
    static void destroy(std::shared_ptr<T> value) {
        static thread_local std::vector<std::shared_ptr<T>>* waiting = nullptr;
        if (!value) {
            return;
        }
        if (waiting) {
            waiting->push_back(std::move(value));
            return;
        }
        std::vector<std::shared_ptr<T>> mine;
        waiting = &mine;
        value.reset();
        while (!mine.empty()) {
            value = std::move(mine.back());
            mine.pop_back();
            value.reset();
        }
        waiting = nullptr;
    }

    // In the same way: inside another comparison, what this one would find out is left to that.
    static bool isEqual(const T& a, const T& b) {
        static thread_local std::vector<std::pair<const T*, const T*>>* waiting = nullptr;
        if (waiting) {
            waiting->emplace_back(&a, &b);
            return true;
        }
        std::vector<std::pair<const T*, const T*>> mine{{&a, &b}};
        waiting = &mine;
        bool equal = true;
        while (equal && !mine.empty()) {
            const auto [left, right] = mine.back();
            mine.pop_back();
            equal = *left == *right;
        }
        waiting = nullptr;
        return equal;
    }

    std::shared_ptr<T> m_value;
};

} // namespace ombrel
