#include "radio/language/CommandTable.h"
#include "radio/language/HelpText.h"
#include "standalone/Calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <string>

namespace Radio {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

std::string contentOf(const char* file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(Documentation, ReferenceHasUsageOfEveryCommand) {
    const std::string page =
        std::regex_replace(contentOf(RADIO_DOCS "/radioctl.md"), std::regex(R"(\\\|)"), "|");
    for (const CommandInfo& info : commandTable()) {
        const std::string entry = "| `" + std::string(info.usage) + "` |";
        EXPECT_NE(page.find(entry), std::string::npos) << entry;
    }
}

TEST(Documentation, ReferenceHasEveryOperation) {
    const std::string page = contentOf(RADIO_DOCS "/radioctl.md");
    for (const Standalone::Operation operation : Standalone::allOperations()) {
        const std::string entry = "`" + std::string(Standalone::toString(operation)) + "`";
        EXPECT_NE(page.find(entry), std::string::npos) << entry;
    }
}

TEST(Documentation, HelpListsEveryCommand) {
    const std::string help = helpText("");
    for (const CommandInfo& info : commandTable()) {
        EXPECT_THAT(help, HasSubstr(std::string(info.name) + " "));
        EXPECT_THAT(help, HasSubstr(std::string(info.help) + "\n"));
    }
}

TEST(Documentation, HelpFitsIntoEightyColumns) {
    EXPECT_THAT(helpText(""), Not(ContainsRegex("[^\n]{80}")));
    for (const CommandInfo& info : commandTable()) {
        EXPECT_THAT(helpText(info.name), Not(ContainsRegex("[^\n]{80}")));
    }
}

TEST(Documentation, HelpBreaksLinesBetweenWords) {
    EXPECT_THAT(
        helpText("set"),
        HasSubstr(
            "\nThe handlers see a change at once where they keep the variable's "
            "address,\notherwise when its phase is run again, which the command then says. Fewer\nvalues"));
}

TEST(Documentation, HelpExplainsOneCommand) {
    EXPECT_EQ(helpText("temperature"),
              "temperature DEGREES [force]\nTells the radio its temperature: -100 to 200 degrees Celsius.\n"
              "Whole degrees, as its sensor gives them. Observers of the temperature are told\n"
              "when it changes.\n");
}

} // namespace
} // namespace Radio
