// Start fields from the user's profile table.

#include "solver/table_inflow.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "solver/fields.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;

class TableInflow : public testing::Test {
 protected:
    TableInflow() {
        settings.TURBULENCE_MODEL = 1;
        settings.CMU = 0.09F;
        settings.VISCOS = 0.0015F;
        settings.DENSIT = 1;
        settings.user.inlet = 1;
        settings.user.inflow_profile_file = directory.file("inflow.txt");
    }
    // What the console was told.
    std::string fill(std::string_view table, bool precise = false) {
        directory.write("inflow.txt", table);
        settings.user.specify_turbulence = precise;
        s = {};
        s.z0.allocate(g.ni, g.nj, 0.03F);
        testing::internal::CaptureStdout();
        stopped = test::stop_of([&] { fill_table_inflow(settings, g, s); });
        return testing::internal::GetCapturedStdout();
    }
    void expect_refused(std::string_view table, bool precise, const std::string& line,
                        const std::string& words) {
        SCOPED_TRACE(std::string(table));
        const std::string shown = fill(table, precise);
        ASSERT_TRUE(stopped.has_value());
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->reason(), testing::StartsWith("*** inflow file error ***: "));
        EXPECT_THAT(stopped->reason(), HasSubstr(words));
        EXPECT_EQ(stopped->where(), directory.file("inflow.txt") + line);
        EXPECT_TRUE(shown.ends_with("\n*** inflow file error ***\n")) << shown;
    }

    test::TemporaryDirectory directory;
    // Layers of 20 m up to 1000 m: centres 10, 30, ... m above the ground, the top at 1000 m.
    GridGeometry g = with_metrics(uniform_mesh({3, 4, 51}, 100, 100, 20));
    CaseSettings settings;
    FlowState s;
    std::optional<Stop> stopped;
};

TEST_F(TableInflow, OfSigmaUGivesTheTurbulence) {
    EXPECT_EQ(fill("mast 12\nh(m) u(m/s) sigma(m/s)\n5 4 1.5\n25 8 1.5\n65 10 0.5\n"),
              "- Specify turbulence by the sigma u.\n- Calculating ted\n");
    EXPECT_FALSE(stopped);
    for (const auto& [i, j] : {std::pair(1, 1), std::pair(3, 2), std::pair(g.ni, g.nj)}) {
        // 10 m: a quarter of the way up; 0.945 * 1.5^2; 0.09^0.75 * 2.12625^1.5 / (0.4 * 10).
        EXPECT_FLOAT_EQ(s.u(i, j, 2), 5.0F);
        EXPECT_FLOAT_EQ(s.tke(i, j, 2), 2.12625F);
        EXPECT_NEAR(s.ted(i, j, 2), 0.127363, 1e-6);
        EXPECT_NEAR(s.vis(i, j, 2), 0.09 * 2.12625 * 2.12625 / 0.127363 + 0.0015, 5e-5);
        // 50 m: five eighths of the way from 25 to 65 m; sigma u is 0.875 there.
        EXPECT_FLOAT_EQ(s.u(i, j, 4), 9.25F);
        EXPECT_FLOAT_EQ(s.tke(i, j, 4), 0.945F * 0.875F * 0.875F);
        // 990 m, above the table and above Zg = 387.324 m: 0.23625^1.5 = 0.114831.
        EXPECT_FLOAT_EQ(s.u(i, j, 51), 10.0F);
        EXPECT_FLOAT_EQ(s.tke(i, j, 51), 0.23625F);
        EXPECT_NEAR(s.ted(i, j, 51), 0.164317 * 0.114831 / (0.4 * 387.324), 1e-9);
    }
}

TEST_F(TableInflow, HoldsItsEndValuesOutside) {
    fill("30 6 1\n50 8 2\n");
    EXPECT_EQ(s.u(2, 2, 2), 6.0F) << "10 m";
    EXPECT_EQ(s.u(2, 2, 3), 6.0F) << "30 m";
    EXPECT_EQ(s.u(2, 2, 4), 8.0F) << "50 m";
    EXPECT_EQ(s.u(2, 2, 52), 8.0F) << "the top";
    EXPECT_FLOAT_EQ(s.tke(2, 2, 2), 0.945F);
    EXPECT_FLOAT_EQ(s.tke(2, 2, 20), 0.945F * 4);
}

