#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

// Where a character (extended grapheme cluster) ends, as a finite automaton over scalars: the rules
// GB3 to GB13 of Unicode Standard Annex 29 with GB9c, which keeps Indic conjuncts together. The
// properties are ICU's. Any thread.
namespace ombrel {

// What the rules need to know of a scalar.
enum class BreakClass : std::uint8_t {
    other,
    cr,
    lf,
    control,
    extend,       // joins what is before it
    combining,    // the same, with a combining class: may stand inside a conjunct
    virama,       // the same, and makes a conjunct
    joiner,       // U+200D
    spacingMark,  // joins what is before it
    prepend,      // joins what is after it
    regional,     // pairs make a flag
    leading,      // Hangul: L
    vowel,        // V
    trailing,     // T
    leadingVowel, // LV
    fullSyllable, // LVT
    pictograph,   // Extended_Pictographic
    consonant,    // of the scripts that make conjuncts
};
inline constexpr std::size_t breakClassCount = 18;

// What the rules need to know of the text so far.
enum class BreakState : std::uint8_t {
    afterOther,
    afterCR,
    afterControl, // and at the start: whatever comes begins a character
    afterPrepend,
    afterRegional, // an odd number of them
    afterLeading,
    afterVowel,
    afterTrailing,
    afterPictograph,        // and scalars that extend it
    afterPictographJoiner,  // and a joiner
    afterConsonant,         // and combining scalars
    afterConjunctConsonant, // with a virama among them
};
inline constexpr std::size_t breakStateCount = 12;

struct BreakStep {
    bool breaksBefore = false; // a character ends before the scalar
    BreakState next = BreakState::afterOther;
};

constexpr BreakStep computeBreakStep(BreakState state, BreakClass scalar) {
    using enum BreakState;
    const bool isControl =
        scalar == BreakClass::cr || scalar == BreakClass::lf || scalar == BreakClass::control;
    const bool inPictograph = state == afterPictograph;
    const bool inConjunct = state == afterConsonant || state == afterConjunctConsonant;
    bool joins = state == afterPrepend && !isControl;                  // GB9b
    const bool joinsMarks = state != afterCR && state != afterControl; // GB4, GB9, GB9a
    switch (scalar) {
    case BreakClass::cr:
        return {true, afterCR};
    case BreakClass::lf:
        return {state != afterCR, afterControl}; // GB3
    case BreakClass::control:
        return {true, afterControl}; // GB5
    case BreakClass::extend:
        return {!joinsMarks, inPictograph ? state : afterOther};
    case BreakClass::combining:
        return {!joinsMarks, inPictograph || inConjunct ? state : afterOther};
    case BreakClass::virama:
        return {!joinsMarks,
                inConjunct ? afterConjunctConsonant : (inPictograph ? state : afterOther)};
    case BreakClass::joiner:
        return {!joinsMarks,
                inPictograph ? afterPictographJoiner : (inConjunct ? state : afterOther)};
    case BreakClass::spacingMark:
        return {!joinsMarks, afterOther};
    case BreakClass::other:
        return {!joins, afterOther};
    case BreakClass::prepend:
        return {!joins, afterPrepend};
    case BreakClass::regional: // GB12, GB13
        return state == afterRegional ? BreakStep{false, afterOther}
                                      : BreakStep{!joins, afterRegional};
    case BreakClass::leading: // GB6 to GB8
        return {!joins && state != afterLeading, afterLeading};
    case BreakClass::vowel:
        return {!joins && state != afterLeading && state != afterVowel, afterVowel};
    case BreakClass::trailing:
        return {!joins && state != afterVowel && state != afterTrailing, afterTrailing};
    case BreakClass::leadingVowel:
        return {!joins && state != afterLeading, afterVowel};
    case BreakClass::fullSyllable:
        return {!joins && state != afterLeading, afterTrailing};
    case BreakClass::pictograph: // GB11
        return {!joins && state != afterPictographJoiner, afterPictograph};
    case BreakClass::consonant: // GB9c
        return {!joins && state != afterConjunctConsonant, afterConsonant};
    }
    return {true, afterOther};
}

inline constexpr auto breakSteps = [] {
    std::array<std::array<BreakStep, breakClassCount>, breakStateCount> steps{};
    for (std::size_t state = 0; state < breakStateCount; ++state) {
        for (std::size_t scalar = 0; scalar < breakClassCount; ++scalar) {
            steps[state][scalar] =
                computeBreakStep(static_cast<BreakState>(state), static_cast<BreakClass>(scalar));
        }
    }
    return steps;
}();

inline BreakStep breakStep(BreakState state, BreakClass scalar) {
    return breakSteps[static_cast<std::size_t>(state)][static_cast<std::size_t>(scalar)];
}

// The classes are read from ICU once for each block of scalars that is met.
using BreakClassBlock = std::array<BreakClass, 256>;
extern constinit std::array<std::atomic<const BreakClassBlock*>, 0x110000 / 256> breakClassBlocks;
const BreakClassBlock& makeBreakClassBlock(std::size_t number);

inline BreakClass breakClass(char32_t scalar) {
    const std::size_t number = scalar / 256;
    const BreakClassBlock* block = breakClassBlocks[number].load(std::memory_order_acquire);
    return (block != nullptr ? *block : makeBreakClassBlock(number))[scalar % 256];
}

} // namespace ombrel
