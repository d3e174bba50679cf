#pragma once

namespace ombrel {

// How a generated package holds its chunks. Names of files, public interface and results are the
// same in both.
enum class PackageForm {
    // One array literal that people can read. The compiler needs far more than linear time for it,
    // and refuses some control characters.
    arrayLiteral,
    // String literals that are decoded when the package is first searched: for any number of
    // chunks, and every character.
    compact,
};

} // namespace ombrel
