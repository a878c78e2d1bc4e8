// The assistant level and the experience plan through the platform's tools.
#include "velmar/fake/FakeTest.h"
#include "velmar/quil/QuilConfigUtils.h"

using velmar::quil::QuilConfigUtils;
namespace fake = velmar::fake;

namespace {

class AssistantSettingsTest : public fake::FakeTest {};

TEST_F(AssistantSettingsTest, LevelIsReadFromTheToolAndClearedWhenItFails) {
    std::string level;
    fake::pushExec(0, "{\"level\":\"product\"}\n");
    EXPECT_TRUE(QuilConfigUtils::getVEBrainLevel(level));
    EXPECT_EQ(level, "product");
    EXPECT_EQ(fake::execCommands().at(0), "/usr/bin/vebrain_level get");

    fake::pushExec(1, "no such tool");
    EXPECT_FALSE(QuilConfigUtils::getVEBrainLevel(level));
    EXPECT_EQ(level, "");
    EXPECT_TRUE(fake::loggedExactly("command failed, output: no such tool", 4));

    level = "product";
    fake::pushExec(0, "");
    EXPECT_FALSE(QuilConfigUtils::getVEBrainLevel(level));
    EXPECT_EQ(level, "");
    EXPECT_TRUE(fake::loggedExactly("invalid result: ", 4));

    // JSON without the field keeps the value, and says so.
    level = "product";
    fake::pushExec(0, "{\"lvl\":\"x\"}");
    EXPECT_FALSE(QuilConfigUtils::getVEBrainLevel(level));
    EXPECT_EQ(level, "product");
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
    bool enabled = false;
    fake::pushExec(0, "{\"enable\":\"true\"}");
    EXPECT_TRUE(QuilConfigUtils::getExperiencePlan(enabled));
    EXPECT_TRUE(enabled);
    EXPECT_EQ(fake::execCommands().at(0), "/usr/bin/experience_plan get");
    fake::pushExec(0, "{\"enable\":\"false\"}");
    EXPECT_TRUE(QuilConfigUtils::getExperiencePlan(enabled));
    EXPECT_FALSE(enabled);

    // Failures never touch the value.
    enabled = true;
    fake::pushExec(0, "{\"enable\":\"TRUE\"}");
    EXPECT_FALSE(QuilConfigUtils::getExperiencePlan(enabled));
    fake::pushExec(0, "{\"enable\":true}");
    EXPECT_FALSE(QuilConfigUtils::getExperiencePlan(enabled));
    fake::pushExec(0, "not json");
    EXPECT_FALSE(QuilConfigUtils::getExperiencePlan(enabled));
    EXPECT_TRUE(fake::loggedExactly("invalid result: not json", 4));
    fake::pushExec(127, "");
    EXPECT_FALSE(QuilConfigUtils::getExperiencePlan(enabled));
    EXPECT_TRUE(fake::loggedExactly("command failed, output: ", 4));
    EXPECT_TRUE(enabled);

    fake::pushExec(0, "");
    EXPECT_TRUE(QuilConfigUtils::setExperiencePlan(false));
    EXPECT_EQ(fake::execCommands().back(), "/usr/bin/experience_plan false");
    fake::pushExec(1, "denied");
    EXPECT_FALSE(QuilConfigUtils::setExperiencePlan(true));
    EXPECT_EQ(fake::execCommands().back(), "/usr/bin/experience_plan true");
    EXPECT_TRUE(fake::loggedExactly("command failed", 4));
}

}  // namespace
