// The start fields of a direction.

#include "solver/init.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <filesystem>
#include <string>
#include <utility>

#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"
#include "solver/flow_fields.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::all_equal;
using testing::HasSubstr;

constexpr float wd = 22.5F;
const std::string tag = "022_5";

CaseSettings plain_case() {
    CaseSettings s;
    s.TURBULENCE_MODEL = 1;
    s.CMU = 0.09F;
    s.VISCOS = 0.0015F;
    s.DENSIT = 1;
    return s;
}

// Layers of 20 m up to 500 m: the first centre is 10 m above the ground.
GridGeometry tower() {
    return with_metrics(uniform_mesh({3, 4, 26}, 100, 100, 20));
}

FlowState rough(const GridGeometry& g, float z0) {
    FlowState s;
    s.z0.allocate(g.ni, g.nj, z0);
    return s;
}

// INIT of that state, what it told the log behind the date stamp beside it.
std::string init(const CaseSettings& settings, const GridGeometry& g, FlowState& s) {
    RunLog log;
    INIT(settings, g, wd, tag, log, s);
    return log.kept().empty() ? "" : log.kept().substr(19);
}

// The working directory of a test, with files of its own.
class InitInDirectory : public testing::Test {
 protected:
    InitInDirectory() : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(directory_.path());
    }
    ~InitInDirectory() override { std::filesystem::current_path(before_); }

    test::TemporaryDirectory directory_;

 private:
    std::filesystem::path before_;
};

TEST(Init, FillsAColumnOfOpenCountry) {
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    const std::string line = init(plain_case(), g, s);
    EXPECT_EQ(line, " WD  22.5: Inflow: alpha=  0.1690, Zg=   387.324\n");

    ASSERT_EQ(g.zc(2, 2, 2), 10.0F);
    for (const int i : {1, 2, g.ni}) {
        for (const int j : {1, 3, g.nj}) {
            EXPECT_NEAR(s.u(i, j, 2), 5.38964F, 1e-5F);
            EXPECT_NEAR(s.tke(i, j, 2), 1.185565F, 2e-6F);
            EXPECT_NEAR(s.ted(i, j, 2), 0.0530286F, 1e-7F);
            EXPECT_NEAR(s.vis(i, j, 2), 2.387F, 1e-3F);
        }
    }
    // 390 m is the first centre above Zg; the top boundary lies at 500 m.
    for (int k = 21; k <= g.nk; ++k) {
        EXPECT_EQ(s.u(2, 2, k), 10.0F);
        EXPECT_EQ(s.tke(2, 2, k), 0.83F * (0.7400828F * 0.7400828F));
        EXPECT_NEAR(s.tke(2, 2, k), 0.454610F, 1e-6F);
    }
    EXPECT_LT(s.u(2, 2, 20), 10.0F);
}

TEST(Init, OfOneMetreRoughness) {
    const GridGeometry g = tower();
    FlowState s = rough(g, 1);
    EXPECT_EQ(init(plain_case(), g, s), " WD  22.5: Inflow: alpha=  0.2700, Zg=   550.000\n");
    EXPECT_NEAR(s.u(2, 2, 2), 10 * std::pow(10.0F / 550.0F, 0.27F), 1e-5F);
}

// Every column has its own ground and roughness; all formulas once more in double precision.
TEST(Init, FollowsGroundAndRoughnessOfEachColumn) {
    GridGeometry hill = hill_mesh({9, 8, 12});
    for (Field3* r : {&hill.xn, &hill.yn, &hill.zn}) {
        for (std::size_t n = 0; n < r->size(); ++n) {
            r->data()[n] *= 300.0F;  // 600 m high
        }
    }
    const GridGeometry g = with_metrics(std::move(hill));
    CaseSettings settings = plain_case();
    settings.DENSIT = 1.2F;
    settings.CMU = 0.085F;
    FlowState s = rough(g, 0.03F);
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            s.z0(i, j) = 0.01F * static_cast<float>(i) + 0.02F * static_cast<float>(j * j);
        }
    }
    init(settings, g, s);
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                SCOPED_TRACE(std::to_string(i) + " " + std::to_string(j) + " " + std::to_string(k));
                const auto z0 = double(s.z0(i, j));
                const double L = std::log(z0) / std::log(10.0);
                const double alpha = 0.27 + L * (0.09 + L * (0.018 + L * 0.0016));
                const double Zg = 550 * std::pow(z0, 0.1);
                const double h = double(g.zc(i, j, k)) - double(g.zc(i, j, 1));
                const double x = std::min(h / Zg, 1.0);
                const double T2 = std::pow(x, -0.1) * std::sqrt(1 - 0.7 * x);
                const double tke = 0.83 * T2;
                const double length = 0.4 * std::min(h, Zg);
                const double ted = std::pow(0.085, 0.75) * std::pow(tke, 1.5) / length;
                const double vis = 0.085 * 1.2 * tke * tke / ted + 0.0015;
                EXPECT_NEAR(double(s.u(i, j, k)), 10 * std::pow(x, alpha), 2e-5);
                EXPECT_NEAR(double(s.tke(i, j, k)), tke, 2e-6 * tke);
                EXPECT_NEAR(double(s.ted(i, j, k)), ted, 1e-5 * ted);
                EXPECT_NEAR(double(s.vis(i, j, k)), vis, 1e-5 * vis);
            }
        }
    }
}

