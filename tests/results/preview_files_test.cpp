#include "results/preview_files.hpp"

#include <gtest/gtest.h>

#include "results/contour_grid.hpp"
#include "run/working_directory.hpp"

namespace torvex {
namespace {

// A mesh of one cell with its ghosts, and a case with one site.
class PreviewFiles : public ::testing::Test {
 protected:
    PreviewFiles() {
        settings.CENT_LAT = {35, 30, 0};
        settings.CENT_LON = {139, 45, 12.5F};
        settings.WE_LENGTH = 400;
        settings.NS_LENGTH = 1234.5F;
        settings.MIN_DXY = 40;
        settings.MAX_DXY = 50;
        settings.MIN_DXY_RAD = 200;
        settings.MESH_HRATIO = 1.2F;
        settings.SIDE_BR = 0.3F;
        settings.DOWN_BR = 0.4F;
        settings.UP_BR = 0.5F;
        settings.ADD_R = 1;
        settings.N_SITE = 1;
        settings.SITE[0].LAT = {35, 30, 1};
        settings.SITE[0].LON = {139, 45, 2};
        grid.ni = grid.nj = 3;
        grid.nk = 1;
        for (Field3* field : {&grid.xc, &grid.yc, &grid.zc}) {
            field->allocate(3, 3, 1);
        }
        z0.allocate(3, 3, 0.03F);
        for (int j = 1; j <= 3; ++j) {
            for (int i = 1; i <= 3; ++i) {
                grid.xc(i, j, 1) = 50.0F * static_cast<float>(i - 2);
                grid.yc(i, j, 1) = 40.0F * static_cast<float>(j - 2);
                grid.zc(i, j, 1) = 100.0F + static_cast<float>(i + 3 * j);
            }
        }
        z0(3, 1) = 0.5F;
    }
    Preview preview() const {
        return {settings, grid,       z0, {{{-200, -100}, {200, -100}, {-200, -100}}},
                {1, 2},   {{30, -40}}};
    }

    test::WorkingDirectory directory;
    CaseSettings settings;
    GridGeometry grid;
    Field2 z0;
};

TEST_F(PreviewFiles, Map) {
    write_preview_map("view-map.dat", preview());
    const std::string expected =
        "##<<TORVEX_BASIC preview map data>>\n"
        "##<<CASEFILE_INFO_BEGIN>>\n"
        "## cent_lat =    35.00   30.00    0.00\n"
        "## cent_lon =   139.00   45.00   12.50\n"
        "## we_length =    400.0000\n"
        "## ns_length =   1234.5000\n"
        "## min_dxy =      40.00\n"
        "## max_dxy =      50.00\n"
        "## min_dxy_rad =     200.00\n"
        "## mesh_hratio =       1.20\n"
        "## side_br =       0.30\n"
        "## down_br =       0.40\n"
        "## up_br =       0.50\n"
        "## add_r =       1.00\n"
        "## n_site =    1\n"
        "## site(   1)%lat =    35.00   30.00    1.00\n"
        "## site(   1)%lon =   139.00   45.00    2.00\n"
        "##<<CASEFILE_INFO_END>>\n"
        "variables=x, y, z, z0\n"
        "##<<TORVEX_ZONE_RECORD_BEGIN>>\n"
        "zone i=   3, j=   3, f=point\n"
        " -0.50000000E+02 -0.40000000E+02     0.10400E+03     0.30000E-01\n"
        "  0.00000000E+00 -0.40000000E+02     0.10500E+03     0.30000E-01\n"
        "  0.50000000E+02 -0.40000000E+02     0.10600E+03     0.50000E+00\n"
        " -0.50000000E+02  0.00000000E+00     0.10700E+03     0.30000E-01\n"
        "  0.00000000E+00  0.00000000E+00     0.10800E+03     0.30000E-01\n"
        "  0.50000000E+02  0.00000000E+00     0.10900E+03     0.30000E-01\n"
        " -0.50000000E+02  0.40000000E+02     0.11000E+03     0.30000E-01\n"
        "  0.00000000E+00  0.40000000E+02     0.11100E+03     0.30000E-01\n"
        "  0.50000000E+02  0.40000000E+02     0.11200E+03     0.30000E-01\n"
        "##<<TORVEX_ZONE_RECORD_END>>\n"
        "##<<TORVEX_LINE_DATA_BEGIN>>\n"
        "GEOMETRY T=LINE, CS=GRID\n"
        "  -200.000000      -100.000000    \n"
        "   200.000000      -100.000000    \n"
        "  -200.000000      -100.000000    \n"
        "##<<REFERENCE_CITE>>\n"
        "   1.00000000       2.00000000    \n"
        "##<<TORVEX_LINE_DATA_END>>\n"
        "GEOMETRY T=CIRCLE, CS=GRID, C=BLUE, FC=GREEN, x=  0.10000000E+01, y=  0.20000000E+01\n"
        "GEOMETRY T=CIRCLE, CS=GRID, C=BLUE, FC=BLUE, x=  0.30000000E+02, y= -0.40000000E+02\n";
    EXPECT_EQ(directory.read("view-map.dat"), expected);
}

TEST_F(PreviewFiles, ASecondOutlineStandsBehindAMark) {
    Preview two = preview();
    two.outlines.push_back({{5, 6}});
    write_preview_map("view-map.dat", two);
    EXPECT_NE(directory.read("view-map.dat")
                  .find("  -200.000000      -100.000000    \n##<<NEW_LINE>>\n"
                        "   5.00000000       6.00000000    \n##<<REFERENCE_CITE>>\n"),
              std::string::npos);
}

TEST_F(PreviewFiles, Roughness) {
    write_preview_roughness("view-map-roughness.dat", z0);
    EXPECT_EQ(directory.read("view-map-roughness.dat"),
              "##<<TORVEX ROUGHNESS DATA FOR MAP>>\n"
              "i=   3, j=   3,\n"
              "   0.03000\n   0.03000\n   0.50000\n   0.03000\n   0.03000\n   0.03000\n"
              "   0.03000\n   0.03000\n   0.03000\n");
}

TEST_F(PreviewFiles, GridsHaveFixedRangesAndTheLimitsOfTheFirstRowAndColumn) {
    grid.xc(3, 2, 1) = 999;  // on another row: no limit
    write_preview_grids(preview());
    EXPECT_EQ(directory.read("TERRAIN.GRD"),
              "DSAA\n"
              "           3           3\n"
              "  -50.0000000       50.0000000    \n"
              "  -40.0000000       40.0000000    \n"
              "0.0 4000.0\n"
              "   104.000000       105.000000       106.000000    \n"
              "   107.000000       108.000000       109.000000    \n"
              "   110.000000       111.000000       112.000000    \n");
    const std::string rough = directory.read("ROUGH.GRD");
    EXPECT_TRUE(rough.starts_with("DSAA\n           3           3\n"));
    EXPECT_NE(rough.find("\n0.0 10.0\n"), std::string::npos);
    EXPECT_NE(rough.find(" 0.500000000    \n"), std::string::npos);
}

}  // namespace
}  // namespace torvex
