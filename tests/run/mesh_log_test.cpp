// log-meshnumber of a small mesh in full.

#include "run/mesh_log.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>

#include "run/working_directory.hpp"
#include "support/case_text.hpp"

namespace torvex {
namespace {

Line1 line_of(std::initializer_list<float> values) {
    Line1 line(static_cast<int>(values.size()));
    int n = 0;
    for (const float value : values) {
        line(++n) = value;
    }
    return line;
}

TEST(MeshLog, SmallMeshInFull) {
    const test::WorkingDirectory directory;
    MeshLines lines;
    lines.x_line = line_of({-400, -200, -100, 0, 100, 250});
    lines.y_line = line_of({-150, -50, 0, 50, 150});
    lines.z_line = line_of({0, 5, 11});
    lines.ni = 7;
    lines.nj = 6;
    lines.nk = 4;
    lines.i_centre = 4;
    lines.j_centre = 3;
    lines.n_inner = 1;
    lines.n_add = 2;
    write_mesh_log("", lines);
    EXPECT_EQ(directory.read("log-meshnumber"),
              "   7 (ni)\n"
              "   6 (nj)\n"
              "   4 (nk)\n"
              " -0.20000000E+03 (x1)\n"
              " -0.10000000E+03 (x2)\n"
              "  0.10000000E+03 (x3)\n"
              " -0.50000000E+02 (y1)\n"
              "  0.50000000E+02 (y2)\n"
              "#==x(i)==\n"
              " -0.40000000E+03\n"
              " -0.30000000E+03\n"
              " -0.15000000E+03\n"
              " -0.50000000E+02\n"
              "  0.50000000E+02\n"
              "  0.17500000E+03\n"
              "  0.25000000E+03\n"
              "#==y(j)==\n"
              " -0.15000000E+03\n"
              " -0.10000000E+03\n"
              " -0.25000000E+02\n"
              "  0.25000000E+02\n"
              "  0.10000000E+03\n"
              "  0.15000000E+03\n"
              "#==x(i)==\n"
              "  0.00000000E+00\n"
              "  0.25000000E+01\n"
              "  0.80000000E+01\n"
              "  0.11000000E+02\n");
}

TEST(MeshLog, PrefixStandsInFront) {
    const test::WorkingDirectory directory;
    write_mesh_log("atlas-", {});
    EXPECT_TRUE(directory.has("atlas-log-meshnumber"));
    EXPECT_FALSE(directory.has("log-meshnumber"));
}

TEST(MeshLog, WithoutLinesTheBordersAreZero) {
    const test::WorkingDirectory directory;
    write_mesh_log("", {});
    EXPECT_EQ(directory.read("log-meshnumber"),
              "   0 (ni)\n   0 (nj)\n   0 (nk)\n"
              "  0.00000000E+00 (x1)\n  0.00000000E+00 (x2)\n  0.00000000E+00 (x3)\n"
              "  0.00000000E+00 (y1)\n  0.00000000E+00 (y2)\n"
              "#==x(i)==\n#==y(j)==\n#==x(i)==\n");
}

TEST(MeshLog, CountsBeyondFourDigitsAreStars) {
    const test::WorkingDirectory directory;
    MeshLines lines;
    lines.ni = 12345;
    lines.nj = 9999;
    write_mesh_log("", lines);
    EXPECT_THAT(directory.read("log-meshnumber"), ::testing::StartsWith("**** (ni)\n9999 (nj)\n"));
}

TEST(MeshLog, IsReplacedByTheNextRun) {
    const test::WorkingDirectory directory;
    directory.write("log-meshnumber", std::string(5000, 'x'));
    write_mesh_log("", {});
    EXPECT_EQ(test::lines_of(directory.read("log-meshnumber")).size(), 11U);
}

}  // namespace
}  // namespace torvex
