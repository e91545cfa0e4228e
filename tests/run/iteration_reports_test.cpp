// What an iteration tells of the flow: the balance on the console, and the monitor point in a
// direction whose mesh is turned.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "maps/local_metric.hpp"
#include "run/outer_iteration_fixture.hpp"

namespace torvex::test {
namespace {

class IterationReports : public OuterIterationTest {};

// The number behind a word.
double number_behind(const std::string& line, const std::string& word) {
    const std::size_t at = line.find(word);
    EXPECT_NE(at, std::string::npos) << line;
    return at == std::string::npos ? HUGE_VAL
                                   : std::strtod(line.c_str() + at + word.size(), nullptr);
}

// The flux through plane i is 2i in each cell that counts, and far more in those on the edges.
TEST_F(IterationReports, BalanceIsThatOfTheFirstPlaneAndOfTheLastInnerOne) {
    double faces = 0;
    double nx = 0;
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    equations.CALCP = [&](const SolverContext& c, int, int) {
        const GridGeometry& g = c.grid;
        nx = g.nx;
        faces = (g.ny - 1) * (g.nz - 1);
        for (int k = 1; k <= g.nk; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                for (int i = 1; i <= g.ni; ++i) {
                    const bool inside = j >= 2 && j <= g.ny && k >= 2 && k <= g.nz;
                    c.flow.flxU(i, j, k) = inside ? 2.0F * static_cast<float>(i) : 1.0e6F;
                }
            }
        }
        c.flow.resid_m = far_off;
        return SolveRecords{};
    };
    const RunHere ran = solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 2"}}, equations);
    ASSERT_EQ(ran.status, 0) << ran.err;
    int lines = 0;
    for (const std::string& line : lines_of(ran.out)) {
        if (line.starts_with(" East flowin")) {
            EXPECT_DOUBLE_EQ(number_behind(line, "flowin"), 2 * faces);
        }
        if (line.starts_with(" flowin")) {
            ++lines;
            EXPECT_DOUBLE_EQ(number_behind(line, "flowin"), 2 * faces);
            EXPECT_DOUBLE_EQ(number_behind(line, "flowout"), 2 * nx * faces);
            EXPECT_DOUBLE_EQ(number_behind(line, "total"), 2 * faces - 2 * nx * faces);
        }
    }
    EXPECT_EQ(lines, 2);
}

struct MonitorAt {
    double x, y;  // in the axes of the mesh
};

class MonitorFrame : public OuterIterationTest {
 protected:
    // Where the monitor of the case stands, told by fields that hold the place of each cell.
    MonitorAt monitor_in_wind_from(const std::string& angle, const std::string& tag) const {
        constexpr float inflow = 8.0F;
        FakeEquations fake;
        fake.level = far_off;
        Equations equations = fake.equations();
        equations.CALCVIS = [](const SolverContext& c) {
            for (int k = 1; k <= c.grid.nk; ++k) {
                for (int j = 1; j <= c.grid.nj; ++j) {
                    for (int i = 1; i <= c.grid.ni; ++i) {
                        c.flow.u(i, j, k) = i == 1 ? inflow : c.grid.xc(i, j, k);
                        c.flow.v(i, j, k) = c.grid.yc(i, j, k);
                    }
                }
            }
        };
        const RunHere ran =
            solve({{"NML_CASEFILE", "WIND_DIRECTION_ANGLE = " + angle},
                   {"NML_MONITOR", "MONITOR_POSITION = 1, MONITOR_HEIGHT = 40, MONITOR_STEP = 1"},
                   {"NML_MONITOR", "MONITOR_LON = 139 45 6, MONITOR_LAT = 35 30 -2"},
                   {"NML_NUMERICAL_SOLVER", "MAXIT = 1"}},
                  equations);
        EXPECT_EQ(ran.status, 0) << ran.err;
        const std::string row = slot("view-monitor-" + tag + ".dat", 2);
        EXPECT_EQ(row.size(), 8U + 6U * 16U) << row;
        const auto value = [&](std::size_t n) {
            return row.size() < 104 ? HUGE_VAL
                                    : std::strtod(row.substr(8 + 16 * n, 16).c_str(), nullptr);
        };
        return {static_cast<double>(inflow) * value(0), static_cast<double>(inflow) * value(1)};
    }
};

// Wind from an angle a, clockwise from north, blows along (-sin a, -cos a) in east and north, and
// its left is (cos a, -sin a).
TEST_F(MonitorFrame, TurnsWithTheDirection) {
    const MetresPerMinute metres = metres_per_minute(35.5 * 60, 0);
    const double east = 6.0 / 60 * static_cast<double>(metres.lon);
    const double north = -2.0 / 60 * static_cast<double>(metres.lat);
    ASSERT_GT(east, 100.0) << "far from the centre, and on no axis";
    ASSERT_LT(north, -50.0);
    const std::vector<std::pair<std::string, std::string>> winds{
        {"22.5", "022_5"}, {"270", "270_0"}, {"90", "090_0"}, {"310", "310_0"}};
    for (const auto& [angle, tag] : winds) {
        const double a = std::strtod(angle.c_str(), nullptr) * 3.14159265358979 / 180;
        const MonitorAt at = monitor_in_wind_from(angle, tag);
        EXPECT_NEAR(at.x, -east * std::sin(a) - north * std::cos(a), 0.1) << angle;
        EXPECT_NEAR(at.y, east * std::cos(a) - north * std::sin(a), 0.1) << angle;
    }
}

}  // namespace
}  // namespace torvex::test
