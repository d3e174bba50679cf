#include "platform/ServiceSettings.h"

#include "platform/UserFolders.h"
#include "tests/platform/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/stat.h>

namespace ombrel {
namespace {

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

class ServiceSettingsTest : public testing::Test {
  protected:
    test::TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.path() / "Ombrel" / "settings.json";
};

TEST_F(ServiceSettingsTest, WithoutAFileTheyAreTheDefaults) {
    const auto loaded = ServiceSettings::load(m_file);
    EXPECT_EQ(loaded.settings, ServiceSettings());
    EXPECT_EQ(loaded.problem, std::nullopt);
    EXPECT_EQ(loaded.settings.contextTokens, 8192);
    EXPECT_EQ(loaded.settings.modelsPath(), userDataFolder() / "Models");
    EXPECT_FALSE(std::filesystem::exists(m_file));
}

TEST_F(ServiceSettingsTest, ReadBackAsTheyWereSaved) {
    ServiceSettings settings;
    settings.modelsFolder = "/models \"of mine\"";
    settings.languageModel = "a.gguf";
    settings.embeddingModel = "b.gguf";
    settings.serverURL = "http://localhost:11434";
    settings.serverKey = "k";
    settings.serverModel = "m";
    settings.embeddingServerURL = "http://localhost:1234/v1";
    settings.embeddingServerKey = "ek";
    settings.embeddingServerModel = "em";
    settings.contextTokens = 16384;
    ASSERT_TRUE(settings.save(m_file));
    const auto loaded = ServiceSettings::load(m_file);
    EXPECT_EQ(loaded.settings, settings);
    EXPECT_EQ(loaded.problem, std::nullopt);
    EXPECT_EQ(loaded.settings.modelsPath(), "/models \"of mine\"");
}

TEST_F(ServiceSettingsTest, AreReadableByTheirUserAlone) {
    ASSERT_TRUE(ServiceSettings().save(m_file));
    struct stat status {};
    ASSERT_EQ(stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(ServiceSettingsTest, KeepKeysThatAreNotKnown) {
    const auto file =
        m_folder.write("settings.json",
                       "\xEF\xBB\xBF{\"theme\": {\"dark\": [1, 2.5, null]}, \"serverKey\": \"a\"}");
    auto loaded = ServiceSettings::load(file);
    EXPECT_EQ(loaded.problem, std::nullopt);
    EXPECT_EQ(loaded.settings.serverKey, "a");
    loaded.settings.serverKey = "b";
    ASSERT_TRUE(loaded.settings.save(file));
    EXPECT_EQ(contents(file).substr(0, 107),
              "{\n  \"theme\": {\n    \"dark\": [\n      1,\n      2.5,\n"
              "      null\n    ]\n  },\n  \"serverKey\": \"b\",\n  "
              "\"modelsFolder\"");
    EXPECT_EQ(ServiceSettings::load(file).settings, loaded.settings);
}

TEST_F(ServiceSettingsTest, ABrokenFileGivesTheDefaultsAndIsNotOverwritten) {
    for (const std::string& broken : std::initializer_list<std::string>{
             "{\"serverKey\": \"a\",", "[1]", "serverKey = a",
             "{\"a\":" + std::string(100000, '[') + std::string(100000, ']') + "}"}) {
        const auto file = m_folder.write("settings.json", broken);
        const auto loaded = ServiceSettings::load(file);
        EXPECT_EQ(loaded.settings, ServiceSettings());
        ASSERT_TRUE(loaded.problem);
        EXPECT_TRUE(loaded.problem->message.starts_with("The settings in " + file.string() +
                                                        " were not used: it "))
            << loaded.problem->message;
        EXPECT_FALSE(loaded.settings.save(file));
        EXPECT_EQ(contents(file), broken);
    }
}

TEST_F(ServiceSettingsTest, AValueThatMakesNoSenseGivesTheDefaults) {
    const auto file = m_folder.write("settings.json", R"({"serverKey": "a", "contextTokens": -5})");
    const auto loaded = ServiceSettings::load(file);
    EXPECT_EQ(loaded.settings, ServiceSettings());
    ASSERT_TRUE(loaded.problem);
    EXPECT_EQ(loaded.problem->message,
              "The settings in " + file.string() +
                  " were not used: \"contextTokens\" is not a whole number from 512 to 1048576.");
    m_folder.write("settings.json", R"({"serverURL": 5})");
    EXPECT_EQ(ServiceSettings::load(file).problem->message,
              "The settings in " + file.string() +
                  " were not used: \"serverURL\" is not a string.");
}

TEST_F(ServiceSettingsTest, AFileThatCannotBeReadIsAProblem) {
    std::filesystem::create_directories(m_file);
    EXPECT_TRUE(ServiceSettings::load(m_file).problem);
    EXPECT_FALSE(ServiceSettings().save(m_file));
}

TEST_F(ServiceSettingsTest, AnEmptyFileIsNone) {
    const auto file = m_folder.write("settings.json", " \n");
    EXPECT_EQ(ServiceSettings::load(file).problem, std::nullopt);
    EXPECT_TRUE(ServiceSettings().save(file));
}

TEST_F(ServiceSettingsTest, StandInTheUsersConfigurationFolder) {
    const char* before = std::getenv("XDG_CONFIG_HOME");
    const std::string saved = before ? before : "";
    setenv("XDG_CONFIG_HOME", m_folder.path().c_str(), 1);
    ServiceSettings settings;
    settings.serverModel = "m";
    ASSERT_TRUE(settings.save());
    EXPECT_EQ(ServiceSettings::load().settings, settings);
    EXPECT_EQ(ServiceSettings::load(m_file).settings, settings);
    // A relative one is not one.
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_TRUE(userConfigFolder().is_absolute());
    if (before) {
        setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
    } else {
        unsetenv("XDG_CONFIG_HOME");
    }
}

} // namespace
} // namespace ombrel