TEST(Init, CopiesTheLowestCellsToTheGround) {
    const GridGeometry g = tower();
    CaseSettings settings = plain_case();
    settings.TURBULENCE_MODEL = 4;
    FlowState s = rough(g, 0.03F);
    init(settings, g, s);
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            EXPECT_EQ(s.u(i, j, 1), 0.0F);
            EXPECT_EQ(s.tke(i, j, 1), s.tke(i, j, 2));
            EXPECT_EQ(s.ted(i, j, 1), s.ted(i, j, 2));
            EXPECT_EQ(s.vis(i, j, 1), 0.0015F);
            EXPECT_EQ(s.lm(i, j, 1), s.lm(i, j, 2));
            EXPECT_EQ(s.tkl(i, j, 1), s.tke(i, j, 2));
            EXPECT_EQ(s.viskl(i, j, 1), s.vis(i, j, 2));
        }
    }
}

TEST(Init, GivesTheLengthModelItsFields) {
    const GridGeometry g = tower();
    CaseSettings settings = plain_case();
    FlowState first = rough(g, 0.03F);
    init(settings, g, first);
    for (const int model : {2, 3, 4}) {
        settings.TURBULENCE_MODEL = model;
        FlowState s = rough(g, 0.03F);
        init(settings, g, s);
        EXPECT_TRUE(test::same_bits(s.u, first.u));
        EXPECT_TRUE(test::same_bits(s.tke, first.tke));
        EXPECT_TRUE(test::same_bits(s.ted, first.ted));
        EXPECT_TRUE(test::same_bits(s.vis, first.vis));
        if (model == 3) {
            EXPECT_EQ(s.lm.size() + s.tkl.size() + s.viskl.size(), 0U);
            continue;
        }
        for (int k = 2; k <= g.nk; ++k) {
            // 0.4 times the height, not more than 0.4 times 387.324 m; 10, 30, ... 490, 500 m
            const float h = k == g.nk ? 500.0F : 20.0F * static_cast<float>(k) - 30.0F;
            EXPECT_NEAR(s.lm(2, 2, k), 0.4F * std::min(h, 387.3243F), 1e-4F);
            EXPECT_EQ(s.tkl(2, 2, k), s.tke(2, 2, k));
            EXPECT_EQ(s.viskl(2, 2, k), s.vis(2, 2, k));
        }
    }
}

TEST(Init, LeavesTheOtherFieldsAtZero) {
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    allocate_fields(s, g, 1);
    for (Field3* field : {&s.u, &s.v, &s.w, &s.p, &s.pp, &s.flxU, &s.flxV, &s.flxW}) {
        field->fill(7);  // of an earlier direction
    }
    init(plain_case(), g, s);
    for (const Field3* field : {&s.v, &s.w, &s.p, &s.pp, &s.flxU, &s.flxV, &s.flxW}) {
        EXPECT_TRUE(all_equal(*field, 0));
    }
    EXPECT_EQ(s.u(2, 2, 1), 0.0F);
}

TEST(Init, ReportsTheCornerColumn) {
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    s.z0(1, 1) = 1;
    EXPECT_EQ(init(plain_case(), g, s), " WD  22.5: Inflow: alpha=  0.2700, Zg=   550.000\n");
}

