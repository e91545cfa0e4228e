#include "mesh/buffer_zones.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "mesh_cases.hpp"

namespace torvex {
namespace {

using test::even_lines;
using test::log_lines;
using test::stop_of;

// Lines whose cells grow outward, so that no width drops out of a formula by chance.
MeshLines growing_lines() {
    MeshLines lines = even_lines(4, 3, 6, 1.0F);
    const auto grow = [](Line1& line, int centre) {
        for (int i = 1; i <= line.size(); ++i) {
            const float m = line(i);
            line(i) = 80.0F * m + 3.0F * m * std::abs(m);
        }
        EXPECT_EQ(line(centre), 0.0F);
    };
    grow(lines.x_line, lines.i_centre);
    grow(lines.y_line, lines.j_centre);
    return lines;
}

Field2 rough_ground(const MeshLines& lines) {
    Field2 h(lines.nx, lines.ny);
    std::mt19937 random(4711);
    for (int j = 1; j <= lines.ny; ++j) {
        for (int i = 1; i <= lines.nx; ++i) {
            h(i, j) = 100.0F + static_cast<float>(random() % 4000U) * 0.1F;
        }
    }
    return h;
}

double volume(const MeshLines& lines, const Field2& h, int i1, int i2, int j1, int j2) {
    double sum = 0.0;
    for (int i = i1; i < i2; ++i) {
        for (int j = j1; j < j2; ++j) {
            const auto at = [&](int di, int dj) { return static_cast<double>(h(i + di, j + dj)); };
            const auto dx = static_cast<double>(lines.x_line(i + 1) - lines.x_line(i));
            const auto dy = static_cast<double>(lines.y_line(j + 1) - lines.y_line(j));
            sum += (at(0, 0) + at(1, 0) + at(0, 1) + at(1, 1)) / 4.0 * dx * dy;
        }
    }
    return sum;
}

double section_y(const MeshLines& lines, const Field2& h, int i, int j1, int j2) {
    double sum = 0.0;
    for (int j = j1; j < j2; ++j) {
        sum += (static_cast<double>(h(i, j)) + static_cast<double>(h(i, j + 1))) / 2.0 *
               static_cast<double>(lines.y_line(j + 1) - lines.y_line(j));
    }
    return sum;
}

double section_x(const MeshLines& lines, const Field2& h, int j, int i1, int i2) {
    double sum = 0.0;
    for (int i = i1; i < i2; ++i) {
        sum += (static_cast<double>(h(i, j)) + static_cast<double>(h(i + 1, j))) / 2.0 *
               static_cast<double>(lines.x_line(i + 1) - lines.x_line(i));
    }
    return sum;
}

class BufferZones : public testing::Test {
 protected:
    void flatten(int iwd = 1) {
        before = rough_ground(lines);
        after = before;
        flatten_buffer_zones(settings, lines, iwd, log, after);
    }

