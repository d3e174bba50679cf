#pragma once

#include "core/SearchHit.h"

#include <string>
#include <utility>
#include <vector>

namespace ombrel {

// What the model searched for and found while it answered: in the order of the calls, repeats
// kept. Main thread, where all tools are called.
struct RetrievalLog {
    std::vector<std::string> queries;
    std::vector<SearchHit> hits;

    void record(std::string query, const std::vector<SearchHit>& found) {
        queries.push_back(std::move(query));
        hits.insert(hits.end(), found.begin(), found.end());
    }
};

} // namespace ombrel
