// The counts of a mesh given by the user.

#include "mesh/mesh_count_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;

class MeshCountFile : public testing::Test {
 protected:
    MeshCounts read(std::string_view text) const {
        directory_.write("counts.txt", text);
        return read_mesh_counts(directory_.file("counts.txt"));
    }
    void expect_counts(std::string_view text, int ni, int nj, int nk) const {
        const MeshCounts counts = read(text);
        EXPECT_EQ(counts.ni, ni);
        EXPECT_EQ(counts.nj, nj);
        EXPECT_EQ(counts.nk, nk);
    }
    // Status 1, the place and these words in the reason.
    void expect_refused(std::string_view text, const std::string& line,
                        const std::string& words) const {
        SCOPED_TRACE(std::string(text));
        const auto stop = test::stop_of([&] { read(text); });
        ASSERT_TRUE(stop.has_value());
        EXPECT_EQ(stop->code(), 1);
        EXPECT_EQ(stop->where(), directory_.file("counts.txt") + line);
        EXPECT_THAT(stop->reason(), HasSubstr(words));
    }

    test::TemporaryDirectory directory_;
};

TEST_F(MeshCountFile, HoldsThreeFreeFormLines) {
    expect_counts("6\n5\n7\n", 6, 5, 7);
    expect_counts("  6 cells along i\r\n5, 9\r\n 7", 6, 5, 7);
    expect_counts("\n\n3\n\n3\n3\nmore text\n", 3, 3, 3);
}

TEST_F(MeshCountFile, CountsOnOneLineAreNotThreeLines) {
    expect_refused("6 5 7\n", ", line 2", "(nj)");
}

TEST_F(MeshCountFile, RefusesWhatIsNoCount) {
    expect_refused("", ", line 1", "the text ends where an integer should stand (ni)");
    expect_refused("6\n5\n", ", line 3", "(nk)");
    expect_refused("6\nx\n7\n", ", line 2", "cannot read \"x\", expected an integer (nj)");
    expect_refused("6.5\n5\n7\n", ", line 1", "6.5");
    expect_refused("6\n99999999999\n7\n", ", line 2", "99999999999");
    expect_refused("6\n5\n,\n", ", line 3", "nk is 0, expected at least 3");
    expect_refused("/\n5\n7\n", ", line 1", "ni is 0");
}

TEST_F(MeshCountFile, NeedsACellBetweenTheBoundaryLayers) {
    expect_refused("2\n5\n7\n", ", line 1", "ni is 2, expected at least 3");
    expect_refused("6\n-5\n7\n", ", line 2", "nj is -5");
    expect_refused("6\n5\n-2147483648\n", ", line 3", "nk is -2147483648");
}

TEST_F(MeshCountFile, RefusesAMeshBeyondTheMachine) {
    expect_refused("2147483647\n2147483647\n2147483647\n", "", "exceeds 2147483647 cells");
    expect_refused("2048\n1024\n1024\n", "", "exceeds 2147483647 cells");
    expect_refused("2147483647\n3\n3\n", "", "exceeds 2147483647 cells");
}

TEST_F(MeshCountFile, MustBeAReadableFile) {
    const auto expect_stop = [](const std::string& path, const std::string& where) {
        const auto stop = test::stop_of([&] { read_mesh_counts(path); });
        ASSERT_TRUE(stop.has_value());
        EXPECT_EQ(stop->code(), 1);
        EXPECT_THAT(stop->where(), HasSubstr(where));
        EXPECT_THAT(stop->fix(), HasSubstr("mesh_n_file"));
    };
    expect_stop(directory_.file("none.txt"), "none.txt");
    expect_stop(directory_.path().string(), directory_.path().string());
    expect_stop("", "user_domain");
}

TEST_F(MeshCountFile, SurvivesRandomTexts) {
    std::mt19937 random(3);
    const std::string_view alphabet = "0123456789345 \n\n +-.,/*'x\r";
    for (int n = 0; n < 300; ++n) {
        std::string text;
        for (auto left = random() % 20; left > 0; --left) {
            text += alphabet[random() % alphabet.size()];
        }
        const auto stop = test::stop_of([&] {
            const MeshCounts counts = read(text);
            EXPECT_GE(std::min({counts.ni, counts.nj, counts.nk}), 3);
        });
        EXPECT_TRUE(!stop || stop->code() == 1) << text;
    }
}

}  // namespace
}  // namespace torvex
