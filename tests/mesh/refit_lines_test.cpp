#include "mesh/refit_lines.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "mesh/mesh_line_file.hpp"
#include "mesh_cases.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::CurrentDirectory;
using test::even_lines;
using test::log_lines;
using test::stop_of;

// A mesh log with the given borders and edges.
std::string mesh_log(const std::string& x1, const std::string& x2, const std::string& x3,
                     const std::string& y1, const std::string& y2) {
    return "  17 (ni)\n  15 (nj)\n  30 (nk)\n" + x1 + " (x1)\n" + x2 + " (x2)\n" + x3 + " (x3)\n" +
           y1 + " (y1)\n" + y2 +
           " (y2)\n"
           "#==x(i)==\n -0.14000000E+04\n  0.00000000E+00\n  0.10000000E+04\n"
           "#==y(j)==\n -0.80000000E+03\n  0.10000000E+02\n  0.90000000E+03\n"
           "#==x(i)==\n  0.00000000E+00\n  0.15000000E+04\n";
}

std::string good_log() {
    return mesh_log(" -0.60000000E+03", " -0.30000000E+03", "  0.40000000E+03", " -0.40000000E+03",
                    "  0.50000000E+03");
}

class RefitLines : public testing::Test {
 protected:
    test::TemporaryDirectory directory;
    CurrentDirectory current{directory.path()};
    CaseSettings settings = test::flat_case();
    RunLog log;
    // x -900 .. 600 by 100, marks at -500, -200, 0, 200; y -600 .. 600, marks at -200, 200
    MeshLines lines = even_lines(2, 3, 4, 100.0F);
};

TEST_F(RefitLines, SegmentsAreScaledAboutTheirInnerEnds) {
    directory.write("log-meshnumber", good_log());
    refit_lines(settings, log, lines);
    // -900..-500 becomes -1400..-600, factor 2; -500..-200 becomes -600..-300, factor 1;
    // -200..0 becomes -300..0; 0..200 becomes 0..400; 200..600 becomes 400..1000, factor 1.5.
    const float x[] = {-1400.0F, -1200.0F, -1000.0F, -800.0F, -600.0F, -500.0F, -400.0F, -300.0F,
                       -150.0F,  0.0F,     200.0F,   400.0F,  550.0F,  700.0F,  850.0F,  1000.0F};
    ASSERT_EQ(lines.nx, 16);
    for (int i = 1; i <= 16; ++i) {
        EXPECT_NEAR(lines.x_line(i), x[i - 1], 1e-3) << i;
    }
    // -600..-200 becomes -800..-400; -200..0: -400..0; 0..200: 0..500; 200..600: 500..900.
    const float y[] = {-800.0F, -700.0F, -600.0F, -500.0F, -400.0F, -200.0F, 0.0F,
                       250.0F,  500.0F,  600.0F,  700.0F,  800.0F,  900.0F};
    ASSERT_EQ(lines.ny, 13);
    for (int j = 1; j <= 13; ++j) {
        EXPECT_NEAR(lines.y_line(j), y[j - 1], 1e-3) << j;
    }
    EXPECT_TRUE(log_lines(log).empty());
}

TEST_F(RefitLines, RefittedLinesAreWrittenAsAMeshLineFile) {
    directory.write("log-meshnumber", good_log());
    refit_lines(settings, log, lines);
    const MeshLines again = read_mesh_line_file("tmp");
    EXPECT_EQ(again.x_line.values(), lines.x_line.values());
    EXPECT_EQ(again.y_line.values(), lines.y_line.values());
    EXPECT_EQ(again.n_add, lines.n_add);
    EXPECT_EQ(again.n_inner, lines.n_inner);
}

TEST_F(RefitLines, LinesThatCannotBeWrittenEndTheRun) {
    directory.write("log-meshnumber", good_log());
    std::filesystem::create_directory(directory.path() / "tmp");
    const Stop stop = stop_of([&] { refit_lines(settings, log, lines); });
    EXPECT_EQ(stop.code(), 1);
    EXPECT_EQ(stop.where(), "tmp");
}

TEST_F(RefitLines, WithoutAMeshLogNothingChanges) {
    const MeshLines before = lines;
    refit_lines(settings, log, lines);
    EXPECT_EQ(lines.x_line.values(), before.x_line.values());
    EXPECT_EQ(log_lines(log).size(), 1U);
    EXPECT_FALSE(directory.has("tmp"));
}

TEST_F(RefitLines, MeshLogOfTheSameKindOfRunIsPreferred) {
    settings.run_prefix = "flat-";
    directory.write("log-meshnumber", "unreadable");
    directory.write("flat-log-meshnumber", good_log());
    refit_lines(settings, log, lines);
    EXPECT_NEAR(lines.x_line(1), -1400.0, 1e-3);
}

TEST_F(RefitLines, BordersThatDoNotRiseAreRefused) {
    const std::string zero = "  0.00000000E+00";
    directory.write("log-meshnumber", mesh_log(zero, zero, zero, zero, zero));
    EXPECT_EQ(stop_of([&] { refit_lines(settings, log, lines); }).code(), 1);
}

TEST_F(RefitLines, UnreadableMeshLogsAreRefused) {
    const std::string good = good_log();
    const std::string nan = mesh_log("NaN", " -0.3E+03", "  0.4E+03", " -0.4E+03", "  0.5E+03");
    const std::string stars = mesh_log("****", " -0.3E+03", "  0.4E+03", " -0.4E+03", "  0.5E+03");
    for (const std::string& text :
         {std::string(), std::string("\n\n\n"), nan, stars, good.substr(0, good.find("#==x")),
          good.substr(0, good.find("#==y")), good.substr(0, good.find("#==y") + 10)}) {
        directory.write("log-meshnumber", text);
        const Stop stop = stop_of([&] { refit_lines(settings, log, lines); });
        EXPECT_EQ(stop.code(), 1) << text;
        EXPECT_TRUE(stop.where().starts_with("log-meshnumber, line ")) << stop.where();
    }
}

}  // namespace
}  // namespace torvex
