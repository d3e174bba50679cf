#pragma once

#include <QString>

#include <filesystem>
#include <string>
#include <string_view>

// The engine's text is UTF-8, Qt's is UTF-16.
namespace ombrel {

QString toQt(std::string_view text);
QString toQt(const std::string& text);
QString toQt(const char* text);
QString toQt(const std::filesystem::path& path);
std::string fromQt(const QString& text);
std::filesystem::path pathFromQt(const QString& path);

// A text of the engine as this desktop says it: keys are named by its own names, "Ctrl+B" for "⌘B".
QString desktopText(std::string_view text);

// "1,234" by the user's locale.
QString numberText(std::int64_t number);

} // namespace ombrel
