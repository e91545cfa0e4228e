#include "roughness/sample_roughness.hpp"

#include <gmock/gmock.h>
#include <omp.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "roughness/roughness_cases.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::map_of;
using test::R_of;
using test::uniform_map;
using test::Z_of;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class SampleRoughness : public test::RoughnessTest {
 protected:
    Field2 sample() {
        Field2 z0(lines.ni, lines.nj);
        sample_roughness(pass(), maps, grid, z0);
        return z0;
    }
    template <class Check>
    void for_each_cell(Check check) {
        for (int j = 2; j <= lines.ny; ++j) {
            for (int i = 2; i <= lines.nx; ++i) {
                check(i, j);
            }
        }
    }

    DirectionMaps maps;
    GridGeometry grid = test::centres_over(lines);
};

TEST_F(SampleRoughness, UniformMapGivesItsValueInsideAndLeavesTheGhosts) {
    maps.basic_z0 = uniform_map(0.03F);
    const Field2 z0 = sample();
    for_each_cell([&](int i, int j) { EXPECT_NEAR(z0(i, j), 0.03F, 3.0e-8F); });
    for (int i = 1; i <= lines.ni; ++i) {
        EXPECT_EQ(z0(i, 1), 0.0F);
        EXPECT_EQ(z0(i, lines.nj), 0.0F);
    }
    for (int j = 1; j <= lines.nj; ++j) {
        EXPECT_EQ(z0(1, j), 0.0F);
        EXPECT_EQ(z0(lines.ni, j), 0.0F);
    }
    EXPECT_EQ(log.kept(), "");
}

// The mean of four corners in R, worked for one map cell with four values.
TEST_F(SampleRoughness, BlendsTheAveragingVariable) {
    const auto corner = [](double east, double north) {
        return east < 0.0 ? (north < 0.0 ? 0.01 : 0.8) : (north < 0.0 ? 0.1 : 2.0);
    };
    maps.basic_z0 = map_of(corner, 2000.0F, 4000.0F);
    ASSERT_EQ(maps.basic_z0.columns, 2);
    const Field2 z0 = sample();
    for_each_cell([&](int i, int j) {
        const double s = (static_cast<double>(grid.xc(i, j, 1)) + 2000.0) / 4000.0;
        const double t = (static_cast<double>(grid.yc(i, j, 1)) + 2000.0) / 4000.0;
        const double mean = R_of(0.01) * (1 - s) * (1 - t) + R_of(0.1) * s * (1 - t) +
                            R_of(0.8) * (1 - s) * t + R_of(2.0) * s * t;
        EXPECT_NEAR(static_cast<double>(z0(i, j)) / Z_of(mean), 1.0, 2.0e-6);
    });
}

// Where R is linear in both coordinates every blend is exact, whatever the map's points: what is
// tested is where the cells of each direction lie.
TEST_F(SampleRoughness, CellsLieDownwindAndToTheLeftOnTheMap) {
    const auto R_at = [](double east, double north) {
        return 0.05 + 1.3e-5 * east - 0.9e-5 * north;
    };
    maps.basic_z0 =
        map_of([&](double east, double north) { return Z_of(R_at(east, north)); }, 1500.0F, 60.0F);
    for (const double from : {0.0, 22.5, 90.0, 137.0, 180.0, 240.0, 270.0, 315.5, 360.0}) {
        settings.WIND_DIRECTION_ANGLE(1) = static_cast<float>(from);
        const Field2 z0 = sample();
        // The wind blows away from where it comes from; the left of it is a quarter turn further.
        const double bearing = (from + 180.0) * M_PI / 180.0;
        const double east_x = std::sin(bearing);
        const double north_x = std::cos(bearing);
        for_each_cell([&](int i, int j) {
            const auto x = static_cast<double>(grid.xc(i, j, 1));
            const auto y = static_cast<double>(grid.yc(i, j, 1));
            const double east = x * east_x - y * north_x;
            const double north = x * north_x + y * east_x;
            EXPECT_NEAR(static_cast<double>(z0(i, j)) / Z_of(R_at(east, north)), 1.0, 2.0e-5)
                << "wind from " << from << ", cell " << i << ", " << j;
        });
    }
}

TEST_F(SampleRoughness, TakesTheDirectionOfItsIndex) {
    maps.basic_z0 =
        map_of([](double east, double) { return east < 0.0 ? 0.01 : 1.0; }, 1500.0F, 10.0F);
    settings.WIND_DIRECTION_ANGLE(2) = 90.0F;
    EXPECT_NEAR(sample()(2, 5), 0.01F, 1.0e-7F);
    iwd = 2;
    EXPECT_NEAR(sample()(2, 5), 1.0F, 1.0e-6F);
}

TEST_F(SampleRoughness, DetailedMapIsPreferredInsideIt) {
    maps.basic_z0 = uniform_map(0.03F);
    maps.detailed_z0 = map_of([](double, double) { return 0.4; }, 200.0F, 50.0F);
    const Field2 z0 = sample();
    int fine = 0;
    for_each_cell([&](int i, int j) {
        const bool inside =
            std::abs(grid.xc(i, j, 1)) < 200.0F && std::abs(grid.yc(i, j, 1)) < 200.0F;
        fine += inside ? 1 : 0;
        const float expected = inside ? 0.4F : 0.03F;
        EXPECT_NEAR(z0(i, j), expected, 1.0e-6F * expected) << i << ", " << j;
    });
    EXPECT_EQ(fine, 5 * 4);
}

