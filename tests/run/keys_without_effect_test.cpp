// Keys that are read and change nothing: a run with all of them set leaves the bytes of a run
// without them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "canopy/canopy_file.hpp"
#include "results/result_files.hpp"
#include "run/run_fixture.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;

class KeysWithoutEffect : public RunTest {
 protected:
    struct Left {
        std::map<std::string, std::string> files;  // but for the case file and the run log
        std::vector<std::string> log;              // its dates masked
        std::string out;
    };

    // What a run leaves in a directory that holds its input files only.
    Left left_by(const CaseItems& items, const CaseItems& more, const std::string& behind) {
        for (const auto& [name, bytes] : files_below(directory.path())) {
            if (!inputs.contains(name)) {
                std::filesystem::remove(directory.file(name));
            }
        }
        CaseItems all{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};
        all.insert(all.end(), items.begin(), items.end());
        all.insert(all.end(), more.begin(), more.end());
        write_case(all, behind);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        Left left{files_below(directory.path()), lines_of(log()), ran.out};
        left.files.erase("torvex.tin");
        left.files.erase("torvex.log");
        return left;
    }

    // The run log may say more of a key than without it; it must not say less, or other things.
    static void expect_same(const Left& plain, const Left& with_keys) {
        const std::vector<std::string> console = lines_of(plain.out);
        const std::vector<std::string> other_console = lines_of(with_keys.out);
        const auto [line, other_line] = std::ranges::mismatch(console, other_console);
        EXPECT_EQ(line == console.end() ? "end" : *line,
                  other_line == other_console.end() ? "end" : *other_line);
        std::vector<std::string> names;
        for (const auto& [name, bytes] : plain.files) {
            names.push_back(name);
        }
        std::vector<std::string> names_with_keys;
        for (const auto& [name, bytes] : with_keys.files) {
            names_with_keys.push_back(name);
            const auto other = plain.files.find(name);
            EXPECT_TRUE(other != plain.files.end() && other->second == bytes) << name;
        }
        EXPECT_EQ(names_with_keys, names);
        auto from = with_keys.log.begin();
        for (const std::string& said : plain.log) {
            from = std::find(from, with_keys.log.end(), said);
            ASSERT_NE(from, with_keys.log.end()) << "the log does not say: " << said;
            ++from;
        }
    }
    void expect_no_effect(const CaseItems& items, const CaseItems& keys,
                          const std::string& behind = {}, const std::string& with_keys = {}) {
        const Left plain = left_by(items, {}, behind);
        EXPECT_TRUE(plain.files.contains("restart-000_0-restart.info"));
        expect_same(plain, left_by(items, keys, with_keys.empty() ? behind : with_keys));
    }

    std::map<std::string, std::string> inputs = files_below(directory.path());
};

const CaseItems accepted_keys{
    {"NML_CASEFILE", "PROJECT_NAME = 'another'"},
    {"NML_NAVIER_STOKES", "SOLVE_ENERGY_EQUATION = T, TM_MIX_PARAMETER = 0.7"},
    {"NML_NUMERICAL_SOLVER", "UNSTEADY_SOLVER = T, T_DT = 0.1, T_NUM = 3, T_BEGIN = 5"},
    {"NML_NUMERICAL_SOLVER", "CC_IN_U = 0.9, CC_IN_V = 0.8, CC_IN_W = 0.001, CC_IN_PP = 0.9"},
    {"NML_NUMERICAL_SOLVER", "CC_IN_TKE = 0.9, CC_IN_TED = 0.001, SIP_ALPHA = 0.2"},
    {"NML_NUMERICAL_SOLVER", "RCM_L = 2, RCM_N = 2, URFVIS_MAX = 0.9, OUT_CC_RATIO = 0.1"},
    {"NML_NUMERICAL_SOLVER", "CC_OUT_TKE = 1E-20, CC_OUT_TED = 1E-20"}};

// What a run would tell of frontal areas stands behind calc_fa, which is off.
const std::string shape_block =
    "&shp_parameters\nshp_def_cs = 3\nshp_or_radius = 50\ntrdb2shp_fn = shapes\nfa_ndir = 2\n"
    "fa_read_dirs = T\nfa_dirs = 0, 90\nexclude_donut_shape = T\n/\n";

// The hybrid model runs nearly every routine, behind iteration 50 with a boost, so that a ceiling
// of URFVIS would show. It tells RATIO_OMEGA in the run log, which the k-l model has no use for.
TEST_F(KeysWithoutEffect, AcceptedOnesChangeNoByte) {
    const std::string never = "CC_OUT_U = 0, URFVIS = 0.3";
    expect_no_effect({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 4, RATIO_KL = 0.3"},
                      {"NML_NUMERICAL_SOLVER", "MAXIT = 53, BOOSTCAL = T, " + never}},
                     accepted_keys, {}, shape_block);
    CaseItems keys = accepted_keys;
    keys.emplace_back("NML_NAVIER_STOKES", "RATIO_OMEGA = 0.4");
    expect_no_effect({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 2"},
                      {"NML_NUMERICAL_SOLVER", "MAXIT = 12, " + never}},
                     keys, {}, shape_block);
}

