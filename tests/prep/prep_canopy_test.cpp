// torvex-prep canopy from case and shapefile to a file that the run's own reader takes.

#include <gmock/gmock.h>

#include <cmath>

#include "canopy/canopy_file.hpp"
#include "canopy/shape/shape_file.hpp"
#include "canopy/shape/shape_table.hpp"
#include "maps/local_metric.hpp"
#include "prep/prep_fixture.hpp"
#include "prep/record_counts.hpp"
#include "support/case_text.hpp"
#include "support/run_program.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct Square {
    double x, y, side, height;
};

class PrepCanopy : public ::testing::Test {
 protected:
    PrepCanopy() {
        directory.write("h.map", level_map("10"));
        directory.write("z0.map", level_map("0.03"));
    }

    // A case with cells of 10 m round the centre and layers of 5 m.
    void write_case(const std::string& block, const std::string& angles = "270",
                    const CaseItems& more = {}) {
        const auto count = 1 + std::ranges::count(angles, ',');
        CaseItems items{
            {"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = " + std::to_string(count) +
                                 ", WIND_DIRECTION_ANGLE = " + angles},
            {"NML_CASEFILE", "WE_LENGTH = 100, NS_LENGTH = 100"},
            {"NML_CASEFILE", "MIN_DXY = 10, MAX_DXY = 40, MIN_DXY_RAD = 100"},
            {"NML_CASEFILE", "MIN_DZ = 5"},
            {"NML_BOUNDARY_TREATMENT", "MIN_DZ_HEIGHT = 60"}};
        items.insert(items.end(), more.begin(), more.end());
        directory.write("torvex.tin",
                        quick_case_text(items, "&canopy_parameters\ncanopy_mode = 1\n/\n" + block));
    }

    void write_squares(const std::string& name, const std::vector<Square>& squares) {
        ShapeWriter shapes;
        TableWriter table;
        ASSERT_EQ(shapes.create(name + ".shp"), 0);
        ASSERT_EQ(table.create(name + ".dbf"), 0);
        ASSERT_EQ(table.add_double("H", 12, 4), 0);
        ASSERT_EQ(table.add_integer("USE", 6), 0);
        int row = 0;
        for (const Square& s : squares) {
            const double X = s.x + s.side;
            const double Y = s.y + s.side;
            ASSERT_EQ(shapes.write_ring({s.x, s.x, X, X, s.x}, {s.y, Y, Y, s.y, s.y}), 0);
            ASSERT_EQ(table.write(row, 0, s.height), 0);
            ASSERT_EQ(table.write(row, 1, 300 + row), 0);
            ++row;
        }
    }

    static std::string buildings(const std::string& more = {}) {
        return "&shp_parameters\nsf_build%filename = 'town.shp'\nsf_build%dbf_h = H\n"
               "sf_build%cs = -1\n" +
               more + "/\n";
    }

    WorkingDirectory directory;
};

// What the reader of the run makes of a file.
struct ReadBack {
    explicit ReadBack(const std::string& file) {
        const RecordCounts counts = counts_in(file);
        ::testing::internal::CaptureStdout();
        read_canopy_file(file, CanopyParameters{}, records,
                         {counts.ni, counts.nj, counts.nk, gp_d, gp_k, gp_e});
        ::testing::internal::GetCapturedStdout();
    }

    // Cells with density, and the sum of density over them.
    int cells() const {
        int n = 0;
        for (std::size_t c = 0; c < records.gp_density.size(); ++c) {
            n += records.gp_density.data()[c] > 0 ? 1 : 0;
        }
        return n;
    }
    double density() const {
        double sum = 0;
        for (std::size_t c = 0; c < records.gp_density.size(); ++c) {
            sum += static_cast<double>(records.gp_density.data()[c]);
        }
        return sum;
    }

    CanopyRecords records;
    Field3 gp_d, gp_k, gp_e;
};

