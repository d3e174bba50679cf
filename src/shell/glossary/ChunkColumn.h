#pragma once

#include "shell/design/Tone.h"

#include <QString>

#include <vector>

namespace ombrel {

// One way to cut the text of a diagram.
struct ChunkColumn {
    QString title;
    std::vector<int> groupSizes; // lines in each chunk
    bool headerPerGroup;         // each chunk begins with its heading
    int gapBetweenGroups;
    Tone color;
};

} // namespace ombrel
