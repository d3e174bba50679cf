#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace ombrel {

// Keeps an observer registered as long as it lives.
class Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<void> token) : m_token(std::move(token)) {}

  private:
    std::shared_ptr<void> m_token;
};

// One field of the workspace whose changes are observable. Main thread only.
template <class T>
class Observed {
  public:
    Observed() = default;
    explicit Observed(T value) : m_value(std::move(value)) {}
    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;

    const T& operator*() const { return m_value; }
    const T* operator->() const { return &m_value; }

    Observed& operator=(T value) {
        m_value = std::move(value);
        notify();
        return *this;
    }

    // Write access; observers are told once, when it goes out of scope.
    class Edit {
      public:
        explicit Edit(Observed& field) : m_field(&field) {}
        Edit(Edit&& other) noexcept : m_field(std::exchange(other.m_field, nullptr)) {}
        Edit& operator=(Edit&&) = delete;
        ~Edit() {
            if (m_field) {
                m_field->notify();
            }
        }
        T& operator*() const { return m_field->m_value; }
        T* operator->() const { return &m_field->m_value; }

      private:
        Observed* m_field;
    };
    [[nodiscard]] Edit edit() { return Edit(*this); }

    // Sets the value; tells nobody when it is what the field holds already.
    void setIfChanged(T value) {
        if (!(m_value == value)) {
            *this = std::move(value);
        }
    }

    // `changed` is called after each change until the subscription is gone. An observer may
    // subscribe, unsubscribe and write fields.
    [[nodiscard]] Subscription observe(std::function<void()> changed) {
        std::erase_if(m_observers, [](const auto& weak) { return weak.expired(); });
        auto observer = std::make_shared<std::function<void()>>(std::move(changed));
        m_observers.push_back(observer);
        return Subscription(std::move(observer));
    }

  private:
    void notify() {
        if (m_observers.empty()) {
            return;
        }
        const auto observers = m_observers;
        for (const auto& weak : observers) {
            if (const auto observer = weak.lock()) {
                (*observer)();
            }
        }
        std::erase_if(m_observers, [](const auto& weak) { return weak.expired(); });
    }

    T m_value{};
    std::vector<std::weak_ptr<std::function<void()>>> m_observers;
};

} // namespace ombrel
