#pragma once

#include "core/AppState.h"
#include "core/BuildSettings.h"
#include "core/IndexedChunks.h"
#include "export/PackageForm.h"
#include "platform/FileOperations.h"
#include "platform/LanguageRecognizer.h"
#include "platform/Result.h"

#include <filesystem>
#include <string>
#include <string_view>

// Turns chunks into a Swift package that holds them with a working search and answer. It finds, in
// the same order, what a CompositeSearcher over the same chunks finds.
namespace ombrel {

// Writes the package of this name, five files, into a folder of its name in `destination`, and
// gives that folder. Folders on the way are made, files of these names are replaced, each as a
// whole, and other files are left alone. A failure reads "{path}: {the system's description}"; what
// was written until then stays. Any thread.
Result<std::filesystem::path> generatePackage(std::string_view name, const BuildSettings& settings,
                                              const IndexedChunks& pairs,
                                              const std::filesystem::path& destination,
                                              const LanguageRecognizer& languages,
                                              PackageForm form = PackageForm::arrayLiteral,
                                              FileOperations& files = FileOperations::system());

// The package of the current index with the settings in force, named after the project. Main
// thread.
Result<std::filesystem::path> exportPackage(const AppState& state,
                                            const std::filesystem::path& destination,
                                            PackageForm form = PackageForm::arrayLiteral);

} // namespace ombrel