TEST_F(TableInflow, OfTurbulenceItselfTakesItAsItStands) {
    EXPECT_EQ(fill("0 2 1.0 0.5\n20 6 2.0 0.25\n", true),
              "- Specify turbulent property precisely.\n");
    EXPECT_FALSE(stopped);
    EXPECT_FLOAT_EQ(s.u(2, 2, 2), 4.0F);
    EXPECT_FLOAT_EQ(s.tke(2, 2, 2), 1.5F);
    EXPECT_FLOAT_EQ(s.ted(2, 2, 2), 0.375F);
    EXPECT_FLOAT_EQ(s.vis(2, 2, 2), 0.09F * 2.25F / 0.375F + 0.0015F);
    EXPECT_FLOAT_EQ(s.ted(2, 2, 9), 0.25F);
    EXPECT_EQ(s.ted(2, 2, 1), s.ted(2, 2, 2));
}

TEST_F(TableInflow, GroundLayerAndOtherFieldsAreThoseOfAStart) {
    for (const bool precise : {false, true}) {
        fill("0 3 1 1\n500 9 1 1\n", precise);
        EXPECT_EQ(s.u(2, 2, 1), 0.0F);
        EXPECT_EQ(s.tke(2, 2, 1), s.tke(2, 2, 2));
        EXPECT_EQ(s.ted(2, 2, 1), s.ted(2, 2, 2));
        EXPECT_EQ(s.vis(2, 2, 1), 0.0015F);
        EXPECT_TRUE(test::all_equal(s.v, 0.0F) && test::all_equal(s.w, 0.0F));
        EXPECT_TRUE(test::all_equal(s.p, 0.0F) && test::all_equal(s.flxU, 0.0F));
    }
}

TEST_F(TableInflow, ModelsWithALengthGetThatOfTheStart) {
    for (const int model : {2, 4}) {
        for (const bool precise : {false, true}) {
            settings.TURBULENCE_MODEL = model;
            fill("0 3 1 1\n500 9 1 1\n", precise);
            EXPECT_FLOAT_EQ(s.lm(2, 2, 2), 4.0F);
            EXPECT_NEAR(s.lm(2, 2, 45), 0.4 * 387.324, 1e-3);
            EXPECT_TRUE(test::same_bits(s.tkl, s.tke));
            EXPECT_EQ(s.viskl(2, 2, 5), s.vis(2, 2, 5));
        }
    }
}

TEST_F(TableInflow, MayHaveNoTurbulenceAtAll) {
    fill("0 3 0\n500 9 0\n");
    EXPECT_FALSE(stopped);
    EXPECT_TRUE(test::all_equal(s.tke, 0.0F) && test::all_equal(s.ted, 0.0F));
    EXPECT_TRUE(test::all_equal(s.vis, 0.0015F));
}

TEST_F(TableInflow, RefusesATableThatCannotBeUsed) {
    expect_refused("", false, ", line 1", "no line begins with a number");
    expect_refused("h u sigma\n", false, ", line 1", "no line begins with a number");
    expect_refused("h u sigma\n10 5\n", false, ", line 2", "fewer than 3 values");
    expect_refused("10 5 1\n", true, ", line 1", "fewer than 4 values");
    expect_refused("10 5 1\n20 x 1\n", false, ", line 2", "cannot read \"x\"");
    expect_refused("10 5 1\n2O 5 1\n", false, ", line 2", "cannot read \"2O\"");
    expect_refused("10 5 1\n10 6 1\n", false, ", line 2", "does not rise");
    expect_refused("10 5 1\n20 6 1\n15 6 1\n", false, ", line 3", "does not rise");
    expect_refused("10 5 1\n20 nan 1\n", false, ", line 2", "finite");
    expect_refused("10 5 1\n20 5 inf\n", false, ", line 2", "finite");
    expect_refused("10 5 1\n20,,1\n", false, ", line 2", "finite");
    expect_refused("10 5 1\n20 6 -1\n", false, ", line 2", "sigma u is negative");
    expect_refused("10 5 2e19\n", false, ", line 1", "sigma u is too large");
    expect_refused("10 5 1e99\n", false, ", line 1", "cannot read");
    expect_refused("10 5 -1 1\n", true, ", line 1", "tke is negative");
    expect_refused("10 5 1 1\n20 5 1 0\n", true, ", line 2", "ted is not above 0");
    expect_refused("10 5 1 -1\n", true, ", line 1", "ted is not above 0");
}

TEST_F(TableInflow, RefusesWhatIsNoReadableFile) {
    for (const std::string& path :
         {directory.file("none.txt"), directory.path().string(), std::string()}) {
        settings.user.inflow_profile_file = path;
        fill("10 5 1\n");
        ASSERT_TRUE(stopped.has_value());
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_EQ(stopped->reason(), "*** inflow file error ***: the table cannot be opened");
        EXPECT_THAT(stopped->where(), HasSubstr(path.empty() ? "inflow_profile_file" : path));
    }
}

}  // namespace
}  // namespace torvex