    CaseSettings settings = test::flat_case();
    MeshLines lines = growing_lines();
    RunLog log;
    Field2 before;
    Field2 after;
    int c = lines.i_centre;
    int d = lines.j_centre;
};

TEST_F(BufferZones, WorkedSideZone) {
    // Five planes 100 m apart with 10 20 30 20 10 m, blending at the middle one: the section is
    // 8000 m2, and h_f = (8000 - 0.5 * 10 * 200) / (200 + 100).
    lines = even_lines(1, 1, 4, 100.0F);
    Field2 h(lines.nx, lines.ny, 10.0F);
    const int i = lines.i_centre;
    const float heights[] = {10.0F, 20.0F, 30.0F, 20.0F, 10.0F};
    for (int n = 0; n <= 4; ++n) {
        h(i, lines.j_centre + 1 + n) = heights[n];
        h(i, lines.j_centre - 1 - n) = heights[n];
    }
    flatten_buffer_zones(settings, lines, 1, log, h);
    for (const int side : {1, -1}) {
        const auto at = [&](int n) { return h(i, lines.j_centre + side * (1 + n)); };
        EXPECT_NEAR(at(0), 10.0, 1e-5);
        EXPECT_NEAR(at(1), 0.5 * (10.0 + 70.0 / 3.0), 1e-4);
        for (int n = 2; n <= 4; ++n) {
            EXPECT_NEAR(at(n), 70.0 / 3.0, 1e-4);
        }
    }
    const int inner = lines.j_centre + 1;
    EXPECT_NEAR(section_y(lines, h, i, inner, inner + 4), 8000.0, 1e-2);
    EXPECT_NEAR(section_y(lines, h, i, inner - 6, inner - 2), 8000.0, 1e-2);
}

TEST_F(BufferZones, SidesKeepTheAreaOfEverySection) {
    flatten();
    for (int i = c - lines.n_add; i <= c + lines.n_inner; ++i) {
        for (const int j1 : {d + lines.n_inner, d - lines.n_side}) {
            const int j2 = j1 + lines.n_side - lines.n_inner;
            const double kept = section_y(lines, before, i, j1, j2);
            EXPECT_NEAR(section_y(lines, after, i, j1, j2), kept, 2e-6 * kept) << i << " " << j1;
        }
    }
}

TEST_F(BufferZones, UpwindKeepsTheVolumeOfTheWholeZone) {
    flatten();
    // The zone shares its inner edge with ground that the side zones have changed before.
    Field2 entry = before;
    for (int j = 1; j <= lines.ny; ++j) {
        entry(c - lines.n_add, j) = after(c - lines.n_add, j);
    }
    const double kept = volume(lines, entry, 1, c - lines.n_add, 1, lines.ny);
    EXPECT_NEAR(volume(lines, after, 1, c - lines.n_add, 1, lines.ny), kept, 2e-6 * kept);
}

TEST_F(BufferZones, DownwindKeepsTheAreaOfEveryRow) {
    flatten();
    const int inner = c + lines.n_inner;
    for (int j = 1; j <= lines.ny; ++j) {
        Field2 entry = before;
        entry(inner, j) = after(inner, j);
        const double kept = section_x(lines, entry, j, inner, lines.nx);
        EXPECT_NEAR(section_x(lines, after, j, inner, lines.nx), kept, 2e-6 * kept) << j;
    }
}

TEST_F(BufferZones, FlatPartsAreFlatAndRampsAreStraight) {
    flatten();
    const auto x = [&](int i) { return static_cast<double>(lines.x_line(i)); };
    const auto y = [&](int j) { return static_cast<double>(lines.y_line(j)); };
    const auto on_line = [](double s, double s1, float h1, double s2, float h2) {
        return static_cast<double>(h1) +
               (static_cast<double>(h2) - static_cast<double>(h1)) * (s - s1) / (s2 - s1);
    };
    const float upwind = after(1, 1);
    for (int j = 1; j <= lines.ny; ++j) {
        for (int i = 1; i <= c - lines.n_blend_up; ++i) {
            EXPECT_EQ(after(i, j), upwind) << "one height across the wind";
        }
        for (int i = c - lines.n_blend_up; i <= c - lines.n_add; ++i) {
            EXPECT_NEAR(after(i, j),
                        on_line(x(i), x(c - lines.n_blend_up), upwind, x(c - lines.n_add),
                                after(c - lines.n_add, j)),
                        1e-3);
        }
        for (int i = c + lines.n_blend_down; i <= lines.nx; ++i) {
            EXPECT_EQ(after(i, j), after(lines.nx, j));
        }
        for (int i = c + lines.n_inner; i <= c + lines.n_blend_down; ++i) {
            EXPECT_NEAR(after(i, j),
                        on_line(x(i), x(c + lines.n_inner), after(c + lines.n_inner, j),
                                x(c + lines.n_blend_down), after(lines.nx, j)),
                        1e-3);
        }
    }
    EXPECT_NE(after(lines.nx, d), after(lines.nx, d + 1)) << "a profile across the wind stays";
    for (int i = c - lines.n_add; i <= c + lines.n_inner; ++i) {
        for (const int side : {1, -1}) {
            for (int m = lines.n_blend_side; m <= lines.n_side; ++m) {
                EXPECT_EQ(after(i, d + side * m), after(i, d + side * lines.n_side));
            }
            for (int m = lines.n_inner; m <= lines.n_blend_side; ++m) {
                EXPECT_NEAR(
                    after(i, d + side * m),
                    on_line(y(d + m), y(d + lines.n_inner), before(i, d + side * lines.n_inner),
                            y(d + lines.n_blend_side), after(i, d + side * lines.n_side)),
                    1e-3);
            }
        }
    }
}

TEST_F(BufferZones, TheStudyCircleKeepsItsGround) {
    flatten();
    for (int i = c - lines.n_add; i <= c + lines.n_inner; ++i) {
        for (int j = d - lines.n_inner; j <= d + lines.n_inner; ++j) {
            EXPECT_EQ(after(i, j), before(i, j));
        }
    }
}

TEST_F(BufferZones, EvenGroundStaysAsItIs) {
    Field2 h(lines.nx, lines.ny, 137.5F);
    flatten_buffer_zones(settings, lines, 1, log, h);
    for (int j = 1; j <= lines.ny; ++j) {
        for (int i = 1; i <= lines.nx; ++i) {
            EXPECT_NEAR(h(i, j), 137.5, 1e-3);
        }
    }
    Field2 zero(lines.nx, lines.ny);
    flatten_buffer_zones(settings, lines, 1, log, zero);
    for (int n = 0; n < lines.nx * lines.ny; ++n) {
        EXPECT_EQ(zero.data()[n], 0.0F);
    }
}

TEST_F(BufferZones, ModeOneTakesTheInflowElevationAtBothEnds) {
    settings.BOUNDARY_HEIGHT_MODE = 1;
    settings.INFLOW_ELEVATION = 50.0F;
    flatten();
    for (int j = 1; j <= lines.ny; ++j) {
        EXPECT_EQ(after(1, j), 50.0F);
        EXPECT_EQ(after(c - lines.n_blend_up, j), 50.0F);
        EXPECT_EQ(after(lines.nx, j), 50.0F);
    }
}

TEST_F(BufferZones, OtherModesTakeItDownwindOnly) {
    flatten();
    const float upwind = after(1, 1);
    settings.BOUNDARY_HEIGHT_MODE = 2;
    settings.INFLOW_ELEVATION = 50.0F;
    flatten();
    EXPECT_EQ(after(1, 1), upwind);
    EXPECT_EQ(after(lines.nx, 3), 50.0F);
}

TEST_F(BufferZones, GivenInflowElevationActsUpwindOnlyAndNotInAPreview) {
    flatten();
    const float upwind = after(1, 1);
    const float downwind = after(lines.nx, 3);
    settings.SPECIFY_INFLOW_ELEVATION = true;
    settings.INFLOW_ELEVATION = 50.0F;
    flatten();
    EXPECT_EQ(after(1, 1), 50.0F);
    EXPECT_EQ(after(lines.nx, 3), downwind);
    flatten(preview_direction);
    EXPECT_EQ(after(1, 1), upwind);
    settings.BOUNDARY_HEIGHT_MODE = 1;
    flatten(preview_direction);
    EXPECT_EQ(after(1, 1), 50.0F) << "mode 1 holds in a preview too";
}

TEST_F(BufferZones, MissingFlatPartsTakeTheWidthFromTheConnection) {
    // Upwind and downwind blend at the edge; the width of the flat part is then taken from the
    // planes n_connect, and enters only the height.
    lines.n_blend_up = lines.n_up;
    lines.n_blend_down = lines.n_down;
    lines.n_connect_up = lines.n_add + 1;
    lines.n_connect_down = lines.n_inner + 2;
    flatten();
    const auto x = [&](int i) { return static_cast<double>(lines.x_line(i)); };
    const int inner = c - lines.n_add;
    Field2 entry = before;
    for (int j = 1; j <= lines.ny; ++j) {
        entry(inner, j) = after(inner, j);
    }
    const auto width = static_cast<double>(lines.y_line(lines.ny) - lines.y_line(1));
    const double w_in = x(inner) - x(1);
    const double w_out = x(c - lines.n_connect_up) - x(1);
    const double V = volume(lines, entry, 1, inner, 1, lines.ny);
    const double S = section_y(lines, entry, inner, 1, lines.ny);
    EXPECT_NEAR(after(1, 4), (V - 0.5 * S * w_in) / ((w_out + 0.5 * w_in) * width), 1e-3);

    const int first = c + lines.n_inner;
    const double d_in = x(lines.nx) - x(first);
    const double d_out = x(lines.nx) - x(c + lines.n_connect_down);
    for (int j = 1; j <= lines.ny; ++j) {
        entry(first, j) = after(first, j);
        const double I = section_x(lines, entry, j, first, lines.nx);
        const auto h_e = static_cast<double>(after(first, j));
        EXPECT_NEAR(after(lines.nx, j), (I - 0.5 * h_e * d_in) / (d_out + 0.5 * d_in), 1e-3);
    }
}

struct BadZone {
    const char* what;
    int code;
    const char* text;
    void (*spoil)(MeshLines&);
};

class BadBufferZone : public testing::TestWithParam<BadZone> {};

TEST_P(BadBufferZone, StopsAndLogs) {
    MeshLines lines = growing_lines();
    GetParam().spoil(lines);
    Field2 h = rough_ground(lines);
    RunLog log;
    const Stop stop = stop_of([&] { flatten_buffer_zones(test::flat_case(), lines, 1, log, h); });
    EXPECT_EQ(stop.code(), GetParam().code);
    EXPECT_EQ(log_lines(log), std::vector<std::string>{GetParam().text});
}

INSTANTIATE_TEST_SUITE_P(
    Widths, BadBufferZone,
    testing::Values(
        BadZone{"InnerSide", 153, " [Stop 153]: Inner side Buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_side = m.n_inner; }},
        BadZone{"OuterSide", 153, " [Stop 153]: Outer side Buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_side = m.n_side; }},
        BadZone{"InnerUpwind", 154,
                " [Stop 154]: Inner upwind buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_up = m.n_add; }},
        BadZone{"OuterUpwind", 154,
                " [Stop 154]: Outer upwind Buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_up = m.n_connect_up = m.n_up; }},
        BadZone{"InnerDownwind", 155,
                " [Stop 155]: Downwind buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_down = m.n_inner; }},
        BadZone{"OuterDownwind", 155,
                " [Stop 155]: Downwind buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_down = m.n_connect_down = m.n_down; }},
        BadZone{"UnsetSide", 153, " [Stop 153]: Inner side Buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_side = 0; }},
        BadZone{"UnsetUpwind", 154,
                " [Stop 154]: Inner upwind buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_up = 0; }},
        BadZone{"UnsetDownwind", 155,
                " [Stop 155]: Downwind buffer zone width is smaller than 0.0.",
                [](MeshLines& m) { m.n_blend_down = 0; }}),
    [](const auto& instance) { return std::string(instance.param.what); });

}  // namespace
}  // namespace torvex