// The criteria of k and epsilon play no part in convergence.
TEST_F(KeysWithoutEffect, AcceptedOnesEndNoDirectionSoonerOrLater) {
    const CaseItems items{
        {"NML_NUMERICAL_SOLVER", "MAXIT = 300, DOUBLE_CORRECTION = T, CC_OUT_M = 0.01"},
        {"NML_NUMERICAL_SOLVER", "CC_OUT_U = 0.01, CC_OUT_V = 0.01, CC_OUT_W = 0.01"}};
    expect_no_effect(items, accepted_keys);
    EXPECT_THAT(log(), HasSubstr(": Converged."));
}

TEST_F(KeysWithoutEffect, AcceptedOnesOfTheCanopyChangeNoByte) {
    left_by({}, {}, {});
    const Extents n = read_extents(directory.file("restart-000_0-xyzc.tuf"), {1, 1, 1});
    CanopyRecords wood;
    for (Field3* field : {&wood.gp_cf, &wood.gp_density, &wood.gp_length}) {
        field->allocate(n.ni, n.nj, n.nk);
        field->fill(0.3F);
    }
    wood.gp_z0.allocate(n.ni, n.nj, 0.1F);
    write_canopy_file(directory.file("restart-000_0-ccd.tuf"), wood);
    inputs = files_below(directory.path());
    std::erase_if(inputs, [](const auto& file) {
        return !file.first.ends_with(".map") && !file.first.ends_with("ccd.tuf");
    });

    const std::string mode = "&canopy_parameters\ncanopy_mode = 1\n";
    const std::string keys =
        "use_vegetation_layer = T\npm_tiny = 0.5\ncfp1 = 3\ncfp2 = 4\nmagick = 5\ncpe2 = 6\n"
        "wt_floor_mode = T\nwt_floor_z0 = 0.7\nwt_floor_ttr = 0.8\nuse_z0_judge = T\n"
        "use_ff_judge = T\noutput_log_shape_height = 1\n";
    expect_no_effect({{"NML_NUMERICAL_SOLVER", "MAXIT = 12"}}, {}, mode + "/\n",
                     mode + keys + "/\n");
}

// Keys whose switch is off. Files that such keys name need not be there.
TEST_F(KeysWithoutEffect, OnesThatAreSwitchedOffChangeNoByte) {
    const CaseItems keys{
        {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 45, 90, FLAT_ROUGHNESS = 0.9"},
        {"NML_CASEFILE", "ELEVATION_CORRECTION_FACTOR = 3*2.5"},
        {"NML_MONITOR", "MONITOR_LON = 1, 2, 3, MONITOR_LAT = 4, 5, 6, MONITOR_HEIGHT = 900"},
        {"NML_ER", "EQUIVALENT_ROUGHNESS = 3*0.7, BUFFER_ZONE_SLOPE_GRADIENT = 3"},
        {"NML_ER", "DIRECTIONAL_ALPHA_FILE_NAME = 'none.txt', DIRECTIONAL_ALPHA_Z0_MIN = 0.01"},
        {"NML_ER", "DIRECTIONAL_ALPHA_Z0_MAX = 0.02, DIRECTIONAL_ALPHA_BS_EPS = 0.1"},
        {"NML_ER", "DIRECTIONAL_ALPHA_BS_MAXIT = 1, DIRECTIONAL_ALPHA_APPLICABLE_WDS = 1"},
        {"NML_BOUNDARY_TREATMENT", "MAX_Z = 300, WIND_TUNNEL_Z0 = 0.9"},
        {"NML_BOUNDARY_TREATMENT", "INFLOW_PROFILE_FILE = 'none.txt', INFLOW_PROFILE_TABLE = F"},
        {"NML_NAVIER_STOKES", "KL_CMU = 0.2, KL_SIGMA_K = 3, KL_ALPHA = 0.5, RATIO_KL = 0.9"},
        {"NML_NUMERICAL_SOLVER", "URFU_MAX = 0.1, URFV_MAX = 0.1, URFW_MAX = 0.1"},
        {"NML_NUMERICAL_SOLVER", "URFP_MAX = 0.1, URFK_MAX = 0.1, URFE_MAX = 0.1"}};
    const std::string blocks =
        "&nest_points\nnest_mode = 0\nnest_site%n_x_div = 3\nnest_bc_distr = 1\n/\n"
        "&canopy_parameters\ncanopy_mode = 0\nstart_cal_src = 2\nbeta_p = 3\nbeta_d = 4\n"
        "src_included_model = T\ncpe1 = 5\nalphak1 = 6\nalphae1 = 7\nr1max = 0.1\nr2max = 0.2\n/\n"
        "&user_domain\nmesh_n_file = none.txt\nxyz_file = none.tuf\ninlet = 1\n/\n";
    expect_no_effect({{"NML_NUMERICAL_SOLVER", "MAXIT = 53"}}, keys, {}, blocks);
}

}  // namespace
}  // namespace torvex::test