TEST_F(SampleRoughness, DetailedMapMayReachBeyondTheBasicOne) {
    maps.basic_z0 = map_of([](double, double) { return 0.03; }, 100.0F, 50.0F);
    maps.detailed_z0 = uniform_map(0.4F);
    const Field2 z0 = sample();
    for_each_cell([&](int i, int j) { EXPECT_NEAR(z0(i, j), 0.4F, 4.0e-7F); });
}

TEST_F(SampleRoughness, StopsOutsideTheBasicMapAndNamesIt) {
    maps.basic_z0 = map_of([](double, double) { return 0.03; }, 700.0F, 50.0F);
    const auto stopped = test::stop_of([this] { sample(); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 151);
    EXPECT_EQ(stopped->where(), "ground.map");
    EXPECT_THAT(stopped->reason(), HasSubstr("-0.850 km east"));
    EXPECT_THAT(stopped->reason(), HasSubstr("roughness map"));
    EXPECT_THAT(test::told(log),
                ElementsAre(" [Stop 151]:Specified computational domain is out of map domain.",
                            HasSubstr("The centre is longitude"), HasSubstr("The mesh reaches")));
}

TEST_F(SampleRoughness, MapMustReachTheOutermostCentreAndNoFurther) {
    // That centre lies 850 m west; the edge of the mesh is at 1000 m.
    maps.basic_z0 = map_of([](double, double) { return 0.03; }, 851.0F, 46.0F);
    EXPECT_EQ(test::stop_code_of([this] { sample(); }), 0);
    maps.basic_z0 = map_of([](double, double) { return 0.03; }, 849.0F, 1698.0F / 37.0F);
    EXPECT_EQ(test::stop_code_of([this] { sample(); }), 151);
}

TEST_F(SampleRoughness, StopsWithoutAnyMap) {
    EXPECT_EQ(test::stop_code_of([this] { sample(); }), 151);
}

TEST_F(SampleRoughness, SampledCellsAreHeldWithinTheirLimits) {
    maps.basic_z0 = uniform_map(1.0e-7F);
    EXPECT_EQ(sample()(5, 5), 0.0001F);
    for (const float high : {10.0F, 20.0F, 1.0e30F}) {
        maps.basic_z0 = uniform_map(high);
        const Field2 z0 = sample();
        for_each_cell([&](int i, int j) { EXPECT_NEAR(z0(i, j), 9.999F, 2.0e-6F); });
    }
}

TEST_F(SampleRoughness, StaysBetweenItsFourMapValuesBesideVeryRoughGround) {
    const auto stripes = [](double east, double) {
        return std::lround(east / 37.0) % 2 == 0 ? 12.0 : 0.001;
    };
    maps.basic_z0 = map_of(stripes, 1850.0F, 37.0F);
    for (const float from : {270.0F, 271.0F, 300.0F, 0.0F}) {
        settings.WIND_DIRECTION_ANGLE(1) = from;
        const Field2 z0 = sample();
        for_each_cell([&](int i, int j) {
            EXPECT_GE(z0(i, j), 0.00099F);
            EXPECT_LE(z0(i, j), 9.9991F);
        });
    }
}

TEST_F(SampleRoughness, FlatRunTakesItsConstantAndLooksAtNoMap) {
    settings.TERRAIN_MODE = "flat";
    settings.FLAT_ROUGHNESS = 0.07F;
    const Field2 without_map = sample();
    for_each_cell([&](int i, int j) { EXPECT_EQ(without_map(i, j), 0.07F); });
    maps.basic_z0 = map_of([](double, double) { return 0.03; }, 100.0F, 50.0F);
    const Field2 with_small_map = sample();
    for_each_cell([&](int i, int j) { EXPECT_EQ(with_small_map(i, j), 0.07F); });
}

TEST_F(SampleRoughness, OnlyTheModeFlatItselfTakesTheConstant) {
    settings.FLAT_ROUGHNESS = 0.07F;
    maps.basic_z0 = uniform_map(0.03F);
    for (const char* mode : {"flat2", "flatX", "Flat", "FLAT", "normal"}) {
        settings.TERRAIN_MODE = mode;
        EXPECT_NEAR(sample()(4, 4), 0.03F, 3.0e-8F) << mode;
    }
}

TEST_F(SampleRoughness, FlatRoughnessMustBeAboveZero) {
    settings.TERRAIN_MODE = "flat";
    for (const float bad : {0.0F, -0.1F, std::numeric_limits<float>::quiet_NaN(),
                            std::numeric_limits<float>::infinity()}) {
        settings.FLAT_ROUGHNESS = bad;
        const auto stopped = test::stop_of([this] { sample(); });
        ASSERT_TRUE(stopped) << bad;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->where(), HasSubstr("FLAT_ROUGHNESS"));
    }
    settings.FLAT_ROUGHNESS = -0.1F;
    EXPECT_EQ(test::stop_of([this] { sample(); })->reason(), "FLAT_ROUGHNESS is -0.1000E+00 m");
}

TEST_F(SampleRoughness, SameBitsForAnyNumberOfThreads) {
    const auto waves = [](double east, double north) {
        return 0.5 + 0.49 * std::sin(0.013 * east) * std::cos(0.017 * north);
    };
    maps.basic_z0 = map_of(waves, 1500.0F, 25.0F);
    settings.WIND_DIRECTION_ANGLE(1) = 33.0F;
    const int usual = omp_get_max_threads();
    omp_set_num_threads(1);
    const Field2 one = sample();
    for (const int threads : {2, 3, 8}) {
        omp_set_num_threads(threads);
        const Field2 many = sample();
        EXPECT_EQ(std::memcmp(one.data(), many.data(), one.size() * sizeof(float)), 0) << threads;
    }
    omp_set_num_threads(usual);
}

}  // namespace
}  // namespace torvex
