// Whole cases that must come out alike: the same terrain turned, another density, another number
// of threads.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <utility>

#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

// Terrain and roughness without any symmetry.
double lopsided_hills(double east, double north) {
    static const Ground high = cosine_hill(150, 400, 200, -100);
    static const Ground low = cosine_hill(60, 300, -500, 450);
    return high(east, north) + low(east, north);
}
double patchy_roughness(double east, double north) {
    return 0.1 + 0.08 * std::sin(east / 700) * std::cos(north / 900 + 0.5);
}

// A quarter turn clockwise: what lay to the north lies to the east.
Ground turned(const Ground& ground) {
    return [=](double east, double north) { return ground(-north, east); };
}

// Of a and factor*b. Fields of different meshes or with a value that is no number differ
// infinitely.
template <class Field>
float largest_difference(const Field& a, const Field& b, float factor = 1) {
    float largest = a.size() == b.size() ? 0.0F : HUGE_VALF;
    for (std::size_t n = 0; n < std::min(a.size(), b.size()); ++n) {
        const float difference = std::abs(a.data()[n] - factor * b.data()[n]);
        largest = std::max(largest, std::isnan(difference) ? HUGE_VALF : difference);
    }
    return largest;
}

class Invariance : public WholeCase {
 protected:
    struct Wind {
        std::string angle, tag;
    };
    Solution from(const Wind& wind) const {
        return converged(hill_case({{"NML_CASEFILE", "WIND_DIRECTION_ANGLE = " + wind.angle}}),
                         wind.tag);
    }
};

// The mesh turns with the wind, so that only the rounding of sines and cosines and of the maps is
// left, some 1e-7 of the distance from the centre: a millimetre in the ground.
TEST_F(Invariance, AQuarterTurnOfWindAndTerrainChangesNothing) {
    const std::pair<Wind, Wind> turns[] = {{{"0", "000_0"}, {"90", "090_0"}},
                                           {{"22.5", "022_5"}, {"112.5", "112_5"}},
                                           {{"180", "180_0"}, {"270", "270_0"}}};
    for (const auto& [wind, turned_wind] : turns) {
        SCOPED_TRACE(wind.angle);
        write_ground(lopsided_hills, patchy_roughness);
        const Solution one = from(wind);
        write_ground(turned(lopsided_hills), turned(patchy_roughness));
        const Solution other = from(turned_wind);
        ASSERT_EQ(one.outer_count, other.outer_count);
        const Field3 still(one.flow.v.ni(), one.flow.v.nj(), one.flow.v.nk());
        EXPECT_GT(largest_difference(one.flow.v, still), 0.5F) << "no symmetry hides a turn";
        EXPECT_LT(largest_difference(one.grid.zn, other.grid.zn), 2e-3F);
        for (const auto& field : {&FlowState::u, &FlowState::v, &FlowState::w, &FlowState::tke}) {
            EXPECT_LT(largest_difference(one.flow.*field, other.flow.*field), 1e-3F);
        }
        EXPECT_LT(largest_difference(one.flow.p, other.flow.p), 1e-2F);
        EXPECT_LT(largest_difference(one.flow.z0, other.flow.z0), 1e-4F);
    }
}

class Density : public WholeCase {
 protected:
    Density() { write_ground(lopsided_hills, patchy_roughness); }

    // The molecular viscosity rises with the density. Residuals are renewed in each iteration: the
    // count of sweeps rests on them, and between monitor steps they are not in scale.
    Solution fluid(const std::string& density, const std::string& viscosity,
                   const std::string& solver) const {
        write_case(hill_case({{"NML_MONITOR", "MONITOR_STEP = 1"},
                              {"NML_NAVIER_STOKES", "DENSIT = " + density},
                              {"NML_NAVIER_STOKES", "VISCOS = " + viscosity},
                              {"NML_NUMERICAL_SOLVER", solver}}));
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        return stored();
    }
};

// Without the deferred convection each term of momentum and turbulence is in proportion to the
// density. Twice the density then doubles all numbers on the way to p and vis and leaves those of
// the velocities alone, to the last bit. The cutting of residuals is left out, whose least squares
// stop at a fixed sum.
TEST_F(Density, TwiceOfItDoublesPressureAndViscosityAndNothingElse) {
    const std::string solver = "RATIO = 0, NSWPP = 0, MAXIT = 20";
    const Solution one = fluid("1", "0.0015", solver);
    const Solution two = fluid("2", "0.003", solver);
    for (const auto& field :
         {&FlowState::u, &FlowState::v, &FlowState::w, &FlowState::tke, &FlowState::ted,
          &FlowState::flxU, &FlowState::flxV, &FlowState::flxW}) {
        EXPECT_EQ(largest_difference(two.flow.*field, one.flow.*field), 0.0F);
    }
    EXPECT_EQ(largest_difference(two.flow.p, one.flow.p, 2), 0.0F);
    EXPECT_EQ(largest_difference(two.flow.vis, one.flow.vis, 2), 0.0F);
}

TEST_F(Density, OfSeaLevelOnlyRaisesThePressure) {
    const Solution one = fluid("1", "0.0015", "RATIO = 0");
    const Solution sea_level = fluid("1.2", "0.0018", "RATIO = 0");
    for (const auto& field : {&FlowState::u, &FlowState::v, &FlowState::w, &FlowState::tke}) {
        EXPECT_LT(largest_difference(sea_level.flow.*field, one.flow.*field), 5e-3F);
    }
    EXPECT_GT(largest_difference(sea_level.flow.p, one.flow.p), 1.0F);
    EXPECT_LT(largest_difference(sea_level.flow.p, one.flow.p, 1.2F), 5e-2F);
    EXPECT_NEAR(mass_imbalance(sea_level), 0.0, 1e-4);
}

