#include "knowledge/ParentText.h"

#include <cstddef>
#include <limits>
#include <string>

namespace ombrel {

namespace {

std::int64_t saturatedSum(std::int64_t a, std::int64_t b) {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) {
        return b > 0 ? std::numeric_limits<std::int64_t>::max()
                     : std::numeric_limits<std::int64_t>::min();
    }
    return sum;
}

} // namespace

ChunkArray assignParentText(ChunkArray chunks, std::int64_t budget) {
    const auto closeGroup = [&](std::size_t begin, std::size_t end) {
        std::string parent;
        for (std::size_t i = begin; i < end; ++i) {
            parent += i == begin ? "" : "\n\n";
            parent += chunks[i].text;
        }
        for (std::size_t i = begin; i < end; ++i) {
            if (chunks[i].parentText != parent) {
                chunks.edit()[i].parentText = parent;
            }
        }
    };
    std::size_t begin = 0;
    std::int64_t groupTokens = 0;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const std::int64_t tokens = chunks[i].tokenCount;
        const bool isOtherSection = i > begin && chunks[i].breadcrumb != chunks[begin].breadcrumb;
        const bool isOverBudget = groupTokens >= 1 && saturatedSum(groupTokens, tokens) > budget;
        if (isOtherSection || isOverBudget) {
            closeGroup(begin, i);
            begin = i;
            groupTokens = 0;
        }
        groupTokens = saturatedSum(groupTokens, tokens);
    }
    closeGroup(begin, chunks.size());
    return chunks;
}

ChunkArray clearParentText(ChunkArray chunks) {
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (chunks[i].parentText) {
            chunks.edit()[i].parentText.reset();
        }
    }
    return chunks;
}

} // namespace ombrel
