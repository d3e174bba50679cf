#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// Where decoding is: a key or an index for each container that it is inside.
class DecodePath {
  public:
    // The key must live until it is popped.
    void push(std::string_view key) { m_steps.push_back({key, 0, true}); }
    void push(std::uint64_t index) { m_steps.push_back({{}, index, false}); }
    void pop() { m_steps.pop_back(); }
    std::size_t size() const { return m_steps.size(); }
    // Drops all but the first `count` steps.
    void keep(std::size_t count) {
        m_steps.erase(m_steps.begin() + static_cast<std::ptrdiff_t>(count), m_steps.end());
    }
    // The steps behind the first `count`.
    DecodePath after(std::size_t count) const {
        DecodePath rest;
        rest.m_steps.assign(m_steps.begin() + static_cast<std::ptrdiff_t>(count), m_steps.end());
        return rest;
    }
    void append(const DecodePath& rest) {
        m_steps.insert(m_steps.end(), rest.m_steps.begin(), rest.m_steps.end());
    }
    // "ragIndexes[0].name"; a key that is not a plain word is written as `["a key"]`.
    std::string text() const;

  private:
    struct Step {
        std::string_view key;
        std::uint64_t index;
        bool isKey;
    };
    std::vector<Step> m_steps;
};

} // namespace ombrel
