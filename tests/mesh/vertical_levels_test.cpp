#include "mesh/vertical_levels.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "mesh_cases.hpp"

namespace torvex {
namespace {

using test::flat_case;
using test::stop_of;

MeshLines levels(const CaseSettings& settings, float z_top) {
    MeshLines lines;
    make_vertical_levels(settings, z_top, lines);
    return lines;
}

// The levels in double precision with closed sums in place of running ones.
std::vector<double> reference(double MIN_DZ, double ratio, double MIN_DZ_HEIGHT, double constant,
                              double z_top) {
    const auto geometric = [&](int first, int n) {  // n layers from the exponent `first`
        return ratio == 1.0
                   ? MIN_DZ * n
                   : MIN_DZ * std::pow(ratio, first) * (std::pow(ratio, n) - 1.0) / (ratio - 1.0);
    };
    int n_const = 0;
    double counted = 0.0;
    if (MIN_DZ_HEIGHT > MIN_DZ) {
        n_const = static_cast<int>(std::floor(MIN_DZ_HEIGHT / MIN_DZ)) + 1;
        counted = MIN_DZ * (n_const - 1);
    }
    const int first = n_const == 0 ? 1 : 0;
    int added = 1;  // the addition that passes the top still counts
    while (counted + geometric(first, added) <= z_top) {
        ++added;
    }
    const int nz = (n_const == 0 ? 1 : n_const) + added;
    std::vector<double> z{0.0, 0.0};
    for (int k = 2; k <= nz; ++k) {
        const int layers = k - 1;
        z.push_back(layers <= n_const ? MIN_DZ * layers
                                      : MIN_DZ * n_const + geometric(0, layers - n_const));
    }
    int k_c = 1;
    while (z[static_cast<std::size_t>(k_c)] < constant) {
        ++k_c;
    }
    ++k_c;
    const double base = z[static_cast<std::size_t>(k_c)];
    const double last = z[static_cast<std::size_t>(nz)];
    for (int k = k_c + 1; k <= nz; ++k) {
        double& height = z[static_cast<std::size_t>(k)];
        height = base + (height - base) * (z_top - base) / (last - base);
    }
    return z;
}

void expect_levels(const CaseSettings& settings, float z_top) {
    const MeshLines lines = levels(settings, z_top);
    const std::vector<double> z =
        reference(static_cast<double>(settings.MIN_DZ), static_cast<double>(settings.MESH_VRATIO),
                  static_cast<double>(settings.MIN_DZ_HEIGHT),
                  static_cast<double>(settings.CONSTANT_DZ_HEIGHT), static_cast<double>(z_top));
    ASSERT_EQ(lines.nz, static_cast<int>(z.size()) - 1);
    ASSERT_EQ(lines.z_line.size(), lines.nz);
    for (int k = 1; k <= lines.nz; ++k) {
        EXPECT_NEAR(lines.z_line(k), z[static_cast<std::size_t>(k)],
                    1e-5 * static_cast<double>(z_top))
            << "level " << k;
    }
    EXPECT_EQ(lines.z_line(lines.nz), z_top) << "the top is met exactly";
}

TEST(VerticalLevels, GrowFromTheGroundWithoutConstantLayers) {
    const CaseSettings settings = flat_case();  // 5 m, ratio 1.15, constant spacing to 100 m
    const MeshLines lines = levels(settings, 1500.0F);
    EXPECT_EQ(lines.nz, 28);
    EXPECT_EQ(top_constant_level(lines.z_line, 100.0F), 12);
    const double expected[] = {0.0, 5.0, 10.75, 17.3625, 24.966875};
    for (int k = 1; k <= 5; ++k) {
        EXPECT_NEAR(lines.z_line(k), expected[k - 1], 1e-4);
    }
    EXPECT_EQ(lines.z_line(28), 1500.0F);
}

TEST(VerticalLevels, KeepTheFirstHeightUpToMinDzHeight) {
    CaseSettings settings = flat_case();
    settings.MIN_DZ_HEIGHT = 20.0F;
    const MeshLines lines = levels(settings, 1500.0F);
    EXPECT_EQ(lines.nz, 33);
    EXPECT_EQ(top_constant_level(lines.z_line, 100.0F), 16);
    const float expected[] = {0.0F, 5.0F, 10.0F, 15.0F, 20.0F, 25.0F, 30.0F, 35.75F};
    for (int k = 1; k <= 8; ++k) {
        EXPECT_FLOAT_EQ(lines.z_line(k), expected[k - 1]);
    }
}

TEST(VerticalLevels, MinDzHeightActsOnlyAboveTheFirstLayer) {
    CaseSettings settings = flat_case();
    const MeshLines without = levels(settings, 1500.0F);
    settings.MIN_DZ_HEIGHT = 5.0F;
    EXPECT_EQ(levels(settings, 1500.0F).z_line.values(), without.z_line.values());
}

TEST(VerticalLevels, AgreeWithClosedSums) {
    CaseSettings settings = flat_case();
    for (const float ratio : {1.0F, 1.05F, 1.15F, 1.3F}) {
        for (const float top : {700.0F, 1500.0F, 2345.6F}) {
            for (const float MIN_DZ_HEIGHT : {0.0F, 22.0F, 63.0F}) {
                settings.MESH_VRATIO = ratio;
                settings.MIN_DZ_HEIGHT = MIN_DZ_HEIGHT;
                SCOPED_TRACE(testing::Message() << ratio << " " << top << " " << MIN_DZ_HEIGHT);
                expect_levels(settings, top);
            }
        }
    }
}

TEST(VerticalLevels, LevelsUpToTheConstantHeightAreNotScaled) {
    const CaseSettings settings = flat_case();
    const MeshLines low = levels(settings, 1000.0F);
    const MeshLines high = levels(settings, 1900.0F);
    for (int k = 1; k <= 12; ++k) {
        EXPECT_EQ(low.z_line(k), high.z_line(k));
    }
    EXPECT_NE(low.z_line(13), high.z_line(13));
}

TEST(VerticalLevels, ConstantLayersEndOneAboveTheFirstLevelThatReachesTheHeight) {
    CaseSettings settings = flat_case();
    settings.MIN_DZ = 10.0F;
    settings.MESH_VRATIO = 1.0F;
    const MeshLines lines = levels(settings, 500.0F);
    EXPECT_EQ(top_constant_level(lines.z_line, 100.0F), 12);  // z(11) = 100 reaches it
    EXPECT_EQ(top_constant_level(lines.z_line, 100.5F), 13);
    EXPECT_EQ(top_constant_level(lines.z_line, 0.0F), 2);
}

TEST(VerticalLevels, Stop152WhereNoLevelReachesTheConstantHeight) {
    CaseSettings settings = flat_case();
    settings.CONSTANT_DZ_HEIGHT = 5000.0F;
    EXPECT_EQ(stop_of([&] { levels(settings, 1500.0F); }).code(), 152);
    settings.CONSTANT_DZ_HEIGHT = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(stop_of([&] { levels(settings, 1500.0F); }).code(), 152);
}

TEST(VerticalLevels, Stop152WhereOnlyTheLastLevelReachesIt) {
    const Line1 z_line = [] {
        Line1 z(3);
        z(2) = 50.0F;
        z(3) = 100.0F;
        return z;
    }();
    EXPECT_EQ(top_constant_level(z_line, 50.0F), 3);
    EXPECT_EQ(stop_of([&] { top_constant_level(z_line, 100.0F); }).code(), 152);
}

TEST(VerticalLevels, Stop152WhereALowTopTurnsLayersOver) {
    CaseSettings settings = flat_case();
    settings.MIN_DZ_HEIGHT = 400.0F;  // levels to 405 m whatever the top
    settings.CONSTANT_DZ_HEIGHT = 300.0F;
    settings.USE_TFTB = true;
    EXPECT_EQ(stop_of([&] { levels(settings, 200.0F); }).code(), 152);
    EXPECT_EQ(stop_of([&] { levels(settings, 310.0F); }).code(), -1);
}

TEST(VerticalLevels, LayerKeysMustBePositive) {
    for (const float bad : {0.0F, -5.0F, std::numeric_limits<float>::quiet_NaN()}) {
        CaseSettings settings = flat_case();
        settings.MIN_DZ = bad;
        Stop stop = stop_of([&] { levels(settings, 1500.0F); });
        EXPECT_EQ(stop.code(), 1);
        EXPECT_EQ(stop.where(), "key MIN_DZ");
        settings = flat_case();
        settings.MESH_VRATIO = bad;
        stop = stop_of([&] { levels(settings, 1500.0F); });
        EXPECT_EQ(stop.code(), 1);
        EXPECT_EQ(stop.where(), "key MESH_VRATIO");
    }
}

TEST(VerticalLevels, MoreThan5000LevelsEndTheRun) {
    CaseSettings settings = flat_case();
    settings.MESH_VRATIO = 1.0F;
    settings.MIN_DZ = 0.25F;  // 6000 layers
    Stop stop = stop_of([&] { levels(settings, 1500.0F); });
    EXPECT_EQ(stop.code(), 1);
    EXPECT_NE(stop.reason().find("5000 levels"), std::string::npos);
    settings.MIN_DZ_HEIGHT = 1400.0F;
    EXPECT_EQ(stop_of([&] { levels(settings, 1500.0F); }).code(), 1);
    settings = flat_case();
    settings.MESH_VRATIO = 0.5F;  // the layers add up to 10 m and no more
    EXPECT_EQ(stop_of([&] { levels(settings, 1500.0F); }).code(), 1);
    settings = flat_case();
    EXPECT_EQ(stop_of([&] { levels(settings, std::numeric_limits<float>::quiet_NaN()); }).code(),
              1);
}

}  // namespace
}  // namespace torvex
