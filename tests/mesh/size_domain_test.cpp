#include "mesh/size_domain.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/edit.hpp"
#include "mesh/buffer_zones.hpp"
#include "mesh_cases.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::console_of;
using test::flat_case;
using test::log_lines;
using test::stop_of;

using Lines = std::vector<std::string>;

// Metres per minute of arc at 35 degrees north on the default ellipsoid.
constexpr double lon_minute = 1521.469;
constexpr double lat_minute = 1849.009;

// Coordinates of the nodes outward from the centre in double precision, from closed sums.
std::vector<double> nodes_outward(double MIN_DXY, double MAX_DXY, double ratio, int n_fine,
                                  int n_stretch) {
    std::vector<double> nodes{0.0};
    for (int m = 1; m <= 400; ++m) {
        const int fine = std::min(m, n_fine);
        const int stretched = std::max(0, std::min(m - n_fine, n_stretch));
        const int coarse = m - fine - stretched;
        const double grown =
            ratio == 1.0 ? stretched : ratio * (std::pow(ratio, stretched) - 1.0) / (ratio - 1.0);
        nodes.push_back(MIN_DXY * (fine + grown) + MAX_DXY * coarse);
    }
    return nodes;
}

int first_reaching(const std::vector<double>& nodes, double limit) {
    int m = 1;
    while (nodes[static_cast<std::size_t>(m)] < limit) {
        ++m;
    }
    return m;
}

class SizeDomain : public testing::Test {
 protected:
    // 21 by 21 points every half minute, about 7.6 km to each side; level ground with one summit
    // of `top` metres `columns` east of the centre.
    void write_map(double top, int columns = 0, double ground = 100.0) {
        std::string text =
            "<TORVEX_MAP lon-lat>\n"
            "n_lon = 21, n_lat = 21, d_lon = 0.5, d_lat = 0.5\n"
            "base_longitude = 138 55, base_latitude = 34 55\n"
            "--DATA--\n";
        for (int j = 1; j <= 21; ++j) {
            for (int i = 1; i <= 21; ++i) {
                text += std::to_string(i == 11 + columns && j == 11 ? top : ground) + " ";
            }
            text += "\n";
        }
        directory.write("hill.map", text);
        settings.TERRAIN_MODE = "normal";
        settings.BASIC_H_FILE = directory.file("hill.map");
    }

    MeshLines size() {
        MapState maps;
        return size_domain(settings, maps, log);
    }
    int code() {
        return stop_of([&] { size(); }).code();
    }

    test::TemporaryDirectory directory;
    CaseSettings settings = flat_case();
    RunLog log;
};

TEST_F(SizeDomain, StretchedMeshOfADefaultCase) {
    const MeshLines lines = size();
    EXPECT_NEAR(lines.max_rad, 1414.2136, 1e-3);
    EXPECT_EQ(lines.n_inner, 21);
    EXPECT_EQ(lines.n_add, 35);
    EXPECT_EQ(lines.n_up, 40);
    EXPECT_EQ(lines.n_down, 26);
    EXPECT_EQ(lines.n_side, 26);
    EXPECT_EQ(lines.nx, 67);
    EXPECT_EQ(lines.ny, 53);
    EXPECT_EQ(lines.ni, 68);
    EXPECT_EQ(lines.nj, 54);
    EXPECT_EQ(lines.nz, 28);
    EXPECT_EQ(lines.nk, 29);
    EXPECT_EQ(lines.i_centre, 41);
    EXPECT_EQ(lines.j_centre, 27);
    EXPECT_EQ(lines.n_blend_side, 24);
    EXPECT_EQ(lines.n_blend_up, 38);
    EXPECT_EQ(lines.n_blend_down, 24);
    EXPECT_NEAR(lines.x_line(1), -5248.7, 0.05);
    EXPECT_NEAR(lines.x_line(67), 2448.7, 0.05);
    EXPECT_EQ(lines.MAX_Z, 1500.0F);
    EXPECT_EQ(lines.z_top, 1500.0F);
    EXPECT_EQ(lines.z_line(28), 1500.0F);
}

