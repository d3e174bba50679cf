#pragma once

// The one scale of distances and corners, in device-independent pixels.
namespace ombrel::spacing {

inline constexpr int hair = 2;
inline constexpr int tight = 4;
inline constexpr int small = 8;
inline constexpr int medium = 12;
inline constexpr int large = 16;
inline constexpr int wide = 24;
inline constexpr int page = 32;

inline constexpr int corner = 6;      // of controls
inline constexpr int cardCorner = 10; // of cards and tiles
inline constexpr int icon = 16;       // beside body text
inline constexpr int largeIcon = 40;  // of an empty state
inline constexpr int readable = 1120; // the most that a page of text and cards is wide

} // namespace ombrel::spacing
