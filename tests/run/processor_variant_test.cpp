// The program for the processor: which one is found, and that it is started with the arguments and
// the environment of the first.

#include "run/processor_variant.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/run_program.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

namespace fs = std::filesystem;

TEST(VariantWanted, UnlessTheBaselineIsAskedFor) {
    EXPECT_TRUE(variant_wanted(""));
    EXPECT_TRUE(variant_wanted("  "));
    EXPECT_TRUE(variant_wanted("x86-64-v3"));
    EXPECT_FALSE(variant_wanted("baseline"));
    EXPECT_FALSE(variant_wanted(" baseline "));
}

TEST(VariantWanted, AnotherWordIsToldAndIgnored) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(variant_wanted("avx9"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("TORVEX_VARIANT"));
}

class Variants : public testing::Test {
 protected:
    // A shell script in place of a variant: tells its name and with what it was started.
    fs::path place(const std::string& file, const std::string& name) {
        const fs::path path = prefix.path() / file;
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "#!/bin/sh\necho " << name << " \"$@\" $GOMP_SPINCOUNT\n";
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }

    test::TemporaryDirectory prefix;
};

using FindVariant = Variants;

TEST_F(FindVariant, BesideTheProgramOrUnderLib) {
    const fs::path program = prefix.path() / "bin/torvex";
    EXPECT_EQ(find_variant(program), std::nullopt);
    const fs::path installed = place("lib/torvex/torvex-x86-64-v3", "third");
    EXPECT_EQ(find_variant(program), installed);
    const fs::path beside = place("bin/torvex-x86-64-v3", "third");
    EXPECT_EQ(find_variant(program), beside);
}

TEST_F(FindVariant, OfTheSameNameOnly) {
    place("bin/torvex-x86-64-v3", "third");
    EXPECT_EQ(find_variant(prefix.path() / "bin/torvex-prep"), std::nullopt);
    fs::create_directories(prefix.path() / "bin/torvex-prep-x86-64-v3");
    EXPECT_EQ(find_variant(prefix.path() / "bin/torvex-prep"), std::nullopt);
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

    // What the started program says that it is, and with what it was started.
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
    const char* const given = std::getenv("GOMP_SPINCOUNT");
    const std::string spin = given != nullptr ? given : "3000";
    EXPECT_EQ(said(), (processor_has_variant_level() ? "third" : "baseline") +
                          std::string(" /f a b.tin ") + spin + "\n");
}

TEST_F(StartedVariant, BaselineByHand) {
    place("lib/torvex/probe-x86-64-v3", "third");
    setenv("TORVEX_VARIANT", "baseline", 1);
    EXPECT_THAT(said(), testing::StartsWith("baseline /f a b.tin "));
}

// A file that cannot be started is no reason not to run.
TEST_F(StartedVariant, OneThatCannotBeStartedIsLeftAlone) {
    const fs::path broken = place("lib/torvex/probe-x86-64-v3", "third");
    fs::permissions(broken, fs::perms::owner_read);
    EXPECT_THAT(said(), testing::StartsWith("baseline /f a b.tin "));
}

}  // namespace
}  // namespace torvex