TEST_F(SizeDomain, LinesAreTheSumsOfTheWidthsAndSymmetric) {
    const MeshLines lines = size();
    const std::vector<double> nodes = nodes_outward(50.0, 200.0, 1.1, 10, 13);
    EXPECT_EQ(lines.x_line(lines.i_centre), 0.0F);
    EXPECT_EQ(lines.y_line(lines.j_centre), 0.0F);
    for (int m = 1; m <= lines.n_up; ++m) {
        EXPECT_NEAR(-lines.x_line(lines.i_centre - m), nodes[static_cast<std::size_t>(m)], 2e-3);
    }
    for (int m = 1; m <= lines.n_side; ++m) {
        EXPECT_EQ(lines.y_line(lines.j_centre + m), -lines.y_line(lines.j_centre - m));
        EXPECT_EQ(lines.y_line(lines.j_centre + m), lines.x_line(lines.i_centre + m));
        EXPECT_EQ(lines.y_line(lines.j_centre + m), -lines.x_line(lines.i_centre - m));
    }
}

TEST_F(SizeDomain, EvenMeshWithAndWithoutARatio) {
    settings.WE_LENGTH = settings.NS_LENGTH = 1000.0F;
    settings.MIN_DXY = settings.MAX_DXY = 100.0F;
    settings.MIN_DXY_RAD = 200.0F;
    for (const float ratio : {1.2F, 1.0F}) {
        settings.MESH_HRATIO = ratio;
        const MeshLines lines = size();
        EXPECT_EQ(lines.nx, 39);
        EXPECT_EQ(lines.ny, 25);
        EXPECT_EQ(lines.x_line(1), -2600.0F);
        EXPECT_EQ(lines.x_line(39), 1200.0F);
    }
}

TEST_F(SizeDomain, RatioOfOneKeepsTheFinestSpacing) {
    settings.MESH_HRATIO = 1.0F;
    const MeshLines lines = size();
    EXPECT_EQ(lines.x_line(lines.nx) - lines.x_line(lines.nx - 1), 50.0F);
}

TEST_F(SizeDomain, ANodeExactlyOnALimitEndsTheZone) {
    settings.WE_LENGTH = 600.0F;  // a radius of 500 m
    settings.NS_LENGTH = 800.0F;
    settings.MIN_DXY = settings.MAX_DXY = 100.0F;
    const MeshLines lines = size();
    EXPECT_EQ(lines.max_rad, 500.0F);
    EXPECT_EQ(lines.n_inner, 5);
    EXPECT_EQ(lines.n_side, 8);
    EXPECT_EQ(lines.n_down, 8);
    EXPECT_EQ(lines.n_add, 15);
    EXPECT_EQ(lines.n_up, 18);
}

TEST_F(SizeDomain, ZoneWidthsAreFractionsOfTheDiameterWithALeastWidth) {
    settings.UP_BR = 0.1F;
    settings.DOWN_BR = 0.6F;
    settings.SIDE_BR = 0.0F;
    settings.ADD_R = 0.0F;
    settings.BZ_LIMIT = 700.0F;
    settings.ADD_LIMIT = 900.0F;
    const MeshLines lines = size();
    const std::vector<double> nodes = nodes_outward(50.0, 200.0, 1.1, 10, 13);
    const double R = std::sqrt(2.0e6);
    EXPECT_EQ(lines.n_add, first_reaching(nodes, R + 900.0));
    EXPECT_EQ(lines.n_up, first_reaching(nodes, R + 900.0 + 700.0));
    EXPECT_EQ(lines.n_down, first_reaching(nodes, R + 1.2 * R));
    EXPECT_EQ(lines.n_side, first_reaching(nodes, R + 700.0));
}

TEST_F(SizeDomain, WindDirectionsShareTheLines) {
    const MeshLines lines = size();
    settings.N_WIND_DIRECTION = 1;
    settings.WIND_DIRECTION_ANGLE(1) = 123.4F;
    settings.WIND_DIRECTION_ANGLE(2) = 33.0F;
    const MeshLines turned = size();
    EXPECT_EQ(turned.x_line.values(), lines.x_line.values());
    EXPECT_EQ(turned.y_line.values(), lines.y_line.values());
    EXPECT_EQ(turned.z_line.values(), lines.z_line.values());
}

