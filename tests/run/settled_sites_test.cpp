// The rule of STOP_SITES: which places it watches, when they have settled, over how long.

#include "run/settled_sites.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "mesh/test_meshes.hpp"

namespace torvex {
namespace {

// A box of 800 m by 800 m by 200 m round the centre, in wind from the west; u grows with the height
// above ground by 0.1 m/s a metre, v and w are given.
class Sites : public ::testing::Test {
 protected:
    Sites() {
        settings.STOP_SITES = 0.01F;
        settings.MONITOR_HEIGHT = 55;
        direction.angle = 270;
        GridGeometry& g = direction.grid;
        g = mapped_mesh({9, 9, 11}, [](double s, double t, double q) {
            return Position{800 * s - 400, 800 * t - 400, 200 * q};
        });
        g = with_metrics(std::move(g));
        FlowState& s = direction.flow;
        s.u.allocate(g.ni, g.nj, g.nk);
        s.v.allocate(g.ni, g.nj, g.nk, 3.0F);
        s.w.allocate(g.ni, g.nj, g.nk, 2.0F);
        blow(0.1);
        add_site(0, 0);
    }
    void blow(double slope) {
        const GridGeometry& g = direction.grid;
        for (int k = 1; k <= g.nk; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                for (int i = 1; i <= g.ni; ++i) {
                    direction.flow.u(i, j, k) =
                        static_cast<float>(slope * static_cast<double>(g.zc(i, j, k)));
                }
            }
        }
    }
    // In seconds of arc from the centre at 0, 0; one is about 31 m.
    void add_site(double east, double north) {
        Site& site = settings.SITE[static_cast<std::size_t>(settings.N_SITE++)];
        site.LON = {0, 0, static_cast<float>(east)};
        site.LAT = {0, 0, static_cast<float>(north)};
    }
    SettledSites sites() const { return {settings, direction}; }
    void record(const SettledSites& watched, double slope, int window) {
        blow(slope);
        watched.record(direction.grid, direction.flow, window, direction.settling);
    }

    CaseSettings settings;
    Direction direction;
};

TEST_F(Sites, SpeedIsTakenAtTheHeightOfTheMonitor) {
    const SettledSites watched = sites();
    ASSERT_TRUE(watched.on());
    record(watched, 0.1, 10);
    ASSERT_EQ(direction.settling.speeds.size(), 1U);
    ASSERT_EQ(direction.settling.speeds[0].size(), 2U) << "the site and the monitor";
    // |(5.5, 3, 2)|
    EXPECT_NEAR(direction.settling.speeds[0][0], std::sqrt(5.5 * 5.5 + 9 + 4), 1e-4);
}

TEST_F(Sites, OutsideTheMeshAreNotWatched) {
    add_site(100, 0);  // 3 km
    EXPECT_EQ(sites().sites(), 1);
    settings.N_SITE = 0;
    EXPECT_FALSE(sites().on());
    add_site(0, 100);
    EXPECT_FALSE(sites().on()) << "the monitor alone settles nothing";
    settings.N_SITE = 0;
    add_site(0, 0);
    settings.MONITOR_HEIGHT = 1000;
    EXPECT_FALSE(sites().on()) << "above the mesh";
}

TEST_F(Sites, AreNotWatchedWithoutTheKey) {
    settings.STOP_SITES = 0;
    EXPECT_FALSE(sites().on());
}

// With v and w of 0 the speed goes as the slope: 1 % is a range of 1 % of the last value.
TEST_F(Sites, HaveSettledWhereTheyMovedByLessThanTheFraction) {
    direction.flow.v.fill(0);
    direction.flow.w.fill(0);
    const SettledSites watched = sites();
    constexpr int window = 4;
    record(watched, 0.05, window);
    for (const double slope : {0.1, 0.1009, 0.1004}) {
        record(watched, slope, window);
        EXPECT_FALSE(watched.settled(window, direction.settling)) << "too few, or the first counts";
    }
    record(watched, 0.1, window);
    EXPECT_TRUE(watched.settled(window, direction.settling)) << "0.1 to 0.1009";
    record(watched, 0.1011, window);
    EXPECT_FALSE(watched.settled(window, direction.settling)) << "0.1 to 0.1011";
    EXPECT_EQ(direction.settling.speeds.size(), 4U) << "no more than the window is kept";
}

// A resume may watch other sites than the run before it.
TEST_F(Sites, ForgetTheSpeedsOfAnotherNumberOfSites) {
    constexpr int window = 3;
    const SettledSites one = sites();
    for (int n = 0; n < window; ++n) {
        record(one, 0.1, window);
    }
    EXPECT_TRUE(one.settled(window, direction.settling));
    add_site(3, 0);
    const SettledSites two = sites();
    record(two, 0.1, window);
    EXPECT_FALSE(two.settled(window, direction.settling));
    EXPECT_EQ(direction.settling.speeds.size(), 1U);
}

TEST_F(Sites, OfAnotherNumberHaveNotSettledBeforeTheyAreSeen) {
    const SettledSites watched = sites();
    direction.settling.speeds = {{5.0F}, {5.0F}};
    EXPECT_FALSE(watched.settled(2, direction.settling));
}

// 10 iterations with the factor 0.9 of the accelerated sets; a slower relaxation covers as much in
// 9 (1 - URFU)/URFU times as many.
TEST(SettlingWindow, FollowsTheRelaxation) {
    CaseSettings settings;
    AccelerationMemory memory;
    settings.URFU = 0.5F;
    EXPECT_EQ(settling_window(settings, memory, true), 10);
    EXPECT_EQ(settling_window(settings, memory, false), 90);
    memory.stage = Stage::robust;
    EXPECT_EQ(settling_window(settings, memory, true), 10);
    memory.stage = Stage::plain;
    EXPECT_EQ(settling_window(settings, memory, true), 90) << "the keys of the case";
}

TEST(SettlingWindow, StaysWithinBounds) {
    CaseSettings settings;
    const auto window = [&](float urfu) {
        settings.URFU = urfu;
        return settling_window(settings, {}, false);
    };
    EXPECT_EQ(window(0.9F), 10);
    EXPECT_EQ(window(0.99F), 10);
    EXPECT_EQ(window(1.0F), 10);
    EXPECT_EQ(window(0.75F), 30);
    EXPECT_EQ(window(0.1F), 810);
    EXPECT_EQ(window(0.01F), 1000);
    for (const float odd : {0.0F, -1.0F, 2.0F, std::nanf("")}) {
        EXPECT_EQ(window(odd), 10);
    }
}

}  // namespace
}  // namespace torvex
