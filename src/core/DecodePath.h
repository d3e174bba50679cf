#pragma once

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