TEST(Init, IsSilentInANestedRun) {
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    CaseSettings settings = plain_case();
    settings.nest.nest_mode = 1;
    EXPECT_EQ(init(settings, g, s), "");
    EXPECT_NEAR(s.u(2, 2, 2), 5.38964F, 1e-5F);
    // The parent's flow comes later, a profile is not even looked for.
    settings.SPECIFY_INFLOW_PROFILE = true;
    settings.INFLOW_PROFILE_FILE = "no such file";
    EXPECT_EQ(init(settings, g, s), "");
    EXPECT_NEAR(s.u(2, 2, 2), 5.38964F, 1e-5F);
}

// A division by zero, a root of a negative or an overflow would end this process.
TEST(Init, RaisesNoFloatingPointTrap) {
    const GridGeometry g = with_metrics(stretched_mesh({4, 4, 30}, {50, 50, 0.02}, {1, 1, 1.5}));
    const test::Threads one(1);
    for (const int model : {1, 4}) {
        CaseSettings settings = plain_case();
        settings.TURBULENCE_MODEL = model;
        for (const float z0 : {0.0001F, 1.0F, 9.999F}) {
            FlowState s = rough(g, z0);
            feclearexcept(FE_ALL_EXCEPT);
            feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
            init(settings, g, s);
            fedisableexcept(FE_ALL_EXCEPT);
            for (const Field3* field : {&s.u, &s.tke, &s.ted, &s.vis}) {
                EXPECT_TRUE(std::all_of(field->data(), field->data() + field->size(),
                                        [](float x) { return std::isfinite(x) && x >= 0.0F; }));
            }
        }
    }
}

TEST(Init, RefusesColumnsWithoutRoughnessOrHeight) {
    const GridGeometry g = tower();
    for (const float z0 : {0.0F, -1.0F, std::nanf(""), INFINITY}) {
        FlowState s = rough(g, 0.03F);
        s.z0(2, 3) = z0;
        const auto stop = test::stop_of([&] { init(plain_case(), g, s); });
        ASSERT_TRUE(stop.has_value());
        EXPECT_EQ(stop->code(), 1);
        EXPECT_EQ(stop->where(), "column (2, 3)");
    }
    GridGeometry flat = tower();
    flat.zc(3, 2, 2) = flat.zc(3, 2, 1);
    FlowState s = rough(flat, 0.03F);
    const auto stop = test::stop_of([&] { init(plain_case(), flat, s); });
    ASSERT_TRUE(stop.has_value());
    EXPECT_EQ(stop->code(), 1);
    EXPECT_EQ(stop->where(), "column (3, 2)");
}

TEST(Init, GivesTheSameBitsForAnyNumberOfThreads) {
    const GridGeometry g = with_metrics(hill_mesh({9, 8, 12}));
    CaseSettings settings = plain_case();
    settings.TURBULENCE_MODEL = 4;
    const auto with_threads = [&](int n) {
        const test::Threads threads(n);
        FlowState s = rough(g, 0.03F);
        init(settings, g, s);
        return s;
    };
    const FlowState one = with_threads(1);
    for (const int n : {2, 3, 5}) {
        const FlowState s = with_threads(n);
        for (const auto field : {&FlowState::u, &FlowState::tke, &FlowState::ted, &FlowState::vis,
                                 &FlowState::lm, &FlowState::tkl, &FlowState::viskl}) {
            EXPECT_TRUE(test::same_bits(s.*field, one.*field)) << n;
        }
    }
}

// --- a profile of the user's ---

