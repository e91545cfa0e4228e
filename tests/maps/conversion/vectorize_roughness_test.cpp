#include "maps/conversion/vectorize_roughness.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "canopy/shape/shape_file.hpp"
#include "canopy/shape/shape_table.hpp"
#include "maps/conversion/conversion_fixture.hpp"

namespace torvex {
namespace {

using testing::ElementsAre;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

// Three columns by two of 6 by 12 minutes from 139 50 E, 36 0 N on, the origin of zone 9.
RoughnessColumns columns() {
    RoughnessColumns c;
    c.corner_lon.allocate(4, 3);
    c.corner_lat.allocate(4, 3);
    for (int j = 1; j <= 3; ++j) {
        for (int i = 1; i <= 4; ++i) {
            c.corner_lon(i, j) = 139 * 60 + 50 + 6 * (i - 1);
            c.corner_lat(i, j) = 36 * 60 + 12 * (j - 1);
        }
    }
    c.land_use_id.allocate(3, 2);
    c.height.allocate(3, 2);
    c.rls.allocate(3, 2, 0.1F);
    c.z0org.allocate(3, 2, 0.03F);
    c.land_use_id(2, 1) = 5;
    c.height(2, 1) = 12.5F;
    c.rls(2, 1) = 0.5F;
    return c;
}

struct Written {
    ShapeFileInfo info;
    std::vector<ShapeObject> shapes;
    std::string fields;
    std::vector<std::vector<double>> rows;
};

Written read_back(const std::string& name) {
    Written w;
    ShapeReader shapes;
    TableReader table;
    EXPECT_EQ(shapes.open(name), 0);
    EXPECT_EQ(table.open(name), 0);
    EXPECT_EQ(shapes.info(w.info), 0);
    w.fields = table.column_names();
    const int fields = 1 + static_cast<int>(std::count(w.fields.begin(), w.fields.end(), ','));
    for (int n = 0; n < w.info.count; ++n) {
        EXPECT_EQ(shapes.read(n, w.shapes.emplace_back()), 0);
        std::vector<double>& row = w.rows.emplace_back();
        for (int f = 0; f < fields; ++f) {
            row.push_back(table.number(n, f).value);
        }
    }
    EXPECT_EQ(table.rows(), w.info.count);
    return w;
}

class VectorizeRoughness : public ::testing::Test {
 protected:
    VectorizeRoughness() { CaptureStdout(); }
    ~VectorizeRoughness() override { GetCapturedStdout(); }

    test::WorkingDirectory directory;
};

TEST_F(VectorizeRoughness, Variant2HasTheColumnsWithCanopyOnly) {
    vectorizeRoughness2("a.shp", 0, columns());
    const Written w = read_back("a.shp");
    EXPECT_EQ(w.info.type, 5);
    EXPECT_EQ(w.fields, "POLYGON, LandUseID, Height, RLS");
    ASSERT_EQ(w.rows.size(), 1U);
    EXPECT_THAT(w.rows[0], ElementsAre(1, 5, 12.5, 0.5));
    // Clockwise and closed, in degrees: 139 56 .. 140 2 E, 36 0 .. 36 12 N.
    const double west = 139 + 56.0 / 60;
    const double east = 140 + 2.0 / 60;
    EXPECT_THAT(w.shapes[0].x, ElementsAre(west, west, east, east, west));
    EXPECT_THAT(w.shapes[0].y, ElementsAre(36, 36.2, 36.2, 36, 36));
}

TEST_F(VectorizeRoughness, Variant22HasAllColumns) {
    vectorizeRoughness22("a.shp", 0, columns());
    const Written w = read_back("a.shp");
    EXPECT_EQ(w.fields, "POLYGON, LandUseID, Height, RLS");
    ASSERT_EQ(w.rows.size(), 6U);
    EXPECT_EQ(w.rows[5][0], 6);
    EXPECT_EQ(w.rows[5][2], 0);
}

TEST_F(VectorizeRoughness, Variant3AddsTheOldRoughnessAndTheIndices) {
    vectorizeRoughness3("a.shp", 0, columns());
    const Written w = read_back("a.shp");
    EXPECT_EQ(w.fields, "POLYGON, LandUseID, Z0org, Height, RLS, index_i, index_j");
    ASSERT_EQ(w.rows.size(), 6U);
    EXPECT_THAT(w.rows[1], ElementsAre(2, 5, 0.03, 12.5, 0.5, 2, 1));
    EXPECT_THAT(w.rows[3], ElementsAre(4, 0, 0.03, 0, 0.1, 1, 2));
}

// The origin of the zone is its zero; its meridian is the north axis.
TEST_F(VectorizeRoughness, AZoneGivesPlaneCoordinatesEastAndNorth) {
    vectorizeRoughness22("a.shp", 9, columns());
    const Written w = read_back("a.shp");
    const ShapeObject& first = w.shapes[0];
    EXPECT_NEAR(first.x[0], 0.0, 1e-3);
    EXPECT_NEAR(first.y[0], 0.0, 1e-3);
    EXPECT_NEAR(first.x[1], 0.0, 1e-3);
    // 12 minutes of the meridian at 36 degrees, about 1849.3 m each, times 0.9999; 6 minutes of
    // the parallel, about 1502 m each.
    EXPECT_NEAR(first.y[1], 12 * 1849.2 * 0.9999, 3.0);
    EXPECT_NEAR(first.x[3], 6 * 1502.0 * 0.9999, 10.0);
}

TEST_F(VectorizeRoughness, AnEarlierFileIsReplacedAndNothingIsLeftOver) {
    vectorizeRoughness22("a.shp", 0, columns());
    vectorizeRoughness2("a.shp", 0, columns());
    EXPECT_EQ(read_back("a.shp").rows.size(), 1U);
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        EXPECT_EQ(entry.path().stem(), "a");
        ++files;
    }
    EXPECT_EQ(files, 3);
}

TEST_F(VectorizeRoughness, ADirectoryThatIsNotThereStops) {
    EXPECT_EQ(test::stop_code_of([] { vectorizeRoughness2("none/a.shp", 0, columns()); }), 1);
}

}  // namespace
}  // namespace torvex
