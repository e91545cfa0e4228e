#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include "base/edit.hpp"
#include "canopy/shape/shape_file.hpp"
#include "canopy/shape/shape_table.hpp"
#include "case/mutations.hpp"
#include "prep/prep_fixture.hpp"

namespace torvex {
namespace {

namespace fs = std::filesystem;
using test::prep;

// A conversion with everything in it: a mosaic of a map and a grid, tables, a shapefile. The
// settings name no file to write, so that no damage leads out of the test's own directory.
class MutatedInputs : public ::testing::Test {
 protected:
    MutatedInputs() {
        fs::create_directory("db");
        good["trdb2tvm.tin"] =
            "&TRDB2TVM\n  DB_DR = 'db', TERRAIN_MODE = 2, ROUGHNESS_MODE = 2\n  SHP_MODE = 1\n"
            "  CENT_LON = 139, 48, 45\n  CENT_LAT = 35, 42, 30\n  WE_LENGTH = 200\n"
            "  NS_LENGTH = 200\n  MAX_DXY = 50, D_LON = 0.2, D_LAT = 0.2\n/\n";
        good["torvex.tin"] =
            "&shp_parameters\ntrdb2shp_fn = 'wood.shp'\ntrdb2shp%dbf_luid = 'LU'\n"
            "trdb2shp%cs = 0\nexclude_donut_shape = .true.\n/\n";
        good["db/index.txt"] = "# maps\na.asc\nb.map\n";
        good["db/index_z0.txt"] = "z0.map\n";
        good["db/a.asc"] =
            "ncols 3\nnrows 3\nxllcorner 139.75\nyllcorner 35.65\ncellsize 0.04\n"
            "NODATA_value -9999\n1 2 3\n4 -9999 6\n7 8 9\n";
        const std::string head =
            "<TORVEX_MAP lon-lat>\nn_lon = 3, n_lat = 3\nd_lon = 10, d_lat = 10\n"
            "base_longitude = 139 40\nbase_latitude = 35 32\n--DATA--\n";
        good["db/b.map"] = head + "1 2 3\n4 5 6\n7 8 9\n";
        good["db/z0.map"] = head + "3*0.03\n0.1 0.2 0.3\n3*0.5\n";
        good["conv_table.tin"] = "&CONV_TABLE\n Z00 = 0.1, 2*0.2, 0.8\n/\n";
        good["cnpy_conv_table.tin"] =
            "id name code height rls pd cf z0\n1 'a' 1 0 0 0 0 0\n2 'b' 5 0 0 0 0 0\n";
        for (const auto& [name, text] : good) {
            directory.write(name, text);
        }
        ShapeWriter shapes;
        TableWriter table;
        shapes.create("wood.shp");
        table.create("wood.shp");
        table.add_integer("LU", 8);
        shapes.write_ring({139.8, 139.8, 139.82, 139.82, 139.8}, {35.7, 35.72, 35.72, 35.7, 35.7});
        table.write(0, 0, 5);
    }

    test::WorkingDirectory directory;
    std::map<std::string, std::string> good;
};

TEST_F(MutatedInputs, EndWithAStatusAndNoHalfMap) {
    ASSERT_EQ(prep({"maps"}).status, 0);
    const std::set<int> known{0, 1, 111, 112, 113, 131, 132, 133, 134};
    constexpr int times = 80;
    int failed = 0;
    for (const auto& [name, text] : good) {
        test::Mutator mutator({text}, 77);
        for (int n = 0; n < times; ++n) {
            directory.write(name, mutator.next());
            fs::remove("terrain.map");
            fs::remove("roughness.map");
            const auto done = prep({"maps"});
            ASSERT_TRUE(known.contains(done.status)) << name << " " << n << ": " << done.err;
            if (done.status != 0) {
                ++failed;
                ASSERT_FALSE(done.err.empty()) << name << " " << n;
                ASSERT_FALSE(directory.has("terrain.map")) << name << " " << n;
                ASSERT_FALSE(directory.has("roughness.map")) << name << " " << n;
            }
        }
        directory.write(name, text);
    }
    EXPECT_GT(failed, times);  // the damage was felt
    EXPECT_EQ(prep({"maps"}).status, 0);
}

}  // namespace
}  // namespace torvex
