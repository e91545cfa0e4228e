#include "base/name_clash.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

namespace fs = std::filesystem;

class NameClashTest : public ::testing::Test {
 protected:
    std::optional<NameClash> clash(const std::string& input, const std::string& output) {
        const std::vector<NamedInput> inputs{{"BLANK", "  "}, {"BASIC_H_FILE", input}};
        const std::vector<std::string> outputs{directory.file("other.dat"), output};
        return name_clash(inputs, outputs);
    }
    std::string at(const std::string& name) { return directory.file(name); }

    test::TemporaryDirectory directory;
};

TEST_F(NameClashTest, TheSameNameClashesWhetherTheFileExistsOrNot) {
    const auto found = clash(at("torvex.log"), at("torvex.log"));
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->input.key, "BASIC_H_FILE");
    EXPECT_EQ(found->output, at("torvex.log"));
    directory.write("torvex.log", "");
    EXPECT_TRUE(clash(at("torvex.log"), at("torvex.log")));
}

TEST_F(NameClashTest, OtherNamesDoNot) {
    EXPECT_FALSE(clash(at("hill.map"), at("torvex.log")));
    directory.write("hill.map", "a");
    directory.write("torvex.log", "a");
    EXPECT_FALSE(clash(at("hill.map"), at("torvex.log")));
    EXPECT_FALSE(clash(at("Torvex.log"), at("torvex.log")));
    EXPECT_FALSE(clash("", at("torvex.log")));
}

TEST_F(NameClashTest, DetoursLeadToTheSameName) {
    fs::create_directory(at("maps"));
    EXPECT_TRUE(clash(at("maps/../torvex.log"), at("torvex.log")));
    EXPECT_TRUE(clash(at("./torvex.log"), at("torvex.log")));
    EXPECT_TRUE(clash("  " + at("torvex.log") + "  ", at("torvex.log")));
    EXPECT_FALSE(clash(at("maps/torvex.log"), at("torvex.log")));
}

TEST_F(NameClashTest, RelativeNamesCountFromTheCurrentDirectory) {
    const std::string name = "torvex-name-clash-test.log";
    EXPECT_TRUE(clash((fs::current_path() / name).string(), name));
    EXPECT_FALSE(clash(at(name), name));
}

TEST_F(NameClashTest, LinksToTheSameFileClash) {
    directory.write("hill.map", "a");
    fs::create_symlink("hill.map", at("torvex.log"));
    EXPECT_TRUE(clash(at("hill.map"), at("torvex.log"))) << "an output that leads to the map";
    fs::create_hard_link(at("hill.map"), at("view.dat"));
    EXPECT_TRUE(clash(at("hill.map"), at("view.dat")));
    fs::create_symlink("later.log", at("early.map"));
    directory.write("later.log", "a");
    EXPECT_TRUE(clash(at("early.map"), at("later.log"))) << "a map that leads to an output";
}

TEST_F(NameClashTest, ADirectoryMayBeReachedByALink) {
    fs::create_directory(at("case"));
    fs::create_directory_symlink("case", at("link"));
    EXPECT_TRUE(clash(at("link/torvex.log"), at("case/torvex.log")));
}

TEST_F(NameClashTest, LinksThatLeadNowhereAreNames) {
    fs::create_symlink("nowhere", at("torvex.log"));
    EXPECT_FALSE(clash(at("hill.map"), at("torvex.log")));
    EXPECT_TRUE(clash(at("torvex.log"), at("torvex.log")));
    fs::create_symlink("circle", at("circle"));
    EXPECT_FALSE(clash(at("circle"), at("torvex.log")));
}

}  // namespace
}  // namespace torvex