TEST_F(InitInDirectory, TakesAProfileTable) {
    directory_.write("in.txt", "h u tke\n20 4 1.0\n60 8 0.5\n");
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    CaseSettings settings = plain_case();
    settings.SPECIFY_INFLOW_PROFILE = true;
    settings.INFLOW_PROFILE_FILE = "in.txt";
    settings.INFLOW_PROFILE_TABLE = true;
    EXPECT_EQ(init(settings, g, s), " WD  22.5: Inflow profile was specified.\n");

    // centres at 10, 30, 50, 70 m: below, within, within, above the table
    const float u[] = {4, 5, 7, 8};
    const float tke[] = {1, 0.875F, 0.625F, 0.5F};
    for (int k = 2; k <= 5; ++k) {
        const double h = 20.0 * k - 30.0;
        const auto energy = double(tke[k - 2]);
        EXPECT_FLOAT_EQ(s.u(2, 3, k), u[k - 2]);
        EXPECT_FLOAT_EQ(s.tke(2, 3, k), tke[k - 2]);
        const double ted = std::pow(0.09, 0.75) * std::pow(energy, 1.5) / (0.4 * h);
        EXPECT_NEAR(double(s.ted(2, 3, k)), ted, 1e-5 * ted);
        const double vis = 0.09 * energy * energy / ted + 0.0015;
        EXPECT_NEAR(double(s.vis(2, 3, k)), vis, 1e-5 * vis);
    }
    EXPECT_EQ(s.u(1, 1, g.nk), 8.0F);
    EXPECT_EQ(s.u(2, 3, 1), 0.0F);  // the ground stands still, whatever the lowest level says
    EXPECT_EQ(s.tke(2, 3, 1), 1.0F);
    EXPECT_TRUE(all_equal(s.v, 0));
}

TEST_F(InitInDirectory, TakesAProfileOfTheSiteOutput) {
    directory_.write("in.tpd",
                     " 2\n z_agl u v w p tke ted z_asl\n"
                     " 20 4 9 9 9 1.0 9 120\n 60 8 9 9 9 0.5 9 160\n");
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    CaseSettings settings = plain_case();
    settings.SPECIFY_INFLOW_PROFILE = true;
    settings.INFLOW_PROFILE_FILE = "in.tpd";
    settings.INFLOW_PROFILE_TABLE = false;
    EXPECT_EQ(init(settings, g, s), " WD  22.5: Inflow profile was specified.\n");
    EXPECT_FLOAT_EQ(s.u(2, 2, 3), 5.0F);
    EXPECT_FLOAT_EQ(s.tke(2, 2, 3), 0.875F);
    EXPECT_TRUE(all_equal(s.v, 0));
    EXPECT_TRUE(all_equal(s.w, 0));
    EXPECT_TRUE(all_equal(s.p, 0));
}

// A level without turbulence leaves the molecular viscosity and no 0/0.
TEST_F(InitInDirectory, TakesAProfileWithoutTurbulence) {
    directory_.write("in.txt", "0 5 0\n");
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    CaseSettings settings = plain_case();
    settings.SPECIFY_INFLOW_PROFILE = true;
    settings.INFLOW_PROFILE_FILE = "in.txt";
    settings.INFLOW_PROFILE_TABLE = true;
    init(settings, g, s);
    EXPECT_TRUE(all_equal(s.ted, 0));
    EXPECT_TRUE(all_equal(s.vis, 0.0015F));
}

TEST_F(InitInDirectory, StopsAtAnUnreadableProfile) {
    directory_.write("in.txt", "h u tke\n20 4 1.0\n60 x 0.5\n");
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    CaseSettings settings = plain_case();
    settings.SPECIFY_INFLOW_PROFILE = true;
    settings.INFLOW_PROFILE_FILE = "in.txt";
    settings.INFLOW_PROFILE_TABLE = true;
    const auto stop = test::stop_of([&] { init(settings, g, s); });
    ASSERT_TRUE(stop.has_value());
    EXPECT_EQ(stop->code(), 1);
    EXPECT_EQ(stop->where(), "in.txt, line 3");
}

// --- with a canopy ---

CaseSettings canopy_case() {
    CaseSettings settings = plain_case();
    settings.canopy.canopy_mode = 1;
    return settings;
}

