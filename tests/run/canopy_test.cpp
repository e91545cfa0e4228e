// Whole small cases with a canopy: a forest on level ground, in wind along x.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>

#include "canopy/canopy_file.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "run/cycle_change.hpp"
#include "run/momentum_balance.hpp"
#include "run/run_fixture.hpp"
#include "run/run_state.hpp"

namespace torvex {
namespace {

using test::CaseItems;
using test::LevelMesh;
using test::MomentumBalance;
using test::ProgramRun;
using test::wide;
using testing::HasSubstr;
using testing::Not;

const std::string stem = "restart-270_0-";
const std::string canopy_path = "restart-270_0-ccd.tuf";

// The wood: 300 m by 300 m in the middle, 20 m high.
bool in_wood(const LevelMesh& m, int i, int j, int k) {
    return std::abs(m.x(i)) < 150 && std::abs(m.y(j)) < 150 && m.h(k) < 20;
}

constexpr float wood_cf = 0.2F;
constexpr float wood_density = 0.3F;
constexpr float wood_length = 1.0F;
constexpr double wood_drag = 0.5 * 0.2 * 0.3 / 1.0;  // gp_d [1/m]

class Canopy : public test::RunTest {
 protected:
    static std::string block(const std::string& more = {}) {
        return "&canopy_parameters\ncanopy_mode = 1\n" + more + "\n/\n";
    }
    void write_small_case(const CaseItems& items, const std::string& behind) const {
        CaseItems all{{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 1"},
                      {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 270, 90"},
                      {"NML_CASEFILE", "WE_LENGTH = 800, NS_LENGTH = 400"},
                      {"NML_CASEFILE", "MIN_DXY = 50, MAX_DXY = 90, MIN_DXY_RAD = 200"},
                      {"NML_CASEFILE", "MESH_HRATIO = 1.2, MIN_DZ = 5, MESH_VRATIO = 1.3"},
                      {"NML_BOUNDARY_TREATMENT", "USE_DEFAULT_MAX_Z = F, MAX_Z = 300"}};
        all.insert(all.end(), items.begin(), items.end());
        write_case(all, behind);
    }
    // A run that must end well.
    ProgramRun run_case(const CaseItems& items, const std::string& behind = block()) const {
        write_small_case(items, behind);
        ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        return ran;
    }
    static CaseItems iterations(int n, const std::string& more = {}) {
        return {{"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(n)},
                {"NML_NUMERICAL_SOLVER", more}};
    }

    LevelMesh mesh() const { return LevelMesh(directory.file(stem + "xyz.tuf")); }

    // Lays a canopy of so much density in the wood on the mesh of the case.
    CanopyRecords records_of_wood(float density = wood_density) {
        if (!directory.has(stem + "xyz.tuf")) {
            run_case(iterations(0), "");
        }
        const LevelMesh m = mesh();
        CanopyRecords r;
        for (Field3* field : {&r.gp_cf, &r.gp_density, &r.gp_length}) {
            field->allocate(m.nx + 1, m.ny + 1, m.nz + 1);
        }
        r.gp_z0.allocate(m.nx + 1, m.ny + 1, 0.03F);
        m.for_cells([&](int i, int j, int k) {
            if (in_wood(m, i, j, k)) {
                r.gp_cf(i, j, k) = wood_cf;
                r.gp_density(i, j, k) = density;
                r.gp_length(i, j, k) = wood_length;
            }
        });
        return r;
    }
    void lay_wood(float density = wood_density) {
        write_canopy_file(directory.file(canopy_path), records_of_wood(density));
    }

    RestartInfo info() const {
        return read_restart_info(directory.file(stem + "restart.info")).value();
    }
    FlowState result() const {
        const LevelMesh m = mesh();
        FlowState flow;
        allocate(flow, result_fields, m.nx + 1, m.ny + 1, m.nz + 1);
        read_vpkeout(newest_result_path(directory.file(stem), info().outer_count), 1, flow);
        return flow;
    }
    Field2 roughness(const std::string& of = stem) const {
        const LevelMesh m = mesh();
        Field2 z0(m.nx + 1, m.ny + 1);
        read_z0(directory.file(of + "z0.tuf"), z0);
        return z0;
    }
    // The bytes of everything that a direction leaves for a later run.
    std::string state(int count) const {
        std::string bytes;
        for (const std::string& name : {result_name(count), std::string("z0.tuf"),
                                        std::string("xyz.tuf"), std::string("restart.info")}) {
            EXPECT_TRUE(directory.has(stem + name)) << name;
            bytes += directory.read(stem + name);
        }
        return bytes;
    }
};

// --- what a wood does to the wind ---

// The mean over the cells of a region, each weighted by its volume.
double mean(const LevelMesh& m, const Field3& field,
            const std::function<bool(int, int, int)>& inside) {
    double sum = 0;
    double volume = 0;
    m.for_cells([&](int i, int j, int k) {
        if (inside(i, j, k)) {
            const double vol = m.dx(i) * m.dy(j) * m.dz(k);
            sum += vol * wide(field(i, j, k));
            volume += vol;
        }
    });
    return sum / volume;
}

TEST_F(Canopy, SlowsTheWindInsideAndBehindAndLeavesItAloneFarUpstream) {
    lay_wood(0.0F);
    run_case(iterations(200, "CC_OUT_U = 3E-4"));
    EXPECT_THAT(log(), HasSubstr(": Converged."));
    const FlowState open = result();
    lay_wood();
    run_case(iterations(200, "CC_OUT_U = 3E-4"));
    EXPECT_THAT(log(), HasSubstr(": Converged."));
    const FlowState wood = result();

    const LevelMesh m = mesh();
    const auto ratio = [&](const std::function<bool(int, int, int)>& inside) {
        return mean(m, wood.u, inside) / mean(m, open.u, inside);
    };
    const auto below = [&](int j, int k) { return std::abs(m.y(j)) < 100 && m.h(k) < 15; };
    const double inside = ratio([&](int i, int j, int k) { return in_wood(m, i, j, k); });
    const double close =
        ratio([&](int i, int j, int k) { return m.x(i) > 200 && m.x(i) < 300 && below(j, k); });
    const double behind = ratio([&](int i, int j, int k) { return m.x(i) > 600 && below(j, k); });
    EXPECT_LT(inside, 0.5);
    EXPECT_LT(close, 0.75);
    EXPECT_GT(close, inside) << "the wake fills up";
    EXPECT_GT(behind, close);
    EXPECT_LT(behind, 1.0);

    // Five widths of the wood upstream, and far above it, there is next to nothing of it.
    m.for_cells([&](int i, int j, int k) {
        if (m.x(i) < -900) {
            EXPECT_NEAR(wood.u(i, j, k), open.u(i, j, k), 0.02F) << "of 5 to 10 m/s";
        }
    });
    EXPECT_GT(ratio([&](int, int, int k) { return m.h(k) > 200; }), 1.0) << "it gives way upwards";
    EXPECT_LT(ratio([&](int, int, int k) { return m.h(k) > 200; }), 1.01);
}

TEST_F(Canopy, DragOfTheWoodIsTheMomentumThatTheFlowLoses) {
    lay_wood();
    // Without the deferred convection, which is not conservative in the second cells from the
    // boundary (a difference over half a cell is doubled on one side of the face only), and to
    // where rounding ends the convergence.
    run_case(iterations(110, "RATIO = 0, CC_OUT_M = 1E-9"));
    const LevelMesh m = mesh();
    const MomentumBalance b = test::momentum_balance(
        m, result(), [&](int i, int j, int k) { return in_wood(m, i, j, k) ? wood_drag : 0.0; });
    const double unsolved = test::unsolved_momentum(b, wide(info().resid_u));
    EXPECT_NEAR(b.lost, b.drag, unsolved);
    EXPECT_LT(unsolved, 0.005 * b.drag) << "the bound must mean something";
}

// --- the sources of tke and ted, and their start ---

TEST_F(Canopy, DragActsAloneUntilTheSourcesStart) {
    lay_wood();
    run_case(iterations(6), block("start_cal_src = 7"));
    const std::string before_start = state(6);
    run_case(iterations(6), block("start_cal_src = 7, beta_p = 3, beta_d = 1, cpe1 = 2"));
    EXPECT_EQ(state(6), before_start) << "their constants do not act";
    const FlowState drag_alone = result();
    lay_wood(0.0F);
    run_case(iterations(6), block("start_cal_src = 7"));
    const FlowState open = result();
    const LevelMesh m = mesh();
    int cells = 0;
    m.for_cells([&](int i, int j, int k) {
        if (in_wood(m, i, j, k)) {
            EXPECT_LT(drag_alone.u(i, j, k), open.u(i, j, k)) << "the drag acts from the first on";
            ++cells;
        }
    });
    EXPECT_GT(cells, 50);
}

// Six iterations with the sources from the sixth on are five without them and one with sources that
// act from the first: there is no gradual rise.
TEST_F(Canopy, SourcesStartAtFullSize) {
    lay_wood();
    run_case(iterations(6), block("start_cal_src = 6"));
    const std::string straight = directory.read(stem + result_name(6));
    run_case(iterations(6), block("start_cal_src = 7"));
    EXPECT_NE(directory.read(stem + result_name(6)), straight);

    run_case(iterations(5), block("start_cal_src = 7"));
    CaseItems one_more = iterations(1);
    one_more.emplace_back("NML_RUN", "RESTART_FLAG = 1");
    run_case(one_more, block("start_cal_src = 1"));
    EXPECT_EQ(directory.read(stem + result_name(6)), straight);
}

// --- a canopy of nothing ---

// Without drag all terms vanish, whatever the factors. The rest of a canopy run is as a run without
// one where the roughness is one value everywhere: the exponent of its start fields then is that of
// every column.
TEST_F(Canopy, OfDensityZeroIsNoCanopyToTheLastBit) {
    const CaseItems uniform{
        {"NML_ER", "USE_EQUIVALENT_ROUGHNESS = T, EQUIVALENT_ROUGHNESS = 0.03, 0.03"},
        {"NML_ER", "USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = T"}};
    for (const std::string model : {"1", "2", "3", "4"}) {
        CaseItems items = iterations(8);
        items.insert(items.end(), uniform.begin(), uniform.end());
        items.emplace_back("NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + model);
        run_case(items, "");
        const std::string without = state(8);
        lay_wood(0.0F);
        run_case(items, block("src_included_model = T, alphak1 = 3"));
        EXPECT_EQ(state(8), without) << "model " << model;
        lay_wood();
        run_case(items);
        EXPECT_NE(state(8), without) << "model " << model;
    }
}

TEST_F(Canopy, RoughnessOfTheFileTakesTheStepsOfTheMaps) {
    run_case(iterations(0), "");
    const Field2 from_maps = roughness();
    lay_wood();
    run_case(iterations(0));
    const Field2 from_file = roughness();
    for (int j = 1; j <= from_maps.nj(); ++j) {
        for (int i = 1; i <= from_maps.ni(); ++i) {
            // Interpolation between the points of a map rounds.
            EXPECT_NEAR(from_file(i, j), from_maps(i, j), 1e-8F);
        }
    }
}

TEST_F(Canopy, FileIsNotLookedAtWithoutCanopyMode) {
    run_case(iterations(2), "");
    const std::string without = state(2);
    directory.write(canopy_path, "no canopy");
    const ProgramRun ran = run_case(iterations(2), "&canopy_parameters\ncanopy_mode = 0\n/\n");
    EXPECT_EQ(state(2), without);
    EXPECT_THAT(ran.out, Not(HasSubstr("canopy")));
}

// --- roughness and inflow ---

// The exponent is that of the upwind roughness in all columns, the gradient height that of each.
TEST_F(Canopy, StartFieldsShareTheExponentOfTheUpwindRoughness) {
    CanopyRecords records = records_of_wood();
    const LevelMesh m = mesh();
    for (int j = 2; j <= m.ny; ++j) {
        for (int i = 2; i <= m.nx; ++i) {
            records.gp_z0(i, j) = m.x(i) < -450 ? 1.0F : 0.1F;
        }
    }
    write_canopy_file(directory.file(canopy_path), records);
    run_case(iterations(0));
    // z0 = 1 has the exponent 0.27 and Zg = 550 m.
    EXPECT_THAT(log(), HasSubstr(": Default upwind z0 is  0.1000E+01 (m)\n"));
    EXPECT_THAT(log(), HasSubstr(": Inflow: alpha=  0.2700, Zg=   550.000\n"));
    EXPECT_TRUE(directory.has("log-upwind_roughness-270_0"));
    const FlowState start = result();
    const Field2 z0 = roughness();
    int rough = 0;
    int smooth = 0;
    m.for_cells([&](int i, int j, int k) {
        const double Zg = 550 * std::pow(wide(z0(i, j)), 0.1);
        EXPECT_NEAR(wide(start.u(i, j, k)), 10 * std::pow(m.h(k) / Zg, 0.27), 1e-4);
        rough += z0(i, j) > 0.9F ? 1 : 0;
        smooth += std::abs(z0(i, j) - 0.1F) < 1e-4F ? 1 : 0;
    });
    EXPECT_GT(rough, 100);
    EXPECT_GT(smooth, 100);
}

TEST_F(Canopy, FileOfFiveRecordsMeansTwoTenthsOfAMillimetre) {
    CanopyRecords records = records_of_wood();
    records.gp_z0.fill(0.5F);
    write_canopy_file(directory.file(canopy_path), records);
    records.gp_z0.release();
    write_canopy_file(directory.file("restart-090_0-ccd.tuf"), records);
    CaseItems two = iterations(0);
    two.emplace_back("NML_CASEFILE", "N_WIND_DIRECTION = 2");
    const ProgramRun ran = run_case(two);
    EXPECT_THAT(ran.out, HasSubstr("\nReading canopy parameter file restart-270_0-ccd.tuf\n"));
    EXPECT_THAT(ran.out, HasSubstr("\nReading canopy parameter file restart-090_0-ccd.tuf\n"));
    const Field2 first = roughness();
    const Field2 second = roughness("restart-090_0-");
    for (int j = 1; j <= first.nj(); ++j) {
        for (int i = 1; i <= first.ni(); ++i) {
            // Means over strips of one value carry the rounding of logarithm and root.
            EXPECT_NEAR(first(i, j), 0.5F, 1e-5F);
            EXPECT_NEAR(second(i, j), 0.0002F, 1e-9F) << "nothing of the direction before";
        }
    }
}

TEST_F(Canopy, OfAFlatRunCarriesItsPrefix) {
    CaseItems flat = iterations(0);
    flat.emplace_back("NML_RUN", "TERRAIN_MODE = 'flat'");
    write_small_case(flat, block());
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("\nflat-restart-000_0-ccd.tuf not found.\n"));

    const LevelMesh m(directory.file("flat-restart-000_0-xyz.tuf"));
    CanopyRecords records;
    records.gp_cf.allocate(m.nx + 1, m.ny + 1, m.nz + 1, wood_cf);
    records.gp_density = records.gp_length = records.gp_cf;
    records.gp_z0.allocate(m.nx + 1, m.ny + 1, 1.0F);
    write_canopy_file(directory.file("flat-restart-000_0-ccd.tuf"), records);
    run_case(flat);
    // From "flat-log-upwind_roughness-000_0".
    EXPECT_THAT(log(), HasSubstr(": Inflow: alpha=  0.2700, Zg=   550.000\n"));
    EXPECT_THAT(log(), Not(HasSubstr("fail to open")));
}

// --- resume ---

TEST_F(Canopy, ResumeGoesOnAsIfThereHadBeenNoStop) {
    lay_wood();
    // Model and start_cal_src: the sources of turbulence begin before the stop, or behind it.
    for (const auto& [model, start] : {std::pair{"1", "12"}, {"2", "1"}, {"4", "1"}}) {
        const std::string canopy = block("start_cal_src = " + std::string(start));
        const std::string model_key = "TURBULENCE_MODEL = " + std::string(model);
        const auto case_of = [&](int n) {
            CaseItems items = iterations(n);
            items.emplace_back("NML_NAVIER_STOKES", model_key);
            return items;
        };
        run_case(case_of(16), canopy);
        const std::string without_stop = state(16);

        run_case(case_of(8), canopy);
        CaseItems again = case_of(8);
        again.emplace_back("NML_RUN", "RESTART_FLAG = 1");
        const ProgramRun second = run_case(again, canopy);
        EXPECT_THAT(second.out, HasSubstr("Resume torvex default calculations..\n"
                                          "Reading canopy parameter file restart-270_0-ccd.tuf\n"));
        EXPECT_EQ(state(16), without_stop) << "model " << model << ", start " << start;
    }
}

TEST_F(Canopy, ResumeNeedsItsFileUnlessTheDirectionIsDone) {
    lay_wood();
    run_case(iterations(2));
    std::filesystem::remove(canopy_path);
    const CaseItems again{{"NML_RUN", "RESTART_FLAG = 1"}, {"NML_NUMERICAL_SOLVER", "MAXIT = 2"}};
    write_small_case(again, block());
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("restart-270_0-ccd.tuf not found."));

    directory.write(stem + "restart.info", "2\n 1.0E-05 1.0E-05 1.0E-05 1.0E-05\n");
    const ProgramRun done = run_case(again);
    EXPECT_THAT(done.out, Not(HasSubstr("canopy")));
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "270.0 1");
}

// --- the accelerated iteration ---

// The discrete equations are the same; the bound is what so many iterations leave.
TEST_F(Canopy, AccelerationLeadsToTheSameField) {
    lay_wood();
    run_case(iterations(300, "CC_OUT_M = 1E-9"));
    const FlowState plain = result();
    run_case(iterations(100, "CC_OUT_M = 1E-9, ACCEL = 1"));
    EXPECT_THAT(log(), Not(HasSubstr("begins anew")));
    const FlowState fast = result();
    const LevelMesh m = mesh();
    float largest = 0;
    m.for_cells([&](int i, int j, int k) {
        for (const auto field : {&FlowState::u, &FlowState::v, &FlowState::w}) {
            largest = std::max(largest, std::abs((plain.*field)(i, j, k) - (fast.*field)(i, j, k)));
        }
    });
    EXPECT_LT(largest, 0.005F) << "of 10 m/s";
}

// Fast iterations would come to rest before the sources begin.
TEST_F(Canopy, AccelerationDoesNotEndBeforeTheSourcesHaveActed) {
    lay_wood();
    run_case(iterations(300, "ACCEL = 1"), block("start_cal_src = 70"));
    EXPECT_THAT(log(), HasSubstr(": Converged."));
    EXPECT_GE(info().outer_count, 79);
    const FlowState with_late_start = result();
    run_case(iterations(300, "ACCEL = 1"));
    EXPECT_LT(info().outer_count, 70) << "the bound must mean something";
    const FlowState at_once = result();
    const LevelMesh m = mesh();
    const auto wood_tke = [&](const FlowState& s) {
        return mean(m, s.tke, [&](int i, int j, int k) { return in_wood(m, i, j, k); });
    };
    EXPECT_NEAR(wood_tke(with_late_start) / wood_tke(at_once), 1, 0.02);
}

TEST_F(Canopy, AcceleratedResumeGoesOnAsIfThereHadBeenNoStop) {
    lay_wood();
    run_case(iterations(16, "ACCEL = 1"));
    const std::string without_stop = state(16);
    run_case(iterations(8, "ACCEL = 1"));
    CaseItems again = iterations(8, "ACCEL = 1");
    again.emplace_back("NML_RUN", "RESTART_FLAG = 1");
    run_case(again);
    EXPECT_EQ(state(16), without_stop);
}

TEST_F(Canopy, CycleKeepsASolution) {
    lay_wood();
    write_small_case(iterations(300), block());
    test::expect_fixed_point(test::change_by_cycle({"/f", directory.file("torvex.tin")}, 300));
}

// --- failures ---

TEST_F(Canopy, MissingFileEndsTheRunBehindTheMesh) {
    write_small_case(iterations(2), block());
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.out, testing::EndsWith("\nReading canopy parameter file restart-270_0-ccd.tuf\n"
                                           "restart-270_0-ccd.tuf not found.\n"));
    EXPECT_THAT(ran.err, HasSubstr("\nrestart-270_0-ccd.tuf not found.\n"));
    EXPECT_TRUE(directory.has(stem + "xyzc.tuf"));
    EXPECT_FALSE(directory.has(stem + "z0.tuf"));
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "270.0 0");
}

TEST_F(Canopy, FileOfAnotherMeshEndsTheRun) {
    CanopyRecords records = records_of_wood();
    const int nk = records.gp_cf.nk();
    records.gp_cf.allocate(23, 33, nk);
    records.gp_density = records.gp_length = records.gp_cf;
    records.gp_z0.release();
    write_canopy_file(directory.file(canopy_path), records);
    write_small_case(iterations(2), block());
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.out, testing::EndsWith("\nError: File Inconsistency.\n"));
    EXPECT_THAT(ran.err, HasSubstr("\nError: File Inconsistency.\n  in restart-270_0-ccd.tuf: the "
                                   "counts are 23 x 33 x "));
}