TEST_F(SizeDomain, TellsAllItsStepsInOrder) {
    Lines on_console;
    on_console = console_of([&] { size(); });
    EXPECT_EQ(on_console,
              (Lines{"   - boundary_height_mode is 0",
                     "   - Maximum elevation in the domain is        0.0m.",
                     "   - Minimum elevation in the domain is        0.0m.",
                     "   - Average elevation in the domain is        0.0m.",
                     "     > l_diag is      0.0m.", "     > up_bz_width is    848.5m to    848.5m.",
                     "     > down_bz_width is    848.5m to    848.5m.",
                     "     > side_bz_width is    848.5m.",
                     "   - Reading terrain map to find max, min and average elevation.",
                     "   - Maximum elevation in the domain is        0.0m.",
                     "   - Minimum elevation in the domain is        0.0m.",
                     "   - Average elevation in the domain is        0.0m.",
                     "   - Computational domain height set to   1500.0m."}));
    EXPECT_EQ(
        log_lines(log),
        (Lines{" boundary_height_mode is 0", " Maximum elevation in the domain is        0.0m.",
               " Minimum elevation in the domain is        0.0m.",
               " Average elevation in the domain is        0.0m.", " l_diag is      0.0m.",
               " up_bz_width is    848.5m to    848.5m.",
               " down_bz_width is    848.5m to    848.5m.", " side_bz_width is    848.5m.",
               " max_rad is   1414.2m.", " max_length is   5939.7m, need_length is   6905.2m.",
               " Coefficient of domain size is      6.0.",
               " Maximum elevation in the domain is        0.0m.",
               " Minimum elevation in the domain is        0.0m.",
               " Average elevation in the domain is        0.0m.",
               " Computational domain height set to   1500.0m."}));
}

TEST_F(SizeDomain, ModeZeroLooksAtTheTerrainOnlyInTheEnd) {
    write_map(800.0);
    const Lines lines = console_of([&] { size(); });
    ASSERT_EQ(lines.size(), 13U);
    EXPECT_EQ(lines[1], "   - Maximum elevation in the domain is        0.0m.");
    EXPECT_EQ(lines[9], "   - Maximum elevation in the domain is      800.0m.");
    EXPECT_EQ(lines[10], "   - Minimum elevation in the domain is      100.0m.");
    EXPECT_EQ(lines[12], "   - Computational domain height set to   1800.0m.");
}

TEST_F(SizeDomain, TopIsAThousandMetresAboveTheHighestPointWithinTheCorner) {
    // The summit stands 4 columns, 3.04 km east: inside the 5.8 km of the mesh's corner.
    write_map(800.0, 4);
    MeshLines lines = size();
    EXPECT_EQ(lines.elevation.Hmax, 800.0F);
    EXPECT_EQ(lines.MAX_Z, 1800.0F);
    EXPECT_EQ(lines.z_line(lines.nz), 1800.0F);
    write_map(800.0, 8);  // 6.09 km: outside
    lines = size();
    EXPECT_EQ(lines.elevation.Hmax, 100.0F);
    EXPECT_EQ(lines.MAX_Z, 1500.0F) << "never below 1500 m";
    settings.USE_DEFAULT_MAX_Z = false;
    settings.MAX_Z = 987.0F;
    lines = size();
    EXPECT_EQ(lines.MAX_Z, 987.0F);
    EXPECT_EQ(lines.z_top, 987.0F);
}

TEST_F(SizeDomain, FollowingTopIsTheMeanHeightOverTheTerrain) {
    write_map(800.0);
    settings.USE_TFTB = true;
    MeshLines lines;
    const Lines told = console_of([&] { lines = size(); });
    // Points of the map within the corner's distance, counted with the metres per minute; none of
    // them lies within 20 m of the circle.
    const double corner = std::hypot(5248.7, 2448.7);
    int points = 0;
    for (int p = -10; p <= 10; ++p) {
        for (int q = -10; q <= 10; ++q) {
            const double r = std::hypot(0.5 * p * lon_minute, 0.5 * q * lat_minute);
            ASSERT_GT(std::abs(r - corner), 20.0);
            points += r <= corner ? 1 : 0;
        }
    }
    EXPECT_EQ(lines.MAX_Z, 1800.0F);
    EXPECT_NEAR(lines.z_top, 1700.0 - 700.0 / points, 1e-3);
    EXPECT_EQ(lines.z_line(lines.nz), lines.z_top);
    ASSERT_EQ(told.size(), 14U);
    EXPECT_EQ(told[12], "   - Reading terrain map to calculate TFTB height.");
    EXPECT_EQ(told[13], "   - Computational domain height set to   1800.0m.");
}