TEST_F(InitInDirectory, SharesTheUpwindRoughnessInTheExponentOnly) {
    directory_.write("log-upwind_roughness-022_5", "   1.00000000    \n");
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    testing::internal::CaptureStdout();
    EXPECT_EQ(init(canopy_case(), g, s), " WD  22.5: Inflow: alpha=  0.2700, Zg=   387.324\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_NEAR(s.u(2, 2, 2), 10 * std::pow(10.0F / 387.3243F, 0.27F), 1e-5F);
    EXPECT_NEAR(s.tke(2, 2, 2), 1.185565F, 2e-6F);  // knows Zg only
    EXPECT_NEAR(s.ted(2, 2, g.nk), std::pow(0.09F, 0.75F) * 0.306520F / (0.4F * 387.3243F), 1e-8F);
}

TEST_F(InitInDirectory, LooksForTheUpwindRoughnessUnderThePrefixOfTheRun) {
    directory_.write("log-upwind_roughness-022_5", "1.0\n");
    directory_.write("atlas-log-upwind_roughness-022_5", "0.03\n");
    const GridGeometry g = tower();
    CaseSettings settings = canopy_case();
    settings.run_prefix = "atlas-";
    FlowState s = rough(g, 1);
    EXPECT_EQ(init(settings, g, s), " WD  22.5: Inflow: alpha=  0.1690, Zg=   550.000\n");
}

// The parent's file carries no prefix; a nested run writes none of its own.
TEST_F(InitInDirectory, TakesTheParentsUpwindRoughnessInANestedRun) {
    directory_.write("log-upwind_roughness-022_5", "1.0\n");
    directory_.write("nest-log-upwind_roughness-022_5", "9.0\n");
    const GridGeometry g = tower();
    CaseSettings settings = canopy_case();
    settings.nest.nest_mode = 1;
    settings.run_prefix = "nest-";
    FlowState s = rough(g, 0.03F);
    EXPECT_EQ(init(settings, g, s), "");
    EXPECT_NEAR(s.u(2, 2, 2), 10 * std::pow(10.0F / 387.3243F, 0.27F), 1e-5F);
}

TEST_F(InitInDirectory, GoesOnWithTheLocalRoughnessWithoutTheFile) {
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    testing::internal::CaptureStdout();
    EXPECT_EQ(init(canopy_case(), g, s), " WD  22.5: Inflow: alpha=  0.1690, Zg=   387.324\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[CNPY]: fail to open log-upwind_roughness\n");
    EXPECT_NEAR(s.u(2, 2, 2), 5.38964F, 1e-5F);
}

TEST_F(InitInDirectory, StopsAtAnUpwindRoughnessThatIsNone) {
    const GridGeometry g = tower();
    for (const char* text : {"", "rough\n", "0.0\n", "-0.03\n", "nan\n", "inf\n", "/\n"}) {
        directory_.write("log-upwind_roughness-022_5", text);
        FlowState s = rough(g, 0.03F);
        const auto stop = test::stop_of([&] { init(canopy_case(), g, s); });
        ASSERT_TRUE(stop.has_value()) << text;
        EXPECT_EQ(stop->code(), 1);
        EXPECT_THAT(stop->where(), HasSubstr("log-upwind_roughness-022_5"));
    }
}

// A profile says all about the inflow: the file is not looked for.
TEST_F(InitInDirectory, NeedsNoUpwindRoughnessBesideAProfile) {
    directory_.write("in.txt", "20 4 1.0\n");
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    CaseSettings settings = canopy_case();
    settings.SPECIFY_INFLOW_PROFILE = true;
    settings.INFLOW_PROFILE_FILE = "in.txt";
    settings.INFLOW_PROFILE_TABLE = true;
    testing::internal::CaptureStdout();
    init(settings, g, s);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// --- a stored start ---

TEST(StoredStart, ReplacesAllButTheProfileOnTheInflowPlane) {
    const GridGeometry g = tower();
    FlowState s = rough(g, 0.03F);
    CaseSettings settings = plain_case();
    settings.TURBULENCE_MODEL = 4;
    init(settings, g, s);
    const FlowState before = s;
    FlowState stored;
    unsigned seed = 50;
    for (const FlowField& field : start_fields) {
        stored.*field.member = test::random_field(g, 1, 2, ++seed);
    }
    apply_stored_start(s, stored);

    const auto expect_replaced = [&g](const Field3& now, const Field3& profile,
                                      const Field3& file) {
        for (int k = 1; k <= g.nk; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                EXPECT_EQ(now(1, j, k), profile(1, j, k));
                for (int i = 2; i <= g.ni; ++i) {
                    EXPECT_EQ(now(i, j, k), file(i, j, k));
                }
            }
        }
    };
    for (const FlowField& field : kept_fields) {
        const auto member = field.member;
        if (field.kept != Kept::start) {
            EXPECT_TRUE(test::same_bits(s.*member, before.*member)) << field.name;
        } else if (field.name == "p") {
            EXPECT_TRUE(test::same_bits(s.p, stored.p));
        } else {
            expect_replaced(s.*member, before.*member, stored.*member);
        }
    }
}

}  // namespace
}  // namespace torvex