TEST_F(PrepCanopy, BuildingFillsTheCellsBelowItsTop) {
    write_squares("town", {{-10, -10, 20, 10}});
    write_case(buildings());
    const PrepRun ran = prep({"canopy"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    const ReadBack back("restart-270_0-ccd.tuf");
    EXPECT_EQ(back.cells(), 8);
    const CanopyRecords& r = back.records;
    for (int k = 1; k <= r.gp_density.nk(); ++k) {
        for (int j = 1; j <= r.gp_density.nj(); ++j) {
            for (int i = 1; i <= r.gp_density.ni(); ++i) {
                if (r.gp_density(i, j, k) > 0) {
                    EXPECT_TRUE(k == 2 || k == 3);
                    EXPECT_FLOAT_EQ(r.gp_density(i, j, k), 1.0F);
                    EXPECT_FLOAT_EQ(r.gp_length(i, j, k), 20.0F);
                    EXPECT_FLOAT_EQ(r.gp_cf(i, j, k), 1.0F);
                    EXPECT_FLOAT_EQ(back.gp_d(i, j, k), 0.025F);
                }
            }
        }
    }
    EXPECT_THAT(ran.out, HasSubstr("polygons read 1, used 1"));
    EXPECT_THAT(ran.out, HasSubstr("cells with density 8, greatest drag density  0.2500E-01 1/m"));
}

TEST_F(PrepCanopy, FrontalAreasGiveTheSameLengthForASquare) {
    write_squares("town", {{-10, -10, 20, 10}});
    write_case(buildings("calc_fa = T\nfa_ndir = 4\n"));
    ASSERT_EQ(prep({"canopy"}).status, 0);
    const ReadBack back("restart-270_0-ccd.tuf");
    double shown = 0;  // sum of density S dz/length: 20 m x 10 m
    for (std::size_t c = 0; c < back.records.gp_density.size(); ++c) {
        const float phi = back.records.gp_density.data()[c];
        shown += phi > 0 ? static_cast<double>(phi / back.records.gp_length.data()[c]) * 500 : 0;
    }
    EXPECT_NEAR(shown, 200, 1e-3);
}

TEST_F(PrepCanopy, TurnedSquareKeepsItsVolumeAndTheReportAgrees) {
    write_squares("town", {{-10, -10, 20, 10}});
    write_case(buildings(), "225");
    const PrepRun ran = prep({"canopy"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    const ReadBack back("restart-225_0-ccd.tuf");
    EXPECT_NEAR(back.density() * 500, 4000, 4000 * 1e-4);
    EXPECT_THAT(ran.out,
                HasSubstr("plan area inside the mesh             400.0 m2, cover times area of the "
                          "columns             400.0 m2"));
}

TEST_F(PrepCanopy, DegreesAndMetresGiveTheSame) {
    write_squares("town", {{15, -35, 20, 10}});
    write_case(buildings());
    ASSERT_EQ(prep({"canopy"}).status, 0);
    const std::string metres = directory.read("restart-270_0-ccd.tuf");

    const MetresPerMinute per = metres_per_minute(35.5 * 60, 0);
    const auto lon = [&](double e) { return 139.75 + e / static_cast<double>(per.lon) / 60; };
    const auto lat = [&](double n) { return 35.5 + n / static_cast<double>(per.lat) / 60; };
    ShapeWriter shapes;
    ASSERT_EQ(shapes.create("town.shp"), 0);
    ASSERT_EQ(shapes.write_ring({lon(15), lon(15), lon(35), lon(35), lon(15)},
                                {lat(-35), lat(-15), lat(-15), lat(-35), lat(-35)}),
              0);
    shapes.close();
    write_case("&shp_parameters\nsf_build%filename = 'town.shp'\nsf_build%dbf_h = H\n/\n");
    ASSERT_EQ(prep({"canopy"}).status, 0);
    const ReadBack back("restart-270_0-ccd.tuf");
    EXPECT_NEAR(back.density(), 8, 1e-5);
}

TEST_F(PrepCanopy, ForestTakesTheDefaultsOfForests) {
    write_squares("wood", {{-20, -20, 40, 12}});
    write_case(
        "&shp_parameters\nshp_def_cs = -1\nsf_tree%filename = wood.shp\nsf_tree%dbf_h = H\n/\n");
    ASSERT_EQ(prep({"canopy"}).status, 0);
    const ReadBack back("restart-270_0-ccd.tuf");
    EXPECT_EQ(back.cells(), 16 * 3);
    // 12 m: two layers of 5 m and 2 m of the third.
    EXPECT_NEAR(back.density(), 16 * 0.05 * 2.4, 1e-5);
    for (std::size_t c = 0; c < back.records.gp_density.size(); ++c) {
        if (back.records.gp_density.data()[c] > 0) {
            EXPECT_NEAR(back.records.gp_length.data()[c], 0.05 / 0.3, 1e-6);
            EXPECT_FLOAT_EQ(back.records.gp_cf.data()[c], 0.4F);
        }
    }
    float greatest = 0;
    for (std::size_t c = 0; c < back.gp_d.size(); ++c) {
        greatest = std::max(greatest, back.gp_d.data()[c]);
    }
    EXPECT_NEAR(greatest, 0.3 * 0.2, 1e-6);  // leaf area density times Cd
}

TEST_F(PrepCanopy, BothSetsFeedOneFile) {
    write_squares("town", {{-40, -10, 20, 10}});
    write_squares("wood", {{20, -10, 20, 10}});
    write_case(buildings("sf_tree%filename = wood.shp\nsf_tree%dbf_h = H\nsf_tree%cs = -1\n"));
    const PrepRun ran = prep({"canopy"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ReadBack("restart-270_0-ccd.tuf").cells(), 16);
    EXPECT_THAT(directory.read("torvex-prep.log"), HasSubstr("SHP File:town.shp\n"));
    EXPECT_THAT(directory.read("torvex-prep.log"), HasSubstr("SHP File:wood.shp\n"));
}

TEST_F(PrepCanopy, LandUseTableGivesWhatNoColumnGives) {
    write_squares("wood", {{-20, -20, 20, 0}, {10, 10, 20, 0}});
    directory.write("cnpy_conv_table.tin",
                    "id name code height RLS pd Cf z0\n1 'pine' 300 10 0.5 0.2 0.6 0.1\n"
                    "2 'field' 301 0 0 0 0 0.5\n");
    write_case(
        "&shp_parameters\nshp_def_cs = -1\nsf_tree%filename = wood.shp\n"
        "sf_tree%dbf_luid = USE\n/\n");
    const PrepRun ran = prep({"canopy"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    const ReadBack back("restart-270_0-ccd.tuf");
    EXPECT_EQ(back.cells(), 8);  // the field is no canopy
    EXPECT_NEAR(back.density(), 8 * 0.2, 1e-5);
    float least = 1;
    float greatest = 0;
    for (std::size_t n = 0; n < back.records.gp_z0.size(); ++n) {
        least = std::min(least, back.records.gp_z0.data()[n]);
        greatest = std::max(greatest, back.records.gp_z0.data()[n]);
    }
    EXPECT_NEAR(least, 0.03, 1e-6);
    EXPECT_NEAR(greatest, 0.5, 1e-5);  // its roughness counts

    directory.write("cnpy_conv_table.tin", "heading\n1 'pine' 300 10 0.5 0.2 0.6 0.1\n");
    const PrepRun refused = prep({"canopy"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("no heights for the land-use ids 301"));
}

TEST_F(PrepCanopy, PolygonsThatAreLeftOutAreCounted) {
    write_squares("town", {{-10, -10, 20, 10}, {30, 30, 5, -1}, {90000, 0, 10, 5}, {60, 0, 5, 5}});
    write_case(buildings("shp_or_radius = 50\n"));
    const PrepRun ran = prep({"canopy"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out,
                HasSubstr("polygons read 4, used 1, 2 beyond shp_or_radius, 1 without a height"));
}

TEST_F(PrepCanopy, DirectionWithoutPolygonsGetsAnEmptyFileAndAWarning) {
    // Far upwind of the one direction, and beyond the mesh of the other.
    write_squares("town", {{-200, -5, 10, 10}});
    write_case(buildings(), "270, 180");
    const PrepRun ran = prep({"canopy"});
    const bool in_270 = ReadBack("restart-270_0-ccd.tuf").cells() > 0;
    const bool in_180 = ReadBack("restart-180_0-ccd.tuf").cells() > 0;
    ASSERT_TRUE(in_270);
    ASSERT_FALSE(in_180);
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.err, HasSubstr("Warning: WD 180_0: no polygon lies inside the mesh"));
}

TEST_F(PrepCanopy, NoPolygonAnywhereFails) {
    write_squares("town", {{90000, 0, 10, 5}});
    write_case(buildings());
    const PrepRun ran = prep({"canopy"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("no polygon lies inside the mesh of any direction"));
}

TEST_F(PrepCanopy, WarnsOfHeightsThatTheMeshDoesNotSuit) {
    write_squares("town", {{-10, -10, 20, 4}});
    write_case(buildings());
    EXPECT_THAT(prep({"canopy"}).err,
                HasSubstr("ends inside the first layer of the mesh, which ends at     5.00 m"));
    write_squares("town", {{-10, -10, 20, 900}});
    EXPECT_THAT(prep({"canopy"}).err, HasSubstr("exceeds the layers of constant height"));
}

TEST_F(PrepCanopy, WhatIsMissingIsNamed) {
    write_squares("town", {{-10, -10, 20, 4}});
    const auto refusal = [this](const std::string& block) {
        write_case(block);
        const PrepRun ran = prep({"canopy"});
        EXPECT_EQ(ran.status, 1);
        return ran.err;
    };
    EXPECT_THAT(refusal(""), HasSubstr("no shapefile: both"));
    EXPECT_THAT(refusal("&shp_parameters\nsf_build%filename = town.shp\n/\n"),
                HasSubstr("no heights: key sf_build%dbf_h is blank"));
    EXPECT_THAT(refusal("&shp_parameters\nsf_tree%filename = town.shp\n/\n"),
                HasSubstr("no heights: key sf_tree%dbf_h is blank"));
    EXPECT_THAT(refusal(buildings("shp_def_cs = 4\nsf_tree%cs = 77\nsf_tree%dbf_h = H\n"
                                  "sf_tree%filename = town.shp\n")),
                HasSubstr("Unknown coordinate system [77]\n  in key sf_tree%cs"));
    write_squares("town", {{-1000, -10, 20, 4}});
    EXPECT_THAT(refusal("&shp_parameters\nsf_build%filename = town.shp\nsf_build%dbf_h = H\n/\n"),
                HasSubstr("is not at degrees of longitude and latitude"));
}

TEST_F(PrepCanopy, UserDomainIsRefused) {
    write_squares("town", {{-10, -10, 20, 10}});
    write_case(buildings(), "270", {{"NML_RUN", "TORVEX_MODE = 1"}});
    EXPECT_EQ(prep({"canopy"}).status, 1);
}

TEST_F(PrepCanopy, ModeOffWarnsAndWrites) {
    write_squares("town", {{-10, -10, 20, 10}});
    write_case(buildings());
    std::string text = directory.read("torvex.tin");
    text.replace(text.find("canopy_mode = 1"), 15, "canopy_mode = 0");
    directory.write("torvex.tin", text);
    const PrepRun ran = prep({"canopy"});
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.err, HasSubstr("canopy_mode is 0"));
    EXPECT_TRUE(directory.has("restart-270_0-ccd.tuf"));
}

TEST_F(PrepCanopy, WritesNothingButItsFiles) {
    write_squares("town", {{-10, -10, 20, 10}});
    write_case(buildings());
    ASSERT_EQ(prep({"canopy"}).status, 0);
    ASSERT_EQ(prep({"canopy", "/f", "torvex.tin"}).status, 0);
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
        names.push_back(entry.path().filename());
    }
    EXPECT_THAT(names, ::testing::UnorderedElementsAre("h.map", "z0.map", "torvex.tin", "town.shp",
                                                       "town.shx", "town.dbf", "torvex-prep.log",
                                                       "restart-270_0-ccd.tuf"));
}

TEST_F(PrepCanopy, CheckShapefileHasOneRectangleForEachColumn) {
    write_squares("town", {{-10, -10, 20, 10}});
    write_case(buildings());
    ASSERT_EQ(prep({"canopy", "--check-shapefile"}).status, 0);
    ::testing::internal::CaptureStdout();
    ShapeReader shapes;
    TableReader table;
    ShapeFileInfo info;
    ASSERT_EQ(shapes.open("restart-270_0-roughness.shp"), 0);
    ASSERT_EQ(table.open("restart-270_0-roughness.shp"), 0);
    shapes.info(info);
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(table.column_names(), "POLYGON, LandUse, LandUseID, RLS, Height, Z0org");
    const RecordCounts counts = counts_in("restart-270_0-ccd.tuf");
    EXPECT_EQ(info.count, (counts.ni - 2) * (counts.nj - 2));
    int with_height = 0;
    for (int row = 0; row < info.count; ++row) {
        with_height += table.number(row, 4).value == 10.0 ? 1 : 0;
    }
    EXPECT_EQ(with_height, 4);
    EXPECT_NEAR(info.box.min_x, 139.75, 0.05);
    EXPECT_NEAR(info.box.max_y, 35.5, 0.05);
    // Together they are the mesh, which lies along the map at this wind.
    double area = 0;
    for (int row = 0; row < info.count; ++row) {
        ShapeObject ring;
        ASSERT_EQ(shapes.read(row, ring), 0);
        ASSERT_EQ(ring.x.size(), 5U);
        EXPECT_EQ(ring.x.front(), ring.x.back());
        EXPECT_EQ(ring.y.front(), ring.y.back());
        for (std::size_t n = 0; n < 4; ++n) {
            area += 0.5 * (ring.x[n + 1] - ring.x[n]) * (ring.y[n + 1] + ring.y[n] - 71.0);
        }
    }
    const double box = (info.box.max_x - info.box.min_x) * (info.box.max_y - info.box.min_y);
    EXPECT_NEAR(std::abs(area) / box, 1.0, 1e-5);
}

TEST_F(PrepCanopy, RunTakesTheFileAndFeelsIt) {
    write_squares("wood", {{-40, -40, 80, 15}});
    const CaseItems two{{"NML_NUMERICAL_SOLVER", "MAXIT = 2"}};
    write_case(
        "&shp_parameters\nshp_def_cs = -1\nsf_tree%filename = wood.shp\nsf_tree%dbf_h = H\n/\n",
        "270", two);
    ASSERT_EQ(prep({"canopy"}).status, 0);
    const ProgramRun ran = run_torvex_program({}, directory.path());
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("Reading canopy parameter file"));
    EXPECT_THAT(ran.err, Not(HasSubstr("sf_tree")));
}

TEST_F(PrepCanopy, RunningCaseIsLeftAlone) {
    write_squares("town", {{-10, -10, 20, 10}});
    write_case(buildings(), "270", {{"NML_NUMERICAL_SOLVER", "MAXIT = 0"}});
    const LockedFile lock("view-wind_direction.dat");
    const PrepRun ran = prep({"canopy"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("another run is using this directory"));
    EXPECT_FALSE(directory.has("restart-270_0-ccd.tuf"));
}

TEST(PrepEntries, UnknownOnesTellTheUsage) {
    WorkingDirectory directory;
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{}, {"forest"}, {"canopy", "--fast"}}) {
        const PrepRun ran = prep(arguments);
        EXPECT_EQ(ran.status, 102);
        EXPECT_THAT(ran.err, HasSubstr("usage: torvex-prep"));
    }
}

TEST(PrepEntries, HelpAndVersionAnswer) {
    WorkingDirectory directory;
    for (const char* question : {"--help", "--version"}) {
        for (const std::vector<std::string>& arguments :
             std::vector<std::vector<std::string>>{{question}, {"canopy", question}}) {
            const PrepRun ran = prep(arguments);
            EXPECT_EQ(ran.status, 0);
            EXPECT_THAT(ran.out, HasSubstr("torvex-prep"));
            EXPECT_EQ(ran.err, "");
        }
    }
}

}  // namespace
}  // namespace torvex::test
