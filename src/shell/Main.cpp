#include "platform/UserFolders.h"
#include "shell/Application.h"
#include "shell/QtText.h"
#include "shell/SingleInstance.h"
#include "shell/StudioServices.h"
#include "shell/TerminationSignals.h"
#include "shell/design/Theme.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>

#include <cstdio>

int main(int argc, char** argv) {
    using namespace ombrel;
    QApplication::setApplicationName(QStringLiteral("Ombrel Studio"));
    QApplication::setApplicationVersion(QStringLiteral(OMBREL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("ombrel-studio"));
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/ombrel-studio.svg")));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QApplication::translate("Main", "Builds on-device AI features from your own documents."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QApplication::translate("Main", "Projects to open."),
                                 QStringLiteral("[FILE…]"));
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
