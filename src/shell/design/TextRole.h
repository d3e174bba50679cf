#pragma once

namespace ombrel {

// The one scale of type.
enum class TextRole {
    title,   // of a page
    heading, // of a section or card
    strong,  // a name among body text
    body,
    caption,  // explains, in small
    overline, // an upper-case word above a group or figure
    figure,   // the large number of a tile
    code,     // in a fixed pitch
};

} // namespace ombrel
