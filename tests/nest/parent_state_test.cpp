#include "nest/parent_state.hpp"

#include <gmock/gmock.h>

#include "mesh/mesh_cases.hpp"
#include "results/view_table.hpp"
#include "run/working_directory.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ParentState : public ::testing::Test {
 protected:
    ParentState() {
        settings.CC_OUT_M = settings.CC_OUT_U = settings.CC_OUT_V = settings.CC_OUT_W = 0.001F;
        settings.WIND_DIRECTION_ANGLE(1) = 0.0F;
        settings.WIND_DIRECTION_ANGLE(2) = 90.0F;
        directory.write("restart-000_0-restart.info", "150\n 1e-3 9e-4 2e-4 3e-4\n");
        directory.write("restart-090_0-restart.info", "150\n 1e-4 9e-4 2e-4 3e-4\n");
    }
    std::vector<std::string> told() {
        RunLog log;
        ::testing::internal::CaptureStderr();
        tell_parent_state(settings, {"000_0", "090_0"}, log);
        errors = ::testing::internal::GetCapturedStderr();
        return test::log_lines(log);
    }

    test::WorkingDirectory directory;
    CaseSettings settings;
    std::string errors;
};

TEST_F(ParentState, SaysNothingOfAConvergedParent) {
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(errors, "");
}

TEST_F(ParentState, NamesWhatIsMissingOrUnconverged) {
    std::filesystem::remove("restart-000_0-restart.info");
    directory.write("restart-090_0-restart.info", "150\n 1e-4 9e-4 2e-3 3e-4\n");
    EXPECT_THAT(told(),
                ElementsAre(" Warning: WD   0.0: the parent of this direction is missing.",
                            " Warning: WD  90.0: the parent of this direction is not converged."));
    EXPECT_THAT(errors, HasSubstr("Warning: WD  90.0: the parent"));
    // Residuals that nobody knows do not pass.
    directory.write("restart-090_0-restart.info", "150\n");
    EXPECT_EQ(told().size(), 2U);
}

TEST_F(ParentState, NamesWhatDiverged) {
    ViewTable table;
    table.open("view-wind_direction.dat", ViewTable::Existing::discard);
    table.append("  0.0 1");
    table.append(" 90.0 3");
    table.close();
    EXPECT_THAT(told(), ElementsAre(" Warning: WD  90.0: the parent of this direction diverged."));
    // A later row of the same direction replaces an earlier one.
    table.open("view-wind_direction.dat", ViewTable::Existing::keep);
    table.append(" 90.0 1");
    table.close();
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(ParentState, ParentAtWorkIsLeftAlone) {
    EXPECT_NO_THROW(require_idle_parent());
    ViewTable table;
    table.open("view-wind_direction.dat", ViewTable::Existing::keep);
    const auto stopped = test::stop_of([] { require_idle_parent(); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_EQ(stopped->reason(), "another run is using this directory");
    table.close();
    EXPECT_NO_THROW(require_idle_parent());
}

}  // namespace
}  // namespace torvex
