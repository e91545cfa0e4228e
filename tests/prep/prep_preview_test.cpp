#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "base/list_input.hpp"
#include "prep/prep_fixture.hpp"
#include "run/run_fixture.hpp"

namespace torvex {
namespace {

using test::lines_of;
using test::prep;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using PrepPreview = test::RunTest;

TEST_F(PrepPreview, WritesFourFilesAndLeavesARunAlone) {
    write_case({{"NML_SITE",
                 "N_SITE = 1, SITE(1)%LABEL = 'a', SITE(1)%LON = 139, 45, 3, "
                 "SITE(1)%LAT = 35, 30, 0"},
                {"NML_CASEFILE", "N_WIND_DIRECTION = 2"}});
    ASSERT_EQ(run().status, 0);
    auto before = test::files_below(directory.path());
    const auto shown = prep({"preview"});
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_THAT(shown.out, HasSubstr("   - Writing preview map and mesh data\n"));
    auto after = test::files_below(directory.path());
    for (const char* name : {"view-map.dat", "view-map-roughness.dat", "TERRAIN.GRD", "ROUGH.GRD",
                             "torvex-prep.log"}) {
        EXPECT_EQ(after.erase(name), 1U) << name;
    }
    EXPECT_EQ(after, before);
    EXPECT_THAT(directory.read("torvex-prep.log"), Not(HasSubstr("Default upwind")));
}

// North wind: x points south, y east. The study area of 400 m has its corners at 200 m, the site
// 3 seconds of longitude to the east.
TEST_F(PrepPreview, MarksStandInTheFrameOfTheFirstDirection) {
    write_case({{"NML_SITE",
                 "N_SITE = 1, SITE(1)%LABEL = 'a', SITE(1)%LON = 139, 45, 3, "
                 "SITE(1)%LAT = 35, 30, 0"}});
    ASSERT_EQ(prep({"preview"}).status, 0);
    const std::string text = directory.read("view-map.dat");
    const std::size_t begin = text.find("GEOMETRY T=LINE, CS=GRID\n");
    ASSERT_NE(begin, std::string::npos);
    const std::vector<std::string> lines = lines_of(text.substr(begin));
    const double corners[5][2] = {{200, -200}, {200, 200}, {-200, 200}, {-200, -200}, {200, -200}};
    for (std::size_t n = 0; n < 5; ++n) {
        double x = 0;
        double y = 0;
        ASSERT_TRUE(ListInput(lines[n + 1]).read(x, y));
        EXPECT_NEAR(x, corners[n][0], 0.01);
        EXPECT_NEAR(y, corners[n][1], 0.01);
    }
    EXPECT_EQ(lines[6], "##<<REFERENCE_CITE>>");
    EXPECT_EQ(lines[8], "##<<TORVEX_LINE_DATA_END>>");
    EXPECT_THAT(lines[9], HasSubstr("FC=GREEN"));
    EXPECT_THAT(lines[10], HasSubstr("FC=BLUE, x="));
    // 1512 m a minute of longitude at 35.5 degrees: 75.6 m.
    const std::string y = lines[10].substr(lines[10].find(", y=") + 4);
    EXPECT_NEAR(std::stod(y), 75.6, 0.1);
    EXPECT_EQ(lines.size(), 11U);
}

TEST_F(PrepPreview, EquivalentRoughnessAndEarlierRunsDoNotAct) {
    write_case({{"NML_ER", "USE_EQUIVALENT_ROUGHNESS = T, EQUIVALENT_ROUGHNESS = 360*0.7"},
                {"NML_RUN", "ATLAS_FLAG = 1"}});
    ASSERT_EQ(prep({"preview"}).status, 0);
    EXPECT_TRUE(directory.has("atlas-view-map.dat"));
    const std::vector<std::string> lines = lines_of(directory.read("view-map-roughness.dat"));
    for (std::size_t n = 2; n < lines.size(); ++n) {
        ASSERT_EQ(lines[n], "   0.03000");
    }
}

// Half-widths of 100 m: the child ends at the first planes of the parent beyond, which has cells of
// 40 m there, each divided into two. Two ghosts stand beside the cells.
TEST_F(PrepPreview, ANestedCaseShowsTheChild) {
    write_case({}, test::nest_block());
    const auto shown = prep({"preview"});
    ASSERT_EQ(shown.status, 0) << shown.err;
    ASSERT_TRUE(directory.has("nest-view-map.dat"));
    const std::vector<std::string> lines = lines_of(directory.read("nest-view-map.dat"));
    const auto zone = std::ranges::find(lines, "zone i=  14, j=  14, f=point");
    ASSERT_NE(zone, lines.end());
    EXPECT_NEAR(std::stod((zone + 1)->substr(0, 16)), -120, 1e-3);
    EXPECT_NEAR(std::stod((zone + 2)->substr(0, 16)), -110, 1e-3);
}

TEST_F(PrepPreview, FailuresHaveTheStatusOfARun) {
    EXPECT_EQ(prep({"preview"}).status, 1);  // no case
    write_case();
    EXPECT_EQ(prep({"preview", "now"}).status, 102);
    EXPECT_EQ(prep({"preview", "/f", "other.tin"}).status, 1);
    write_case({{"NML_RUN", "TORVEX_MODE = 1"}});
    EXPECT_THAT(prep({"preview"}).err, HasSubstr("TORVEX_MODE"));
    write_case({{"NML_CASEFILE", "BASIC_H_FILE = 'none.map'"}});
    EXPECT_EQ(prep({"preview"}).status, 111);
    EXPECT_FALSE(directory.has("view-map.dat"));
}

TEST_F(PrepPreview, TheUsageNamesTheEntries) {
    EXPECT_EQ(prep({}).status, 102);
    const auto unknown = prep({"view"});
    EXPECT_EQ(unknown.status, 102);
    EXPECT_THAT(unknown.err, AllOf(HasSubstr("maps"), HasSubstr("preview"), HasSubstr("export")));
    EXPECT_EQ(prep({"--help"}).status, 0);
}

}  // namespace
}  // namespace torvex
