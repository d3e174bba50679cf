#include "shell/QtText.h"

#include <QFile>
#include <QLocale>

namespace ombrel {

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString toQt(const std::string& text) {
    return QString::fromStdString(text);
}

QString toQt(const char* text) {
    return QString::fromUtf8(text);
}

QString toQt(const std::filesystem::path& path) {
    return QFile::decodeName(path.c_str());
}

std::string fromQt(const QString& text) {
    return text.toStdString();
}

std::filesystem::path pathFromQt(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

QString desktopText(std::string_view text) {
    QString result = toQt(text);
    result.replace(QStringLiteral("\u2318\u21e7"), QStringLiteral("Ctrl+Shift+"));
    result.replace(QStringLiteral("\u2318"), QStringLiteral("Ctrl+"));
    return result;
}

QString numberText(std::int64_t number) {
    return QLocale().toString(static_cast<qlonglong>(number));
}

} // namespace ombrel
