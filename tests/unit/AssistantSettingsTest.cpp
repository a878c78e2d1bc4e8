// The assistant level and the experience plan through the platform's tools.
#include "FakeHelpers.h"

using velmar::quil::QuilConfigUtils;

namespace {

class AssistantSettingsTest : public fake::FakeTest {};

TEST_F(AssistantSettingsTest, LevelIsReadFromTheToolAndClearedWhenItFails) {
    // Whether the tool's answer was read, and what it left of a level "product".
    auto read = [](int status, const std::string& output) {
        fake::pushExec(status, output);
        std::string level = "product";
        const bool read = QuilConfigUtils::getVEBrainLevel(level);
        return (read ? "read " : "failed ") + level;
    };
    EXPECT_EQ(read(0, "{\"level\":\"preview\"}\n"), "read preview");
    EXPECT_EQ(fake::execCommands().at(0), "/usr/bin/vebrain_level get");
    EXPECT_EQ(read(1, "no such tool"), "failed ");
    EXPECT_TRUE(fake::loggedExactly("command failed, output: no such tool", 4));
    EXPECT_EQ(read(0, ""), "failed ");
    EXPECT_TRUE(fake::loggedExactly("invalid result: ", 4));
    // JSON without the field keeps the value, and says so.
    EXPECT_EQ(read(0, "{\"lvl\":\"x\"}"), "failed product");
    EXPECT_TRUE(fake::loggedExactly("invalid result: {\"lvl\":\"x\"}", 4));
}

TEST_F(AssistantSettingsTest, OnlyTheThreeLevelWordsReachTheShell) {
    for (const char* word : {"preview", "product", "preview4test"}) {
        fake::pushExec(0, "");
        EXPECT_TRUE(QuilConfigUtils::setVEBrainLevel(word)) << word;
        EXPECT_EQ(fake::execCommands().back(), std::string("/usr/bin/vebrain_level ") + word);
    }
    for (const char* word : {"Preview", "", "product; reboot", "preview "}) {
        EXPECT_FALSE(QuilConfigUtils::setVEBrainLevel(word)) << word;
        EXPECT_TRUE(fake::loggedExactly(std::string("ve brain level not supported: ") + word, 4));
    }
    EXPECT_EQ(fake::execCommands().size(), 3u);

    fake::pushExec(2, "busy");
    EXPECT_FALSE(QuilConfigUtils::setVEBrainLevel("product"));
    EXPECT_TRUE(fake::loggedExactly("command failed, output: busy", 4));
}

TEST_F(AssistantSettingsTest, ExperiencePlanTakesOnlyTheExactWords) {
    // Whether the tool's answer was read, and the plan it left.
    auto read = [](bool enabled, int status, const std::string& output) {
        fake::pushExec(status, output);
        const bool ok = QuilConfigUtils::getExperiencePlan(enabled);
        return std::string(ok ? "read " : "failed ") + (enabled ? "on" : "off");
    };
    EXPECT_EQ(read(false, 0, "{\"enable\":\"true\"}"), "read on");
    EXPECT_EQ(fake::execCommands().at(0), "/usr/bin/experience_plan get");
    EXPECT_EQ(read(true, 0, "{\"enable\":\"false\"}"), "read off");
    // Failures never touch the value.
    for (const char* output : {"{\"enable\":\"TRUE\"}", "{\"enable\":true}", "not json"})
        EXPECT_EQ(read(true, 0, output), "failed on") << output;
    EXPECT_TRUE(fake::loggedExactly("invalid result: not json", 4));
    EXPECT_EQ(read(false, 127, ""), "failed off");
    EXPECT_TRUE(fake::loggedExactly("command failed, output: ", 4));

    fake::pushExec(0, "");
    EXPECT_TRUE(QuilConfigUtils::setExperiencePlan(false));
    EXPECT_EQ(fake::execCommands().back(), "/usr/bin/experience_plan false");
    fake::pushExec(1, "denied");
    EXPECT_FALSE(QuilConfigUtils::setExperiencePlan(true));
    EXPECT_EQ(fake::execCommands().back(), "/usr/bin/experience_plan true");
    EXPECT_TRUE(fake::loggedExactly("command failed", 4));
}

}  // namespace