TEST_F(Canopy, RoughnessThatIsNotAboveZeroCostsItsDirection) {
    CanopyRecords records = records_of_wood();
    for (const float bad : {0.0F, -0.1F, std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN()}) {
        records.gp_z0(5, 4) = bad;
        write_canopy_file(directory.file(canopy_path), records);
        write_small_case(iterations(0), block());
        std::filesystem::remove(stem + "vpkeout_00000.tuf");  // of the run that made the mesh
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0);
        EXPECT_THAT(ran.err, HasSubstr("WD 270.0: restart-270_0-ccd.tuf, cell (5, 4): the "
                                       "roughness length is "));
        EXPECT_THAT(log(), HasSubstr("<date> WD 270.0: Diverged.     0 it. Skip this direction.\n"
                                     "                              resid-m: 0.1000E+26 "));
        EXPECT_EQ(slot("view-wind_direction.dat", 2), "270.0 3");
        EXPECT_FALSE(directory.has(stem + "restart.info"));
        EXPECT_FALSE(directory.has(stem + "vpkeout_00000.tuf"));
    }
}

// Ghost columns take the value of the cells beside them, whatever the file holds there.
TEST_F(Canopy, RoughnessOfGhostColumnsIsNotLookedAt) {
    lay_wood();
    run_case(iterations(1));
    const std::string expected = state(1);
    CanopyRecords records = records_of_wood();
    for (int i = 1; i <= records.gp_z0.ni(); ++i) {
        records.gp_z0(i, 1) = 0.0F;
        records.gp_z0(i, records.gp_z0.nj()) = std::numeric_limits<float>::quiet_NaN();
    }
    write_canopy_file(directory.file(canopy_path), records);
    run_case(iterations(1));
    EXPECT_EQ(state(1), expected);
}

TEST_F(Canopy, OtherModesAreRefused) {
    for (const char* mode : {"2", "-1"}) {
        write_small_case(iterations(0),
                         "&canopy_parameters\ncanopy_mode = " + std::string(mode) + "\n/\n");
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 1);
        EXPECT_THAT(ran.err, HasSubstr("canopy_mode is " + std::string(mode)));
    }
}

}  // namespace
}  // namespace torvex
