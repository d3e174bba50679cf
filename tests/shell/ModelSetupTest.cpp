#include "shell/ModelSetup.h"

#include "shell/ModelInstaller.h"
#include "shell/PreferencesWindow.h"
#include "tests/shell/Studio.h"

#include <QDialog>
#include <QProgressBar>

#include <filesystem>

namespace ombrel {
namespace {

using namespace test;

struct Fixture {
    Studio studio;
    DocumentWindow& window;

    explicit Fixture(const char* unavailableReason)
        : window([&]() -> DocumentWindow& {
              studio.platform.model->unavailableReason = unavailableReason;
              return studio.newDocument();
          }()) {
        window.document().state()->setSelectedTab(AppTab::sources);
        studio.settle();
    }
    QWidget& banner() { return find<QWidget>(window, "modelSetup"); }
    std::string text() { return textOf(banner(), "bannerText"); }
    // The installer of this studio is a program that the test writes.
    void writeInstaller(const std::string& script) {
        const auto file = studio.folder.write("install-models", "#!/bin/sh\n" + script);
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }
    ModelInstaller& installer() { return studio.services().modelInstaller(); }
    QDialog& dialog() { return find<QDialog>(window, "modelInstall"); }
};

TEST(ModelSetup, IsHiddenWhileNothingIsMissing) {
    Studio studio;
    auto& window = studio.newDocument();
    window.document().state()->setSelectedTab(AppTab::sources);
    studio.settle();
    EXPECT_FALSE(isShown(window, "modelSetup"));
}

TEST(ModelSetup, OffersToInstallAMissingModel) {
    Fixture f("modelNotInstalled");
    EXPECT_TRUE(isShown(f.window, "modelSetup"));
    EXPECT_EQ(f.text(), "No language model is installed yet. It writes answers, notes and test "
                        "questions, on this machine.");
    EXPECT_TRUE(isShown(f.window, "modelSetup.install"));
    EXPECT_FALSE(isShown(f.window, "modelSetup.retry"));
}

TEST(ModelSetup, TellsOfAServerThatDoesNotAnswerAndTriesItAgain) {
    Fixture f("modelNotReady");
    EXPECT_NE(f.text().find("doesn’t answer"), std::string::npos);
    EXPECT_FALSE(isShown(f.window, "modelSetup.install"));
    f.studio.platform.model->unavailableReason.reset();
    click(f.window, "modelSetup.retry");
    EXPECT_FALSE(isShown(f.window, "modelSetup"));
}

TEST(ModelSetup, OpensThePreferences) {
    Fixture f("modelNotInstalled");
    click(f.window, "modelSetup.preferences");
    ASSERT_TRUE(f.studio.application().preferencesWindow());
    EXPECT_TRUE(f.studio.application().preferencesWindow()->isVisible());
}

TEST(Preferences, SayInWordsWhatIsMissingAndOfferToInstallIt) {
    Studio studio;
    studio.platform.model->unavailableReason = "modelNotInstalled";
    studio.application().showPreferences();
    QWidget& preferences = *studio.application().preferencesWindow();
    studio.settle();
    EXPECT_FALSE(isShown(preferences, "preferences.status"));
    EXPECT_EQ(textOf(find<QWidget>(preferences, "modelSetup"), "bannerText"),
              "No language model is installed yet. It writes answers, notes and test questions, on "
              "this machine.");
    EXPECT_FALSE(isShown(preferences, "modelSetup.preferences"));
    click(preferences, "modelSetup.install");
    EXPECT_TRUE(find<QDialog>(preferences, "modelInstall").isVisible());

    studio.platform.model->unavailableReason.reset();
    studio.services().makeServicesAnew();
    studio.settle();
    EXPECT_FALSE(isShown(preferences, "modelSetup"));
    EXPECT_EQ(textOf(find<QWidget>(preferences, "preferences.status"), "bannerText"),
              "The language model is ready.");
}

TEST(ModelSetup, InstallsAndUsesTheModelsAtOnce) {
    Fixture f("modelNotInstalled");
    f.writeInstaller("echo 'Installing the model server' >&2\n"
                     "echo 'Downloading server.tar.gz, 37 MB: 25%' >&2\n"
                     "while [ ! -e \"$(dirname \"$0\")/go\" ]; do sleep 0.02; done\n"
                     "echo 'Installed in a folder' >&2\n");
    click(f.window, "modelSetup.install");
    EXPECT_TRUE(f.dialog().isVisible());
    EXPECT_EQ(textOf(f.dialog(), "modelInstall.go"), "Install");
    click(f.dialog(), "modelInstall.go");
    ASSERT_TRUE(f.studio.until([&] { return f.installer().percent() == 25; }));
    EXPECT_EQ(textOf(f.dialog(), "modelInstall.step"), "Downloading server.tar.gz, 37 MB");
    EXPECT_EQ(find<QProgressBar>(f.dialog(), "modelInstall.progress").value(), 25);
    // The page tells it too, also when the dialog is gone.
    EXPECT_EQ(f.text(), "Installing models — Downloading server.tar.gz, 37 MB, 25%");
    EXPECT_EQ(textOf(f.dialog(), "modelInstall.close"), "Run in Background");
    click(f.dialog(), "modelInstall.close");
    f.studio.settle();
    EXPECT_TRUE(f.installer().isRunning());
    click(f.window, "modelSetup.install");
    EXPECT_EQ(textOf(f.dialog(), "modelInstall.go"), "Stop");

    f.studio.platform.model->unavailableReason.reset();
    f.studio.folder.write("go", "");
    ASSERT_TRUE(f.studio.until([&] { return !f.installer().isRunning(); }));
    EXPECT_EQ(f.installer().state(), ModelInstaller::State::succeeded);
    EXPECT_TRUE(isShown(f.dialog(), "modelInstall.success"));
    EXPECT_FALSE(isShown(f.window, "modelSetup"));
    click(f.dialog(), "modelInstall.go");
    f.studio.settle();
    EXPECT_FALSE(f.window.findChild<QDialog*>("modelInstall"));
}

TEST(ModelSetup, SaysWhyAnInstallationFailedAndTriesAgain) {
    Fixture f("modelNotInstalled");
    f.writeInstaller("echo 'install-models: The disk is full: free some space.' >&2\nexit 1\n");
    click(f.window, "modelSetup.install");
    click(f.dialog(), "modelInstall.go");
    ASSERT_TRUE(
        f.studio.until([&] { return f.installer().state() == ModelInstaller::State::failed; }));
    EXPECT_EQ(textOf(find<QWidget>(f.dialog(), "modelInstall.problem"), "bannerText"),
              "The disk is full: free some space.");
    EXPECT_EQ(textOf(f.dialog(), "modelInstall.go"), "Try Again");
    f.writeInstaller("exit 0\n");
    click(f.dialog(), "modelInstall.go");
    ASSERT_TRUE(
        f.studio.until([&] { return f.installer().state() == ModelInstaller::State::succeeded; }));
}

TEST(ModelSetup, AnInstallationCanBeStoppedAndGoesOn) {
    Fixture f("modelNotInstalled");
    f.writeInstaller("echo Working >&2\nexec sleep 600\n");
    click(f.window, "modelSetup.install");
    click(f.dialog(), "modelInstall.go");
    ASSERT_TRUE(f.studio.until([&] { return f.installer().step() == "Working"; }));
    click(f.dialog(), "modelInstall.go");
    ASSERT_TRUE(
        f.studio.until([&] { return f.installer().state() == ModelInstaller::State::stopped; }));
    EXPECT_EQ(textOf(f.dialog(), "modelInstall.go"), "Continue");
    EXPECT_EQ(textOf(f.dialog(), "modelInstall.step"),
              "Stopped. It goes on where it was when you start it again.");
}

TEST(ModelSetup, AMissingInstallerIsAFailureThatSaysSo) {
    Fixture f("modelNotInstalled");
    click(f.window, "modelSetup.install");
    click(f.dialog(), "modelInstall.go");
    EXPECT_EQ(f.installer().state(), ModelInstaller::State::failed);
    EXPECT_TRUE(isShown(f.dialog(), "modelInstall.problem"));
    EXPECT_NE(f.installer().problem().indexOf("install-models"), -1);
}

} // namespace
} // namespace ombrel