TEST_F(SizeDomain, ModeOneLengthensTheBufferZonesByTheSlope) {
    write_map(800.0);  // 2000 m of connection at 40 percent
    settings.BOUNDARY_HEIGHT_MODE = 1;
    MeshLines lines;
    const Lines told = console_of([&] { lines = size(); });
    const std::vector<double> nodes = nodes_outward(50.0, 200.0, 1.1, 10, 13);
    const auto node = [&](int m) { return nodes[static_cast<std::size_t>(m)]; };
    const double R = std::sqrt(2.0e6);
    const double hat = 0.3 * R + 2000.0;
    EXPECT_EQ(lines.n_up, first_reaching(nodes, 3.0 * R + hat));
    EXPECT_EQ(lines.n_down, first_reaching(nodes, R + hat));
    EXPECT_EQ(lines.n_side, first_reaching(nodes, R + 0.6 * R));
    EXPECT_EQ(lines.n_blend_up, first_reaching(nodes, node(lines.n_add) + 2000.0));
    EXPECT_EQ(lines.n_blend_down, first_reaching(nodes, node(lines.n_inner) + 2000.0));
    EXPECT_EQ(lines.n_connect_up, first_reaching(nodes, node(lines.n_up) - 2000.0));
    EXPECT_EQ(lines.n_connect_down, first_reaching(nodes, node(lines.n_down) - 2000.0));
    ASSERT_EQ(told.size(), 33U);
    EXPECT_EQ(told[0], "   - boundary_height_mode is 1");
    EXPECT_EQ(told[1], "   - Reading terrain map to find max, min and average elevation.");
    EXPECT_EQ(told[5], "   - Maximum elevation in the domain is      800.0m.");
    EXPECT_EQ(told[8], "     > l_diag is   4472.1m.");
    EXPECT_EQ(told[9], "     > up_bz_width is    848.5m to   2424.3m.");
    EXPECT_EQ(told[20], "     >   connection_length =  2000.0, flat_length =   424.3");
}

TEST_F(SizeDomain, ModeOneSearchesAsFarAsTheAdditionalZoneReaches) {
    settings.BOUNDARY_HEIGHT_MODE = 1;
    settings.BUFFER_ZONE_SLOPE_GRADIENT = 20.0F;
    write_map(800.0, 5);  // 3.80 km, inside l_diag = 4.47 km
    const int found = size().n_up;
    write_map(800.0, 6);  // 4.56 km, outside
    EXPECT_LT(size().n_up, found);
}

TEST_F(SizeDomain, ModeOneKeepsTheZoneWhereTheSlopeNeedsLess) {
    write_map(100.0);
    const MeshLines plain = size();
    settings.BOUNDARY_HEIGHT_MODE = 1;
    const MeshLines lines = size();
    EXPECT_EQ(lines.n_up, plain.n_up);
    EXPECT_EQ(lines.n_down, plain.n_down);
    // The reach is then half the zone, counted from the planes of the inner edges.
    const std::vector<double> nodes = nodes_outward(50.0, 200.0, 1.1, 10, 13);
    const double half = 0.3 * std::sqrt(2.0e6);
    EXPECT_EQ(lines.n_blend_up, first_reaching(nodes, nodes[35] + half));
    EXPECT_EQ(lines.n_blend_down, first_reaching(nodes, nodes[21] + half));
}

TEST_F(SizeDomain, ModeZeroSetsTheConnectionIndicesAtTheFirstCell) {
    const MeshLines lines = size();
    EXPECT_EQ(lines.n_connect_up, 1);
    EXPECT_EQ(lines.n_connect_down, 1);
}

