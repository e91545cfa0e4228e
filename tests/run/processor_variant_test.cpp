// The program for the processor: which one is found, and that it is started with the arguments and
// the environment of the first.

#include "run/processor_variant.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/run_program.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

TEST(WantedLevels, AllWithoutAWord) {
    EXPECT_THAT(wanted_levels("", {"x86-64-v4", "x86-64-v3"}),
                ElementsAre("x86-64-v4", "x86-64-v3"));
    EXPECT_THAT(wanted_levels("  ", {"x86-64-v3"}), ElementsAre("x86-64-v3"));
}

TEST(WantedLevels, NoneForTheBaseline) {
    EXPECT_THAT(wanted_levels("baseline", {"x86-64-v4", "x86-64-v3"}), IsEmpty());
}

TEST(WantedLevels, TheNamedOneIfTheProcessorHasIt) {
    EXPECT_THAT(wanted_levels("x86-64-v3", {"x86-64-v4", "x86-64-v3"}), ElementsAre("x86-64-v3"));
    EXPECT_THAT(wanted_levels("x86-64-v4", {"x86-64-v3"}), IsEmpty());
}

TEST(WantedLevels, AnotherWordIsToldAndIgnored) {
    testing::internal::CaptureStderr();
    EXPECT_THAT(wanted_levels("avx9", {"x86-64-v3"}), ElementsAre("x86-64-v3"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("TORVEX_VARIANT"));
}

// Whoever has the fourth level has the third.
TEST(ProcessorLevels, BestFirst) {
    const auto levels = processor_levels();
    if (std::ranges::find(levels, "x86-64-v4") != levels.end()) {
        EXPECT_THAT(levels, ElementsAre("x86-64-v4", "x86-64-v3"));
    } else {
        EXPECT_LE(levels.size(), 1U);
    }
}

class Variants : public testing::Test {
 protected:
    // A shell script in place of a variant: tells its level and with what it was started.
    fs::path place(const std::string& file, const std::string& level) {
        const fs::path path = prefix.path() / file;
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "#!/bin/sh\necho " << level << " \"$@\" $GOMP_SPINCOUNT\n";
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }

    test::TemporaryDirectory prefix;
};

using FindVariant = Variants;

TEST_F(FindVariant, BesideTheProgramOrUnderLib) {
    const fs::path program = prefix.path() / "bin/torvex";
    EXPECT_EQ(find_variant(program, {"x86-64-v4", "x86-64-v3"}), std::nullopt);
    const fs::path installed = place("lib/torvex/torvex-x86-64-v3", "x86-64-v3");
    EXPECT_EQ(find_variant(program, {"x86-64-v4", "x86-64-v3"}), installed);
    EXPECT_EQ(find_variant(program, {"x86-64-v4"}), std::nullopt);
    const fs::path beside = place("bin/torvex-x86-64-v3", "x86-64-v3");
    EXPECT_EQ(find_variant(program, {"x86-64-v4", "x86-64-v3"}), beside);
    const fs::path better = place("lib/torvex/torvex-x86-64-v4", "x86-64-v4");
    EXPECT_EQ(find_variant(program, {"x86-64-v4", "x86-64-v3"}), better);
}

TEST_F(FindVariant, OfTheSameNameOnly) {
    place("bin/torvex-x86-64-v3", "x86-64-v3");
    EXPECT_EQ(find_variant(prefix.path() / "bin/torvex-prep", {"x86-64-v3"}), std::nullopt);
    fs::create_directories(prefix.path() / "bin/torvex-prep-x86-64-v3");
    EXPECT_EQ(find_variant(prefix.path() / "bin/torvex-prep", {"x86-64-v3"}), std::nullopt);
}

class StartedVariant : public Variants {
 protected:
    void SetUp() override {
        fs::create_directories(prefix.path() / "bin");
        fs::copy_file(TORVEX_VARIANT_PROBE, program());
        unsetenv("TORVEX_VARIANT");
    }
    void TearDown() override { unsetenv("TORVEX_VARIANT"); }

    fs::path program() const { return prefix.path() / "bin/probe"; }

    // What the program says that the probe became, and with what. The environment of the tests has
    // GOMP_SPINCOUNT.
    std::string said() {
        const test::ProgramRun run =
            test::run_program(program().string(), {"/f", "a b.tin"}, prefix.path());
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out;
    }
};

TEST_F(StartedVariant, NoneThereIsTheBaseline) {
    EXPECT_THAT(said(), testing::StartsWith("baseline /f a b.tin "));
}

TEST_F(StartedVariant, TakesArgumentsAndSettings) {
    place("lib/torvex/probe-x86-64-v3", "third");
    const auto levels = processor_levels();
    const bool has_third = std::ranges::find(levels, "x86-64-v3") != levels.end();
    const std::string spin = std::getenv("GOMP_SPINCOUNT") != nullptr ? "" : "1000";
    EXPECT_THAT(said(), testing::StartsWith(has_third ? "third /f a b.tin " + spin
                                                      : std::string("baseline /f a b.tin ")));
}

TEST_F(StartedVariant, BaselineByHand) {
    place("lib/torvex/probe-x86-64-v3", "third");
    place("lib/torvex/probe-x86-64-v4", "fourth");
    setenv("TORVEX_VARIANT", "baseline", 1);
    EXPECT_THAT(said(), testing::StartsWith("baseline /f a b.tin "));
}

TEST_F(StartedVariant, ALevelByHand) {
    place("lib/torvex/probe-x86-64-v3", "third");
    place("lib/torvex/probe-x86-64-v4", "fourth");
    const auto levels = processor_levels();
    if (std::ranges::find(levels, "x86-64-v3") == levels.end()) {
        GTEST_SKIP() << "this processor has no level to choose";
    }
    setenv("TORVEX_VARIANT", "x86-64-v3", 1);
    EXPECT_THAT(said(), testing::StartsWith("third /f a b.tin "));
}

// A file that cannot be started is no reason not to run.
TEST_F(StartedVariant, OneThatCannotBeStartedIsLeftAlone) {
    const fs::path broken = place("lib/torvex/probe-x86-64-v3", "third");
    fs::permissions(broken, fs::perms::owner_read);
    EXPECT_THAT(said(), testing::StartsWith("baseline /f a b.tin "));
}

}  // namespace
}  // namespace torvex
