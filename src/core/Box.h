#pragma once

#include <memory>
#include <utility>

namespace ombrel {

// A value on the heap, copied and compared as a value, so that a record can hold its own type.
template <class T>
class Box {
  public:
    Box() : m_value(std::make_unique<T>()) {}
    Box(T value) : m_value(std::make_unique<T>(std::move(value))) {}
    Box(const Box& other) : m_value(std::make_unique<T>(*other.m_value)) {}
    Box(Box&& other) noexcept : m_value(std::exchange(other.m_value, std::make_unique<T>())) {}
    Box& operator=(Box other) noexcept {
        m_value.swap(other.m_value);
        return *this;
    }
    ~Box() = default;

    T& operator*() { return *m_value; }
    const T& operator*() const { return *m_value; }
    T* operator->() { return m_value.get(); }
    const T* operator->() const { return m_value.get(); }

    friend bool operator==(const Box& a, const Box& b) { return *a.m_value == *b.m_value; }

  private:
    std::unique_ptr<T> m_value; // never null
};

} // namespace ombrel