TEST_F(SizeDomain, HigherModesBeginTheFlatPartAtTheInnerEdge) {
    settings.BOUNDARY_HEIGHT_MODE = 2;
    const MeshLines lines = size();
    EXPECT_EQ(lines.n_blend_up, lines.n_add);
    EXPECT_EQ(lines.n_blend_down, lines.n_inner);
    EXPECT_EQ(lines.n_blend_side, 24);
    Field2 h(lines.nx, lines.ny);
    EXPECT_EQ(stop_of([&] { flatten_buffer_zones(settings, lines, 1, log, h); }).code(), 154);
}

TEST_F(SizeDomain, SearchEndsWithTheThirdBlendIndex) {
    // In mode 2 the connection ends at the edge, which the search does not reach.
    settings.BOUNDARY_HEIGHT_MODE = 2;
    const MeshLines lines = size();
    EXPECT_EQ(lines.n_connect_up, 0);
    EXPECT_EQ(lines.n_connect_down, 26) << "passed on the way to the upwind blend index";
}

TEST_F(SizeDomain, OneCellZonesAreWarnedOf) {
    settings.MIN_DXY = settings.MAX_DXY = 1000.0F;
    const MeshLines lines = size();
    ASSERT_EQ(lines.n_up, lines.n_add + 1);
    int warnings = 0;
    for (const std::string& line : log_lines(log)) {
        warnings += line.starts_with(" (Warning) The ") ? 1 : 0;
    }
    EXPECT_EQ(warnings, 3);
}

TEST_F(SizeDomain, Stop156And157) {
    settings.MIN_DXY = 201.0F;
    EXPECT_EQ(code(), 156);
    settings.XYCONF = directory.file("lines.txt");
    EXPECT_EQ(code(), 156) << "tested before the file is read";
    settings = flat_case();
    settings.MESH_HRATIO = 0.99F;
    EXPECT_EQ(code(), 157);
    settings.MESH_HRATIO = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(code(), 157);
    EXPECT_TRUE(log.kept().empty());
}

TEST_F(SizeDomain, StopsOfTheMap) {
    write_map(800.0);
    settings.BASIC_H_FILE = directory.file("none.map");
    EXPECT_EQ(code(), 111);
    directory.write("bad.map", "<TORVEX_MAP lon-lat>\nn_lon = 3\n--DATA--\n");
    settings.BASIC_H_FILE = directory.file("bad.map");
    EXPECT_EQ(code(), 112);
    directory.write("bad.map", "no map\n");
    EXPECT_EQ(code(), 113);
}

TEST_F(SizeDomain, ImpossibleSizesEndTheRun) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (float CaseSettings::*key :
         {&CaseSettings::WE_LENGTH, &CaseSettings::NS_LENGTH, &CaseSettings::MIN_DXY_RAD,
          &CaseSettings::SIDE_BR, &CaseSettings::UP_BR, &CaseSettings::DOWN_BR,
          &CaseSettings::ADD_R, &CaseSettings::BZ_LIMIT, &CaseSettings::ADD_LIMIT}) {
        for (const float bad : {nan, infinity}) {
            settings = flat_case();
            settings.*key = bad;
            EXPECT_EQ(code(), 1);
        }
    }
    settings = flat_case();
    settings.MAX_DXY = infinity;
    EXPECT_EQ(code(), 1);
    settings.MAX_DXY = 200.0F;
    settings.MIN_DXY = 0.0F;
    EXPECT_EQ(code(), 1);
    settings.MIN_DXY = -50.0F;
    EXPECT_EQ(code(), 1);
    settings = flat_case();
    settings.BZ_LIMIT = -1.0F;
    settings.UP_BR = -0.1F;
    EXPECT_EQ(code(), 1);
    settings = flat_case();
    settings.BOUNDARY_HEIGHT_MODE = 1;
    settings.BUFFER_ZONE_SLOPE_GRADIENT = 0.0F;
    EXPECT_EQ(code(), 1);
}

