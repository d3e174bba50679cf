#include "platform/CharacterBreaks.h"

#include "platform/NewerScalars.h"

#include <memory>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

namespace ombrel {

namespace {

bool makesConjuncts(UChar32 scalar) {
    switch (u_getIntPropertyValue(scalar, UCHAR_SCRIPT)) {
    case USCRIPT_BENGALI:
    case USCRIPT_DEVANAGARI:
    case USCRIPT_GUJARATI:
    case USCRIPT_MALAYALAM:
    case USCRIPT_ORIYA:
    case USCRIPT_TELUGU:
        return true;
    default:
        return false;
    }
}

BreakClass extendClass(UChar32 scalar) {
    if (u_getIntPropertyValue(scalar, UCHAR_INDIC_SYLLABIC_CATEGORY) == U_INSC_VIRAMA &&
        makesConjuncts(scalar)) {
        return BreakClass::virama;
    }
    return u_getCombiningClass(scalar) != 0 ? BreakClass::combining : BreakClass::extend;
}

BreakClass otherClass(UChar32 scalar) {
    if (u_hasBinaryProperty(scalar, UCHAR_EXTENDED_PICTOGRAPHIC) != 0) {
        return BreakClass::pictograph;
    }
    if (u_getIntPropertyValue(scalar, UCHAR_INDIC_SYLLABIC_CATEGORY) == U_INSC_CONSONANT &&
        makesConjuncts(scalar)) {
        return BreakClass::consonant;
    }
    return BreakClass::other;
}

BreakClass classOf(UChar32 scalar) {
    switch (u_getIntPropertyValue(scalar, UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_CR:
        return BreakClass::cr;
    case U_GCB_LF:
        return BreakClass::lf;
    case U_GCB_CONTROL:
        return BreakClass::control;
    case U_GCB_EXTEND:
        return extendClass(scalar);
    case U_GCB_ZWJ:
        return BreakClass::joiner;
    case U_GCB_SPACING_MARK:
        return BreakClass::spacingMark;
    case U_GCB_PREPEND:
        return isPrefixNoLonger(static_cast<char32_t>(scalar)) ? BreakClass::other
                                                               : BreakClass::prepend;
    case U_GCB_REGIONAL_INDICATOR:
        return BreakClass::regional;
    case U_GCB_L:
        return BreakClass::leading;
    case U_GCB_V:
        return BreakClass::vowel;
    case U_GCB_T:
        return BreakClass::trailing;
    case U_GCB_LV:
        return BreakClass::leadingVowel;
    case U_GCB_LVT:
        return BreakClass::fullSyllable;
    default:
        if (isNewerMark(static_cast<char32_t>(scalar))) {
            return BreakClass::extend;
        }
        return isNewerPrefix(static_cast<char32_t>(scalar)) ? BreakClass::prepend
                                                            : otherClass(scalar);
    }
}

} // namespace

constinit std::array<std::atomic<const BreakClassBlock*>, 0x110000 / 256> breakClassBlocks{};

// Kept until the process ends. When two threads make the same block, one of the two stays.
const BreakClassBlock& makeBreakClassBlock(std::size_t number) {
    auto block = std::make_unique<BreakClassBlock>();
    for (std::size_t i = 0; i < block->size(); ++i) {
        (*block)[i] = classOf(static_cast<UChar32>(number * block->size() + i));
    }
    const BreakClassBlock* present = nullptr;
    if (breakClassBlocks[number].compare_exchange_strong(present, block.get(),
                                                         std::memory_order_acq_rel)) {
        return *block.release();
    }
    return *present;
}

} // namespace ombrel
