// The child's lines by hand, the marks behind them, and what is refused.

#include "nest/nest_lines.hpp"

#include <gmock/gmock.h>

#include "maps/local_metric.hpp"
#include "nest/nest_case.hpp"

namespace torvex {
namespace {

using test::line_of;
using test::log_lines;
using test::stop_of;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class NestLines : public ::testing::Test {
 protected:
    NestLines() {
        sized.x_line = line_of({-90, -50, -30, -20, -10, 0, 10, 20, 35, 60});
        sized.y_line = line_of({-40, -24, -12, 0, 12, 24, 40});
        sized.nx = 10;
        sized.ny = 7;
        sized.nz = 5;
        sized.ni = 11;
        sized.nj = 8;
        sized.nk = 6;
        sized.i_centre = 6;
        sized.j_centre = 4;
        sized.n_inner = 2;
        sized.n_add = 3;
        sized.n_up = 5;
        sized.n_down = 4;
        sized.n_side = 3;
        sized.n_blend_up = 4;
        sized.n_blend_down = 3;
        sized.n_blend_side = 3;
        sized.n_connect_up = sized.n_connect_down = 2;
        sized.max_rad = 24;
        settings.nest.n_x_div = 2;
        settings.nest.n_y_div = 3;
        settings.nest.c2xmax = 15;
        settings.nest.c2ymax = 12;
        settings.N_WIND_DIRECTION = 4;
        settings.CENT_LON = settings.nest.lon = Triple{139.0F, 45.0F, 0.0F};
        settings.CENT_LAT = settings.nest.lat = Triple{35.0F, 5.0F, 0.0F};
        for (int iwd = 1; iwd <= 4; ++iwd) {
            settings.WIND_DIRECTION_ANGLE(iwd) = 90.0F * static_cast<float>(iwd - 1);
        }
    }

    ParentLines fit() {
        lines = sized;
        return nest_fit_lines(settings, log, lines);
    }
    int fit_code() {
        return stop_of([this] { fit(); }).code();
    }
    int check_code() {
        const ParentLines parent{sized.x_line, sized.y_line, 24};
        return stop_of([&] { nest_check_domain(settings, parent); }).code();
    }

    CaseSettings settings;
    MeshLines sized;
    MeshLines lines;
    RunLog log;
};

// The half-width 15 lies between planes along x, 12 on one of them along y.
TEST_F(NestLines, ParentCellsInReachAreDividedEvenly) {
    const ParentLines parent = fit();
    EXPECT_THAT(lines.x_line.values(), ElementsAre(-20, -15, -10, -5, 0, 5, 10, 15, 20));
    EXPECT_THAT(lines.y_line.values(), ElementsAre(-12, -8, -4, 0, 4, 8, 12));
    EXPECT_EQ(parent.x_line.values(), sized.x_line.values());
    EXPECT_EQ(parent.y_line.values(), sized.y_line.values());
    EXPECT_EQ(lines.nx, 9);
    EXPECT_EQ(lines.ny, 7);
    EXPECT_EQ(lines.ni, 10);
    EXPECT_EQ(lines.nj, 8);
    EXPECT_EQ(lines.nk, 6);
    EXPECT_EQ(lines.x_line(lines.i_centre), 0.0F);
    EXPECT_EQ(lines.y_line(lines.j_centre), 0.0F);
}

TEST_F(NestLines, MarksAreThoseOfAMeshWithoutZones) {
    settings.nest.c2xmax = 25;
    fit();
    EXPECT_THAT(lines.x_line.values(),
                ElementsAre(-30, -25, -20, -15, -10, -5, 0, 5, 10, 15, 20, 27.5, 35));
    EXPECT_EQ(lines.i_centre, 7);
    EXPECT_EQ(lines.j_centre, 4);
    EXPECT_EQ(lines.n_up, 6);
    EXPECT_EQ(lines.n_down, 6);
    EXPECT_EQ(lines.n_side, 3);
    EXPECT_EQ(lines.n_add, 6);
    EXPECT_EQ(lines.n_blend_up, 6);
    EXPECT_EQ(lines.n_blend_down, 6);
    EXPECT_EQ(lines.n_inner, 3);
    EXPECT_EQ(lines.n_blend_side, 3);
    EXPECT_EQ(lines.n_connect_up, 0);
    EXPECT_EQ(lines.n_connect_down, 0);
}

TEST_F(NestLines, DivisionByOneKeepsTheParentsPlanes) {
    settings.nest.n_x_div = settings.nest.n_y_div = 1;
    fit();
    EXPECT_THAT(lines.x_line.values(), ElementsAre(-20, -10, 0, 10, 20));
    EXPECT_THAT(lines.y_line.values(), ElementsAre(-12, 0, 12));
}

// 13 m need one cell of 24 m to the left and two of 12 m to the right: two on both sides.
TEST_F(NestLines, UnevenCellsAcrossTheWindTakeTheLargerCountOnBothSides) {
    settings.nest.n_y_div = 1;
    settings.nest.c2ymax = 13;
    sized.y_line = line_of({-80, -48, -24, 0, 12, 24, 40});
    fit();
    EXPECT_THAT(lines.y_line.values(), ElementsAre(-48, -24, 0, 12, 24));
    EXPECT_EQ(lines.n_side, 2);
    sized.y_line = line_of({-24, 0, 12, 24, 40});
    sized.j_centre = 2;
    sized.ny = 5;
    EXPECT_EQ(fit_code(), 182);
}

TEST_F(NestLines, ReachOfTheParentIsTheLimit) {
    settings.nest.c2xmax = 60;
    EXPECT_NO_THROW(fit());
    EXPECT_EQ(lines.x_line(1), -90.0F);
    settings.nest.c2xmax = 60.5F;
    EXPECT_EQ(fit_code(), 182);
    settings.nest.c2xmax = 15;
    settings.nest.c2ymax = 41;
    EXPECT_EQ(fit_code(), 182);
}

TEST_F(NestLines, HalfWidthsAndDivisionsAboveZero) {
    for (const float bad : {0.0F, -1.0F, std::nanf("")}) {
        for (float NestPoints::*width : {&NestPoints::c2xmax, &NestPoints::c2ymax}) {
            const CaseSettings good = settings;
            settings.nest.*width = bad;
            EXPECT_EQ(fit_code(), 180);
            EXPECT_EQ(check_code(), 180);
            settings = good;
        }
    }
    for (std::int32_t NestPoints::*div : {&NestPoints::n_x_div, &NestPoints::n_y_div}) {
        for (const int bad : {0, -2}) {
            const CaseSettings good = settings;
            settings.nest.*div = bad;
            EXPECT_EQ(fit_code(), 180);
            EXPECT_EQ(check_code(), 180);
            settings = good;
        }
    }
}

TEST_F(NestLines, DivisionBeyondAllMeshesIsRefused) {
    settings.nest.n_x_div = 2000000000;
    const Stop stopped = stop_of([this] { fit(); });
    EXPECT_EQ(stopped.code(), 1);
    EXPECT_THAT(stopped.what(), HasSubstr("20000 cells from its centre"));
    settings.nest.n_x_div = settings.nest.n_y_div = 9000;
    sized.nk = 4000;
    EXPECT_EQ(fit_code(), 1);
}

TEST_F(NestLines, ChildBeyondTheStudyCircleIsWarnedOf) {
    fit();
    EXPECT_THAT(log_lines(log), IsEmpty());
    settings.nest.c2ymax = 24.5F;
    fit();
    EXPECT_THAT(
        log.kept(),
        HasSubstr("Warning: the child reaches 24.5 m from the centre, the study area of the parent "
                  "24.0 m"));
}

// n_inner planes downwind of the centre begin a zone where the ground is no more that of the map.
TEST_F(NestLines, UnchangedGroundEndsAtTheFirstZone) {
    EXPECT_EQ(fit().unchanged_radius, 20.0F);
    sized.n_inner = 3;
    EXPECT_EQ(fit().unchanged_radius, 24.0F);
}

TEST_F(NestLines, ConcentricChildPassesForAllDirections) {
    EXPECT_EQ(check_code(), -1);
}

// One second of latitude is 30.8 m, of longitude here 25.4 m.
TEST_F(NestLines, CentreOutsideTheParent) {
    settings.nest.c2xmax = settings.nest.c2ymax = 1;
    settings.nest.lat = Triple{35.0F, 5.0F, 3.0F};
    EXPECT_EQ(check_code(), 181);
    settings.nest.lat = Triple{35.0F, 5.0F, 1.0F};
    EXPECT_EQ(check_code(), -1);
}

// On the parent's very edge the centre is inside, and the child reaches beyond.
TEST_F(NestLines, CentreOnTheEdgeOfTheParent) {
    settings.nest.lat = Triple{35.0F, 5.0F, 1.0F};
    settings.N_WIND_DIRECTION = 1;
    settings.nest.c2xmax = settings.nest.c2ymax = 1;
    const auto centre_of_child = [this](float wind) {
        settings.WIND_DIRECTION_ANGLE(1) = wind;
        return position_from_centre(minutes_of(settings.nest.lon), minutes_of(settings.nest.lat),
                                    minutes_of(settings.CENT_LON), minutes_of(settings.CENT_LAT),
                                    settings.GS, wind);
    };
    const Line1 usual = sized.y_line;
    const float left = centre_of_child(270.0F).y;
    sized.y_line = line_of({-left, 0, left});
    EXPECT_EQ(check_code(), 182);
    sized.y_line = line_of({-left, 0, 0.999F * left});
    EXPECT_EQ(check_code(), 181);
    sized.y_line = usual;
    const float downwind = centre_of_child(180.0F).x;
    sized.x_line = line_of({-downwind, 0, downwind});
    EXPECT_EQ(check_code(), 182);
    sized.x_line = line_of({-downwind, 0, 0.999F * downwind});
    EXPECT_EQ(check_code(), 181);
}

// 31 m north of the centre: across the wind from 90 and 270 degrees, where 12 m of half-width are
// beyond 40 m, along it from 0 and 180, where they are not.
TEST_F(NestLines, ChildNearTheEdgeMayPassForOneDirectionOnly) {
    settings.nest.c2xmax = settings.nest.c2ymax = 12;
    settings.nest.lat = Triple{35.0F, 5.0F, 1.0F};
    settings.N_WIND_DIRECTION = 1;
    EXPECT_EQ(check_code(), -1);
    settings.N_WIND_DIRECTION = 2;
    EXPECT_EQ(check_code(), 182);
}

}  // namespace
}  // namespace torvex