TEST_F(SizeDomain, TooManyCellsEndTheRun) {
    settings.MIN_DXY = 0.01F;
    settings.MAX_DXY = 0.01F;
    EXPECT_EQ(code(), 1);  // 500000 cells to the edge
    settings = flat_case();
    settings.MIN_DXY = 0.5F;
    settings.MAX_DXY = 0.5F;
    settings.MESH_VRATIO = 1.0F;
    EXPECT_EQ(code(), 1);  // 15000 x 10000 x 300
}

// A small mesh-line file: x planes every 100 m from -700 to 500, y planes from -400 to 400.
std::string line_file() {
    std::string text = "14\n10\n-400\n-200\n0\n200\nmarks of y\n0\n200\nx\n";
    for (int x = -700; x <= 500; x += 100) {
        text += std::to_string(x) + "\n";
    }
    text += "y\n";
    for (int y = -400; y <= 400; y += 100) {
        text += std::to_string(y) + "\n";
    }
    return text;
}

TEST_F(SizeDomain, MeshLineFileTakesThePlaceOfTheComputation) {
    directory.write("lines.txt", line_file());
    settings.XYCONF = directory.file("lines.txt");
    MeshLines lines;
    const Lines told = console_of([&] { lines = size(); });
    EXPECT_EQ(told, (Lines{"   - Reading terrain map to find max, min and average elevation.",
                           "   - Maximum elevation in the domain is        0.0m.",
                           "   - Minimum elevation in the domain is        0.0m.",
                           "   - Average elevation in the domain is        0.0m.",
                           "   - Computational domain height set to   1500.0m."}));
    EXPECT_EQ(log_lines(log).size(), 4U);
    EXPECT_EQ(lines.ni, 14);
    EXPECT_EQ(lines.nj, 10);
    EXPECT_EQ(lines.nk, 29);
    EXPECT_EQ(lines.max_rad, 200.0F);
    EXPECT_EQ(lines.n_blend_up, 6);
    EXPECT_EQ(lines.n_blend_down, 4);
    EXPECT_EQ(lines.n_blend_side, 3);
    settings.BOUNDARY_HEIGHT_MODE = 2;  // the file's blend positions serve every mode
    Field2 h(lines.nx, lines.ny);
    EXPECT_EQ(stop_of([&] { flatten_buffer_zones(settings, lines, 1, log, h); }).code(), -1);
}

TEST_F(SizeDomain, DebugModeOneRefitsTheLinesAndTheirBlendPositions) {
    const test::CurrentDirectory current(directory.path());
    const MeshLines plain = size();
    const auto number = [](float value) { return edit::E(value, 16, 8) + "\n"; };
    const int c = plain.i_centre;
    const int d = plain.j_centre;
    const float x1 = 2.0F * plain.x_line(c - plain.n_add);
    directory.write("log-meshnumber",
                    "1\n1\n1\n" + number(x1) + number(2.0F * plain.x_line(c - plain.n_inner)) +
                        number(2.0F * plain.x_line(c + plain.n_inner)) +
                        number(2.0F * plain.y_line(d - plain.n_inner)) +
                        number(2.0F * plain.y_line(d + plain.n_inner)) + "#==x(i)==\n" +
                        number(2.0F * plain.x_line(1)) + number(2.0F * plain.x_line(plain.nx)) +
                        "#==y(j)==\n" + number(2.0F * plain.y_line(1)) +
                        number(2.0F * plain.y_line(plain.ny)) + "#==x(i)==\n0.0\n");
    settings.DEBUG_MODE = 1;
    const MeshLines lines = size();
    for (int i = 1; i <= plain.nx; ++i) {
        EXPECT_NEAR(lines.x_line(i), 2.0F * plain.x_line(i), 0.05);
    }
    EXPECT_EQ(lines.n_blend_up, plain.n_blend_up);
    EXPECT_EQ(lines.n_blend_down, plain.n_blend_down);
    EXPECT_EQ(lines.n_blend_side, plain.n_blend_side);
    EXPECT_TRUE(directory.has("tmp"));
    settings.DEBUG_MODE = 2;
    EXPECT_EQ(size().x_line.values(), plain.x_line.values());
}

}  // namespace
}  // namespace torvex
