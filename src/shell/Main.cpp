#include "platform/UserFolders.h"
#include "shell/Application.h"
#include "shell/QtText.h"
#include "shell/SingleInstance.h"
#include "shell/StudioServices.h"
#include "shell/TerminationSignals.h"
#include "shell/Translations.h"
#include "shell/design/Theme.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QLocale>

#include <cstdio>

namespace {

void describe(QCommandLineParser& parser) {
    parser.setApplicationDescription(QCoreApplication::translate(
        "Main", "Builds on-device AI features from your own documents."));
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QCoreApplication::translate("Main", "Projects to open."),
                                 QStringLiteral("[FILE…]"));
}

// Tells version or usage, and ends, if that is all that is asked for: it needs no display.
void answerWithoutDisplay(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ombrel::installTranslations(QLocale());
    QCommandLineParser parser;
    describe(parser);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.parse(QCoreApplication::arguments());
    if (parser.isSet(version)) {
        parser.showVersion();
    }
    if (parser.isSet(help)) {
        parser.showHelp();
    }
}

} // namespace

int main(int argc, char** argv) {
    using namespace ombrel;
    QCoreApplication::setApplicationName(QStringLiteral("Ombrel Studio"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OMBREL_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("ombrel-studio"));
    answerWithoutDisplay(argc, argv);
    QApplication application(argc, argv);
    installTranslations(QLocale());
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/ombrel-studio.svg")));

    QCommandLineParser parser;
    describe(parser);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(application);
    std::vector<std::filesystem::path> files;
    const QStringList names = parser.positionalArguments();
    for (const QString& name : names) {
        files.push_back(pathFromQt(name));
    }

    SingleInstance instance(userConfigFolder());
    if (instance.handOver(files)) {
        return 0;
    }
    const auto services = StudioServices::ofThisUser();
    Theme::current().followDesktop();
    Application studio(*services);
    if (!instance.listen([&studio](const auto& more) { studio.reopen(more); })) {
        std::fprintf(stderr, "ombrel-studio: other starts of the program can't reach this one\n");
    }
    const TerminationSignals signals([&studio] { studio.terminate(); });
    studio.launch(files);
    return QApplication::exec();
}
