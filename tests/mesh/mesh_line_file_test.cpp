#include "mesh/mesh_line_file.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "mesh_cases.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::stop_of;
using test::TemporaryDirectory;

// Eleven x planes and seven y planes, lines counted in the names. The circle has a radius of 100 m,
// the additional zone ends at -300, and the planes lie unevenly.
//   x: -700 -600 -450 -300 -200 -100 0 100 220 350 500     centre is plane 7
//   y: -330 -210 -100 0 100 210 330                        centre is plane 4
std::vector<std::string> good_file() {
    return {"12",   "8",    "-300", "-100", "0",    "100",  "marks of y", "0",     "100",  "x",
            "-700", "-600", "-450", "-300", "-200", "-100", "0.0",        "1.0E2", "220.", "350",
            "500",  "y",    "-330", "-210", "-100", "0",    "100",        "210",   "330"};
}

MeshLines read(const std::vector<std::string>& lines, const char* end = "\n") {
    const TemporaryDirectory directory;
    std::string text;
    for (const std::string& line : lines) {
        text += line + end;
    }
    directory.write("lines.txt", text);
    return read_mesh_line_file(directory.file("lines.txt"));
}

// The refusal of a file with line `number` replaced.
Stop refusal(std::size_t number, const std::string& text) {
    std::vector<std::string> lines = good_file();
    lines[number - 1] = text;
    return stop_of([&] { read(lines); });
}

void expect_place(const Stop& stop, int line) {
    EXPECT_EQ(stop.code(), 1);
    EXPECT_TRUE(stop.where().ends_with("lines.txt, line " + std::to_string(line))) << stop.what();
}

TEST(MeshLineFile, GivesLinesAndZones) {
    const MeshLines lines = read(good_file());
    EXPECT_EQ(lines.nx, 11);
    EXPECT_EQ(lines.ny, 7);
    EXPECT_EQ(lines.x_line(1), -700.0F);
    EXPECT_EQ(lines.x_line(8), 100.0F);
    EXPECT_EQ(lines.x_line(11), 500.0F);
    EXPECT_EQ(lines.y_line(7), 330.0F);
    EXPECT_EQ(lines.i_centre, 7);
    EXPECT_EQ(lines.j_centre, 4);
    EXPECT_EQ(lines.n_inner, 1);
    EXPECT_EQ(lines.n_add, 3);
    EXPECT_EQ(lines.n_up, 6);
    EXPECT_EQ(lines.n_down, 4);
    EXPECT_EQ(lines.n_side, 3);
    EXPECT_EQ(lines.max_rad, 100.0F);
    EXPECT_EQ(lines.n_blend_up, 5);    // |(-700 - 300)/2| = 500: first at -600
    EXPECT_EQ(lines.n_blend_down, 3);  // (500 + 100)/2 = 300: first at 350
    EXPECT_EQ(lines.n_blend_side, 3);  // (330 + 100)/2 = 215: first at 330
    EXPECT_EQ(lines.n_connect_up, 0);
    EXPECT_EQ(lines.n_connect_down, 0);
}

TEST(MeshLineFile, TakesCarriageReturnsBlankLinesAndRemarks) {
    std::vector<std::string> lines = good_file();
    lines[2] = "  -300   end of the additional zone";
    lines[13] = "-300 /";
    EXPECT_EQ(read(lines, "\r\n").n_add, 3);
    lines.insert(lines.begin() + 12, "");
    EXPECT_EQ(read(lines).x_line(3), -450.0F);
}

TEST(MeshLineFile, BlendIndexStaysUnsetWhereNoPlaneIsFarEnough) {
    // A centre away from 0 makes the targets larger than any distance.
    std::vector<std::string> lines = good_file();
    lines[4] = "220";  // centre of x
    const MeshLines read_lines = read(lines);
    EXPECT_EQ(read_lines.i_centre, 9);
    EXPECT_EQ(read_lines.n_down, 2);
    EXPECT_EQ(read_lines.n_blend_down, 0);  // (500 + 350)/2 = 425 from 220: no plane
}

TEST(MeshLineFile, MarkWithoutAPlaneIsRefused) {
    for (const int line : {3, 4, 5, 6, 8, 9}) {
        SCOPED_TRACE(line);
        expect_place(refusal(static_cast<std::size_t>(line), "-123.5"), line);
    }
}

TEST(MeshLineFile, LinesMustRise) {
    expect_place(refusal(13, "-650"), 13);
    expect_place(refusal(13, "-600"), 13);
    expect_place(refusal(25, "-330"), 25);
}

TEST(MeshLineFile, ShortFileIsRefused) {
    const std::size_t all = good_file().size();
    for (std::size_t n = 0; n < all; ++n) {
        std::vector<std::string> lines = good_file();
        lines.resize(n);
        const Stop stop = stop_of([&] { read(lines); });
        EXPECT_EQ(stop.code(), 1) << n;
        EXPECT_NE(stop.where().find("lines.txt, line "), std::string::npos) << n;
    }
}

TEST(MeshLineFile, BadValuesAreRefused) {
    expect_place(refusal(1, "twelve"), 1);
    expect_place(refusal(1, "12.5"), 1);
    expect_place(refusal(1, "-3"), 1);
    expect_place(refusal(1, "0"), 1);
    expect_place(refusal(1, "3"), 1);
    // Four are enough; what is wrong then are the planes that follow.
    EXPECT_FALSE(refusal(1, "4").where().ends_with("lines.txt, line 1"));
    expect_place(refusal(2, "2147483647"), 2);
    expect_place(refusal(2, "99999999999"), 2);
    expect_place(refusal(12, "nan"), 12);
    expect_place(refusal(21, "inf"), 21);
    expect_place(refusal(12, "abc"), 12);
    expect_place(refusal(12, "/"), 12);
}

TEST(MeshLineFile, ZonesMustFitTheLines) {
    expect_place(refusal(8, "100"), 8);   // y centre not in the middle
    expect_place(refusal(9, "-100"), 9);  // circle below the centre
    expect_place(refusal(9, "0"), 9);     // circle without a cell
    expect_place(refusal(3, "0"), 3);     // additional zone ends inside the circle
    expect_place(refusal(5, "500"), 9);   // no room for the circle downwind
}

TEST(MeshLineFile, MissingFileOrDirectoryIsRefused) {
    const TemporaryDirectory directory;
    for (const std::string& path : {directory.file("none.txt"), directory.path().string()}) {
        const Stop stop = stop_of([&] { read_mesh_line_file(path); });
        EXPECT_EQ(stop.code(), 1);
        EXPECT_EQ(stop.where(), path);
    }
}

}  // namespace
}  // namespace torvex
