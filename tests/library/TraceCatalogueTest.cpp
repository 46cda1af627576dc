#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

// docs/reference.md lists every trace message of the library; this holds the list against the sources.

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/** The format of every FH_TRACE statement in a source, its adjacent string literals joined. */
std::set<std::string> formatsIn(const std::string& source) {
    static const std::regex statement(R"re(FH_TRACE\([^,]+,[^,"]+,\s*((?:"(?:[^"\\]|\\.)*"\s*)+))re");
    static const std::regex literal(R"re("((?:[^"\\]|\\.)*)")re");
    std::set<std::string> formats;
    for (std::sregex_iterator found(source.begin(), source.end(), statement), end; found != end; ++found) {
        const std::string literals = (*found)[1];
        std::string format;
        for (std::sregex_iterator part(literals.begin(), literals.end(), literal); part != end; ++part) {
            format += (*part)[1];
        }
        formats.insert(format);
    }
    return formats;
}

std::set<std::string> formatsOfTheLibrary() {
    std::set<std::string> formats;
    for (const auto& entry : fs::recursive_directory_iterator(LIBRARY_SOURCES)) {
        if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") {
            formats.merge(formatsIn(contentOf(entry.path())));
        }
    }
    return formats;
}

/** What stands in code font in the first column of the tables below "Trace messages". */
std::set<std::string> formatsOfTheCatalogue() {
    const std::string reference = contentOf(REFERENCE_PAGE);
    const std::string catalogue = reference.substr(reference.find("### Frequency module"));
    static const std::regex row(R"re(\n\| `([^`]*)` \|)re");
    std::set<std::string> formats;
    for (std::sregex_iterator found(catalogue.begin(), catalogue.end(), row), end; found != end; ++found) {
        formats.insert((*found)[1]);
    }
    return formats;
}

} // namespace

TEST(TraceCatalogue, NamesEveryMessageOfTheLibrary) {
    const std::set<std::string> catalogue = formatsOfTheCatalogue();
    const std::set<std::string> sources = formatsOfTheLibrary();
    EXPECT_GE(sources.size(), 40U);
    for (const std::string& format : sources) {
        EXPECT_THAT(catalogue, testing::Contains(format));
    }
}

TEST(TraceCatalogue, NamesNoMessageThatTheLibraryDoesNotHave) {
    const std::set<std::string> sources = formatsOfTheLibrary();
    for (const std::string& format : formatsOfTheCatalogue()) {
        EXPECT_THAT(sources, testing::Contains(format));
    }
}
