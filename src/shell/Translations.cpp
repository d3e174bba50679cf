#include "shell/Translations.h"

#include "platform/ResourceFolder.h"
#include "shell/QtText.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace ombrel {

namespace {

bool install(const QLocale& locale, const QString& name, const QString& folder) {
    auto translator = std::make_unique<QTranslator>(QCoreApplication::instance());
    if (!translator->load(locale, name, QStringLiteral("_"), folder)) {
        return false;
    }
    return QCoreApplication::installTranslator(translator.release());
}

} // namespace

void installTranslations(const QLocale& locale) {
    // Qt's own texts only beside ours: a window does not mix languages.
    if (install(locale, QStringLiteral("ombrel-studio"), toQt(resourceFolder() / "translations"))) {
        install(locale, QStringLiteral("qtbase"),
                QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    }
}

} // namespace ombrel