// The deferred convection of v and w does without the density, on purpose: with a density of 1.2
// they get 1/1.2 of it. The flow shows that, by a per cent of the wind at most.
TEST_F(Density, OfSeaLevelWeakensTheDeferredConvectionAcrossTheWind) {
    const Solution one = fluid("1", "0.0015", "RATIO = 1");
    const Solution sea_level = fluid("1.2", "0.0018", "RATIO = 1");
    EXPECT_GT(largest_difference(sea_level.flow.v, one.flow.v), 0.01F);
    for (const auto& field : {&FlowState::u, &FlowState::v, &FlowState::w, &FlowState::tke}) {
        EXPECT_LT(largest_difference(sea_level.flow.*field, one.flow.*field), 0.1F);
    }
    EXPECT_NEAR(mass_imbalance(sea_level), 0.0, 1e-4);
}

// The case of a real mountain in a directory of its own.
class Interruption : public WholeCase {
 protected:
    Interruption() { write_ground(lopsided_hills, patchy_roughness); }

    // With criteria that are never met, so that the run ends at its iterations.
    void run_for(int iterations, const std::string& model, const std::string& restart) const {
        write_case(
            hill_case({{"NML_RUN", "RESTART_FLAG = " + restart},
                       {"NML_MONITOR", "MONITOR_STEP = 10"},
                       {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + model + ", RATIO_KL = 0.3"},
                       {"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(iterations)},
                       {"NML_NUMERICAL_SOLVER", "CC_OUT_U = 1e-20, CC_OUT_M = 1e-20"}}));
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
    }
    std::string result() const { return directory.read("restart-270_0-vpkeout_00080.tuf"); }
    std::string last_row() const { return slot("view-convergence-270_0.dat", 9); }
    // The residual sum before the sweeps of u in iteration 41, from a report of one line each.
    std::string reference_of_41() const {
        const std::string text = directory.read("restart-270_0-torvex.conv.log");
        std::size_t at = 0;
        for (int iteration = 1; iteration <= 41; ++iteration) {
            at = text.find("   u: n=", at) + 1;
        }
        const std::size_t value = text.find("ru0=", at) + 4;
        return text.substr(value, 14);
    }
};

// Forty iterations and forty more after a resume leave the bytes of eighty in one go. What is not
// stored are the residual sums that the stop test of the sweeps compares with: they are 0 until the
// next monitor step renews them, where an uninterrupted run has those of iteration 40, already
// normalised and far too small to stop a sweep.
TEST_F(Interruption, LeavesNoTraceInTheResults) {
    for (const std::string model : {"1", "2", "3", "4"}) {
        SCOPED_TRACE(model);
        run_for(80, model, "0");
        const std::string straight = result();
        const std::string row = last_row();
        EXPECT_NE(reference_of_41(), " 0.0000000E+00");

        std::filesystem::remove(directory.file("restart-270_0-vpkeout_00080.tuf"));
        run_for(40, model, "0");
        run_for(40, model, "1");
        EXPECT_EQ(reference_of_41(), " 0.0000000E+00");
        EXPECT_EQ(last_row(), row);
        EXPECT_TRUE(result() == straight) << "the bytes of the result files differ";
    }
}

class Threads : public ::testing::Test {
 protected:
    static constexpr const char* example = TORVEX_EXAMPLES_DIR "/big_butte/";

    // The case of the example, `keys` behind those of each group.
    static std::string case_with(const std::map<std::string, std::string>& keys) {
        std::ifstream in(example + std::string("torvex_gentle.tin"));
        std::string text{std::istreambuf_iterator<char>(in), {}};
        for (const auto& [group, line] : keys) {
            const std::size_t end = text.find("\n/", text.find("&" + group));
            text.insert(end, "\n  " + line);
        }
        return text;
    }

    // The result files of a run.
    static std::map<std::string, std::string> results(const std::string& text,
                                                      const std::string& threads) {
        const WorkingDirectory directory;
        for (const char* name : {"elevation.map", "roughness.map"}) {
            std::filesystem::create_symlink(std::string(example) + name, directory.path() / name);
        }
        directory.write("torvex.tin", text);
        const char* before = getenv("OMP_NUM_THREADS");
        const std::string kept = before != nullptr ? before : "";
        setenv("OMP_NUM_THREADS", threads.c_str(), 1);
        const ProgramRun ran = run_torvex_program({}, directory.path(), 250);
        kept.empty() ? unsetenv("OMP_NUM_THREADS") : setenv("OMP_NUM_THREADS", kept.c_str(), 1);
        EXPECT_EQ(ran.status, 0) << ran.err;
        std::map<std::string, std::string> files = files_below(directory.path());
        std::erase_if(files, [](const auto& file) { return !file.first.starts_with("restart-"); });
        return files;
    }
};

// The hybrid model and the second corrector run every routine of the equations but CALCLM, which is
// CALCLM_ on another field.
TEST_F(Threads, AnyNumberOfThemWritesTheSameBytes) {
    const std::string text =
        case_with({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                   {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 4, RATIO_KL = 0.5"},
                   {"NML_NUMERICAL_SOLVER", "MAXIT = 20, DOUBLE_CORRECTION = .true."}});
    const auto one = results(text, "1");
    EXPECT_TRUE(one.contains("restart-240_0-vpkeout_00020.tuf"));
    for (const char* threads : {"2", "3", "5"}) {
        const auto more = results(text, threads);
        ASSERT_EQ(more.size(), one.size());
        for (const auto& [name, bytes] : one) {
            EXPECT_TRUE(more.at(name) == bytes) << name << ", " << threads << " threads";
        }
    }
}

}  // namespace
}  // namespace torvex::test
