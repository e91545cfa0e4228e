#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canopy/canopy_file.hpp"
#include "prep/prep_fixture.hpp"
#include "run/run_fixture.hpp"

namespace torvex {
namespace {

using test::lines_of;
using test::prep;
using testing::HasSubstr;

// The quick case with one direction and a canopy file on its mesh: layers 2 and 3 of one column.
class PrepExport : public test::RunTest {
 protected:
    PrepExport() {
        write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}});
        EXPECT_EQ(run().status, 0);
        const std::string log = directory.read("torvex.log");
        const std::string mark = " Mesh number is: ";
        std::istringstream counts(log.substr(log.find(mark) + mark.size()));
        char by = 0;
        counts >> ni >> by >> nj >> by >> nk;
        CanopyRecords records;
        records.gp_cf.allocate(ni, nj, nk);
        records.gp_density.allocate(ni, nj, nk);
        records.gp_length.allocate(ni, nj, nk);
        for (const int k : {2, 3}) {
            records.gp_cf(5, 4, k) = 0.4F;
            records.gp_density(5, 4, k) = 0.05F;
            records.gp_length(5, 4, k) = 2;
        }
        write_canopy_file(stem + "ccd.tuf", records);
    }

    std::string stem = "restart-000_0-";
    int ni = 0, nj = 0, nk = 0;
};

TEST_F(PrepExport, LayersWithCanopyAndTheirSum) {
    const auto done = prep({"export", "vtk"});
    ASSERT_EQ(done.status, 0) << done.err;
    EXPECT_TRUE(directory.has(stem + "ccd-k002.vtk"));
    EXPECT_TRUE(directory.has(stem + "ccd-k003.vtk"));
    EXPECT_FALSE(directory.has(stem + "ccd-k001.vtk"));
    EXPECT_FALSE(directory.has(stem + "ccd-k004.vtk"));
    const std::vector<std::string> lines = lines_of(directory.read(stem + "ccd-sum.vtk"));
    const auto points = static_cast<std::size_t>(ni * nj);
    ASSERT_EQ(lines.size(), 7 + points + 2 + 3 * (3 + points));
    EXPECT_EQ(lines[1], "TORVEX Calculation Results By Ilse Marov");
    // Layers of 20 m and 26 m: 0.05 * 46 = 2.3. Value of column (5,4) behind the head of pd.
    const std::size_t column = 4 + static_cast<std::size_t>(ni) * 3;
    EXPECT_NEAR(std::stod(lines[7 + points + 2 + (3 + points) + 3 + column]), 2.3, 1e-4);
    EXPECT_NEAR(std::stod(lines[7 + points + 2 + 2 * (3 + points) + 3 + column]), 2.0, 1e-5);
}

TEST_F(PrepExport, LayersReachUpToTheTop) {
    CanopyRecords records;
    records.gp_cf.allocate(ni, nj, nk);
    records.gp_density.allocate(ni, nj, nk);
    records.gp_length.allocate(ni, nj, nk);
    records.gp_cf(5, 4, nk) = 0.4F;
    records.gp_density(5, 4, nk) = 0.05F;
    records.gp_length(5, 4, nk) = 2;
    write_canopy_file(stem + "ccd.tuf", records);
    ASSERT_EQ(prep({"export", "vtk"}).status, 0);
    EXPECT_TRUE(directory.has(stem + "ccd-k0" + std::to_string(nk) + ".vtk"));
}

TEST_F(PrepExport, Tecplot) {
    ASSERT_EQ(prep({"export", "/f", "torvex.tin", "tecplot"}).status, 0);
    const std::vector<std::string> lines = lines_of(directory.read(stem + "ccd-k002.dat"));
    ASSERT_EQ(lines.size(), 2 + static_cast<std::size_t>(ni * nj));
    EXPECT_EQ(lines[0], "variables = x, y, cf, pd, rls");
    EXPECT_TRUE(directory.has(stem + "ccd-sum.dat"));
}

TEST_F(PrepExport, ShapefilesOfTheColumns) {
    ASSERT_EQ(prep({"export", "shp"}).status, 0);
    EXPECT_TRUE(directory.has(stem + "ccd.shp"));
    EXPECT_TRUE(directory.has(stem + "ccd.dbf"));
    EXPECT_FALSE(directory.has(stem + "ccd-all.shp"));
    ASSERT_EQ(prep({"export", "shp", "all"}).status, 0);
    EXPECT_TRUE(directory.has(stem + "ccd-all.shp"));
}

TEST_F(PrepExport, FailuresAreTold) {
    EXPECT_EQ(prep({"export"}).status, 102);
    EXPECT_EQ(prep({"export", "png"}).status, 102);
    EXPECT_EQ(prep({"export", "vtk", "all"}).status, 102);
    EXPECT_EQ(prep({"export", "shp", "all", "more"}).status, 102);
    directory.write(stem + "ccd.tuf", "no records");
    EXPECT_EQ(prep({"export", "vtk"}).status, 1);
    std::filesystem::remove(stem + "ccd.tuf");
    const auto none = prep({"export", "vtk"});
    EXPECT_EQ(none.status, 1);
    EXPECT_THAT(none.err, HasSubstr("no direction of the case has a canopy file"));
}

}  // namespace
}  // namespace torvex
