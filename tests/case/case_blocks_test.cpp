// The three keyed blocks of a run: absent ones switch nothing on, required keys are required, bad
// values end the run by block and key.

#include "case/case_blocks.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case/case_keys.hpp"
#include "support/case_text.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::stop_of;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct Blocks {
    explicit Blocks(const std::string& text) : file{"case.tin", text} { set_defaults(settings); }

    void nest() { read_nest_points(file, settings, log); }
    void canopy() { read_canopy_parameters(file, settings); }
    // Returns what the console was told.
    std::string shape() {
        ::testing::internal::CaptureStdout();
        try {
            read_shape_parameters(file, settings);
        } catch (...) {
            shown = ::testing::internal::GetCapturedStdout();
            throw;
        }
        shown = ::testing::internal::GetCapturedStdout();
        return shown;
    }

    CaseText file;
    CaseSettings settings;
    RunLog log;
    std::string shown;
};

std::string block(const std::string& name, const std::string& lines) {
    return "&" + name + "\n" + lines + "\n/\n";
}

std::string without_line(std::string text, const std::string& start) {
    const std::size_t at = text.find("\n" + start);
    EXPECT_NE(at, std::string::npos) << start;
    return text.erase(at, text.find('\n', at + 1) - at);
}

// Absent blocks

TEST(CaseBlocks, AbsentOnesLeaveEverythingOffSilently) {
    Blocks b(test::case_text());
    b.nest();
    b.canopy();
    EXPECT_EQ(b.shape(), "");
    EXPECT_EQ(b.log.kept(), "");
    EXPECT_EQ(b.settings.nest.nest_mode, 0);
    EXPECT_EQ(b.settings.canopy.canopy_mode, 0);
    EXPECT_FALSE(b.settings.shape.calc_fa);
}

// nest_points

TEST(NestPoints, AreReadInFull) {
    Blocks b(block("nest_points",
                   "nest_mode = 2\nnest_site%label = 'the child'\nnest_site%lon = 139, 45, 1.5\n"
                   "nest_site%lat = -35, -30, -2.5\nnest_site%n_x_div = 3\nnest_site%n_y_div = 4\n"
                   "nest_site%c2xmax = 250\nnest_site%c2ymax = 150.5\nnest_bc_distr = 2\n"
                   "nest_bc_ofix = F"));
    b.nest();
    const NestPoints& nest = b.settings.nest;
    EXPECT_EQ(nest.nest_mode, 2);
    EXPECT_EQ(nest.label, "the child");
    EXPECT_EQ(nest.lon, (Triple{139.0F, 45.0F, 1.5F}));
    EXPECT_EQ(nest.lat, (Triple{-35.0F, -30.0F, -2.5F}));
    EXPECT_EQ(nest.n_x_div, 3);
    EXPECT_EQ(nest.n_y_div, 4);
    EXPECT_EQ(nest.c2xmax, 250.0F);
    EXPECT_EQ(nest.c2ymax, 150.5F);
    EXPECT_EQ(nest.nest_bc_distr, 2);
    EXPECT_FALSE(nest.nest_bc_ofix);
}

TEST(NestPoints, LogTellsFileAndValues) {
    Blocks b(test::nest_block());
    b.nest();
    const std::vector<std::string> lines = test::lines_of(b.log.kept());
    ASSERT_EQ(lines.size(), 11U);
    EXPECT_EQ(lines[0], "OPEN: case.tin");
    EXPECT_EQ(lines[1], "READING.../");
    EXPECT_EQ(lines[2], "DONE.");
    EXPECT_EQ(lines[3], "CLOSE: case.tin");
    EXPECT_EQ(lines[4], "site name: child");
    EXPECT_TRUE(lines[5].starts_with("logitude:"));
    EXPECT_TRUE(lines[6].starts_with("latitude:"));
    EXPECT_TRUE(lines[7].starts_with("n_x_div:"));
    EXPECT_TRUE(lines[8].starts_with("n_y_div:"));
    EXPECT_TRUE(lines[9].starts_with("c2xmax"));
    EXPECT_TRUE(lines[10].starts_with("c2ymax"));
    EXPECT_THAT(lines[5], HasSubstr("139."));
    EXPECT_THAT(lines[6], HasSubstr("35."));
    EXPECT_TRUE(lines[7].ends_with(" 2"));
    EXPECT_THAT(lines[9], HasSubstr("100."));
}

TEST(NestPoints, ModeZeroNeedsNothingElse) {
    Blocks b(block("nest_points", "nest_mode = 0\nnest_site%lon = x"));
    b.nest();
    EXPECT_EQ(b.settings.nest.nest_mode, 0);
    EXPECT_EQ(b.log.kept(), "");
    Blocks none(block("nest_points", "nest_site%c2xmax = 5"));
    none.nest();
    EXPECT_EQ(none.settings.nest.nest_mode, 0);
}

TEST(NestPoints, MissingKeyStops185) {
    for (const char* key :
         {"nest_site%label", "nest_site%lon", "nest_site%lat", "nest_site%n_x_div",
          "nest_site%n_y_div", "nest_site%c2xmax", "nest_site%c2ymax"}) {
        Blocks b(without_line(test::nest_block(), key));
        const auto stopped = stop_of([&] { b.nest(); });
        ASSERT_TRUE(stopped) << key;
        EXPECT_EQ(stopped->code(), 185) << key;
        EXPECT_THAT(stopped->what(), HasSubstr("stop 185: block &nest_points: key " +
                                               std::string(key) + " is missing"));
        EXPECT_THAT(stopped->what(), HasSubstr("in case.tin"));
    }
}

TEST(NestPoints, CaseFileThatIsGoneStops100) {
    Blocks b(test::nest_block());
    b.file.available = false;
    const auto stopped = stop_of([&] { b.nest(); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 100);
}

TEST(NestPoints, BoundaryKeysMayBeMissing) {
    Blocks b(test::nest_block());  // has neither of them
    b.nest();
    EXPECT_EQ(b.settings.nest.nest_bc_distr, 1);
    EXPECT_TRUE(b.settings.nest.nest_bc_ofix);
}

TEST(NestPoints, UnreadableValueNamesBlockKeyAndLine) {
    for (const char* key : {"nest_bc_distr", "nest_bc_ofix"}) {
        const std::string text = block(
            "nest_points", std::string(key) + " = ?\n" +
                               test::nest_block().substr(std::string("&nest_points\n").size()));
        Blocks b(text);
        const auto stopped = stop_of([&] { b.nest(); });
        ASSERT_TRUE(stopped) << key;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("block &nest_points: key " + std::string(key)));
        EXPECT_THAT(stopped->what(), HasSubstr("in case.tin, line 2"));
    }
}

// canopy_parameters

TEST(CanopyParameters, EveryKeyIsRead) {
    Blocks b(block("canopy_parameters",
                   "canopy_mode = 1\nstart_cal_src = 7\nsrc_included_model = T\n"
                   "use_vegetation_layer = T\npm_tiny = 0.5\ncfp1 = 1.5\ncfp2 = 2.5\n"
                   "magick = 3.5\nbeta_p = 4.5\nbeta_d = 5.5\nalphak1 = 6.5\nalphak2 = 7.5\n"
                   "cpe1 = 8.5\ncpe2 = 9.5\nalphae1 = 10.5\nalphae2 = 11.5\nalphae3 = 12.5\n"
                   "alphae4 = 13.5\nr1max = 14.5\nr2max = 15.5\nwt_floor_mode = T\n"
                   "wt_floor_z0 = 16.5\nwt_floor_ttr = 17.5\nmodify_terrain = T\n"
                   "modify_circle_range = 18.5\nuse_z0_judge = T\nuse_ff_judge = T\n"
                   "output_log_shape_height = 8"));
    b.canopy();
    const CanopyParameters& c = b.settings.canopy;
    EXPECT_EQ(c.canopy_mode, 1);
    EXPECT_EQ(c.start_cal_src, 7);
    EXPECT_TRUE(c.src_included_model && c.use_vegetation_layer && c.wt_floor_mode);
    EXPECT_TRUE(c.modify_terrain && c.use_z0_judge && c.use_ff_judge);
    EXPECT_EQ(c.output_log_shape_height, 8);
    EXPECT_THAT((std::vector<float>{c.pm_tiny, c.cfp1, c.cfp2, c.magick, c.beta_p, c.beta_d,
                                    c.alphak1, c.alphak2, c.cpe1, c.cpe2, c.alphae1, c.alphae2,
                                    c.alphae3, c.alphae4, c.r1max, c.r2max, c.wt_floor_z0,
                                    c.wt_floor_ttr, c.modify_circle_range}),
                ElementsAre(0.5F, 1.5F, 2.5F, 3.5F, 4.5F, 5.5F, 6.5F, 7.5F, 8.5F, 9.5F, 10.5F,
                            11.5F, 12.5F, 13.5F, 14.5F, 15.5F, 16.5F, 17.5F, 18.5F));
}

TEST(CanopyParameters, ModeIsZeroOrOne) {
    for (const char* mode : {"0", "1"}) {
        Blocks b(block("canopy_parameters", "canopy_mode = " + std::string(mode)));
        EXPECT_FALSE(stop_of([&] { b.canopy(); }));
    }
    for (const char* mode : {"2", "-1"}) {
        Blocks b(block("canopy_parameters", "canopy_mode = " + std::string(mode)));
        const auto stopped = stop_of([&] { b.canopy(); });
        ASSERT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("block &canopy_parameters: canopy_mode is " +
                                               std::string(mode) + ", expected 0 or 1"));
    }
}

TEST(CanopyParameters, CircleNeedsARadiusWhateverTheMode) {
    for (const char* mode : {"0", "1"}) {
        for (const char* range : {"", "modify_circle_range = 0", "modify_circle_range = -5"}) {
            Blocks b(block("canopy_parameters", "canopy_mode = " + std::string(mode) +
                                                    "\nmodify_terrain = T\n" + range));
            const auto stopped = stop_of([&] { b.canopy(); });
            ASSERT_TRUE(stopped) << mode << range;
            EXPECT_EQ(stopped->code(), 1);
            EXPECT_THAT(stopped->what(), HasSubstr("modify_circle_range is not above 0"));
        }
    }
    Blocks off(block("canopy_parameters", "modify_terrain = F\nmodify_circle_range = -5"));
    EXPECT_FALSE(stop_of([&] { off.canopy(); }));
}

TEST(CanopyParameters, UnreadableValueNamesBlockAndKey) {
    Blocks b(block("canopy_parameters", "canopy_mode = 0\nbeta_d = much"));
    const auto stopped = stop_of([&] { b.canopy(); });
    ASSERT_TRUE(stopped);
    EXPECT_STREQ(stopped->what(),
                 "block &canopy_parameters: key beta_d: cannot read \"much\", expected a real "
                 "number\n  in case.tin, line 3");
}

// user_domain

const char* const user_lines =
    "mesh_n_file = counts.txt\nxyz_file = 'my mesh/xyz.tuf'\nroughness_file = ../z0.tuf ! ours\n"
    "ccd_file = ccd.tuf\ninlet = 1\ninflow_profile_file = \"in flow.txt\"\n"
    "specify_turbulence = .true.";

TEST(UserDomain, IsReadInFull) {
    Blocks b(block("user_domain", user_lines));
    b.settings.TORVEX_MODE = -1;
    read_user_domain(b.file, b.settings);
    const UserDomain& user = b.settings.user;
    EXPECT_EQ(user.mesh_n_file, "counts.txt");
    EXPECT_EQ(user.xyz_file, "my mesh/xyz.tuf");
    EXPECT_EQ(user.roughness_file, "../z0.tuf");
    EXPECT_EQ(user.ccd_file, "ccd.tuf");
    EXPECT_EQ(user.inlet, 1);
    EXPECT_EQ(user.inflow_profile_file, "in flow.txt");
    EXPECT_TRUE(user.specify_turbulence);
}

TEST(UserDomain, IsReadWithItsModeOnly) {
    Blocks b(block("user_domain", std::string(user_lines) + "\nnoise") +
             "&user_domain\ninlet=x\n/");
    read_user_domain(b.file, b.settings);
    EXPECT_EQ(b.settings.user.xyz_file, "");
    EXPECT_EQ(b.settings.user.inlet, 0);
}

TEST(UserDomain, HasDefaultsForWhatIsNotThere) {
    for (const char* lines : {"", "ccd_file =", "ccd_file = ''\ninlet ="}) {
        Blocks b(block("user_domain", lines));
        b.settings.TORVEX_MODE = 1;
        if (std::string(lines).ends_with("inlet =")) {
            EXPECT_TRUE(stop_of([&] { read_user_domain(b.file, b.settings); })) << "no value";
            continue;
        }
        read_user_domain(b.file, b.settings);
        EXPECT_EQ(b.settings.user.ccd_file, "");
        EXPECT_EQ(b.settings.user.inlet, 0);
        EXPECT_FALSE(b.settings.user.specify_turbulence);
    }
}

TEST(UserDomain, UnreadableValueNamesBlockKeyAndLine) {
    Blocks b(block("user_domain", "mesh_n_file = n.txt\ninlet = two"));
    b.settings.TORVEX_MODE = 1;
    const auto stopped = stop_of([&] { read_user_domain(b.file, b.settings); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_STREQ(stopped->what(),
                 "block &user_domain: key inlet: cannot read \"two\", expected an integer\n"
                 "  in case.tin, line 3");
}

// shp_parameters

TEST(ShapeParameters, AreReadWithoutFrontalAreas) {
    Blocks b(block("shp_parameters",
                   "shp_def_cs = 9\nshp_or_radius = 12.5\ntrdb2shp_fn = shapes/town.shp\n"
                   "fa_ndir = none of this\nfa_read_dirs = is\nfa_dirs = read\n"
                   "exclude_donut_shape = T"));
    EXPECT_EQ(b.shape(), "");
    EXPECT_EQ(b.settings.shape.shp_def_cs, 9);
    EXPECT_EQ(b.settings.shape.shp_or_radius, 12.5F);
    EXPECT_EQ(b.settings.shape.trdb2shp_fn, "shapes/town.shp");
    EXPECT_TRUE(b.settings.shape.exclude_donut_shape);
    EXPECT_EQ(b.settings.shape.fa_ndir, 0);
}

TEST(ShapeParameters, FrontalDirectionsAreDerivedAndListed) {
    Blocks b(block("shp_parameters", "calc_fa = T\nfa_ndir = 4\nfa_dirs = unread"));
    const std::string shown = b.shape();
    EXPECT_THAT(b.settings.shape.fa_dirs, ElementsAre(0.0F, 90.0F, 180.0F, 270.0F));
    EXPECT_TRUE(shown.starts_with(" frontalarea ndir:dir(1)="));
    EXPECT_THAT(shown, HasSubstr(", dir(2)="));
    EXPECT_THAT(shown, HasSubstr(", dir(4)="));
    EXPECT_THAT(shown, HasSubstr("270."));
    EXPECT_EQ(shown.find("dir(5)"), std::string::npos);
    EXPECT_EQ(test::lines_of(shown).size(), 1U);
}

TEST(ShapeParameters, FrontalDirectionsAreReadWhereAsked) {
    Blocks b(block("shp_parameters",
                   "calc_fa = T\nfa_ndir = 3\nfa_read_dirs = T\nfa_dirs = 10, 2*20.5"));
    EXPECT_THAT(b.shape(), HasSubstr("20.5"));
    EXPECT_THAT(b.settings.shape.fa_dirs, ElementsAre(10.0F, 20.5F, 20.5F));
}

TEST(ShapeParameters, NumberOfDirectionsBelowOneIsRefusedByItsText) {
    for (const char* count : {"", "fa_ndir = 0", "fa_ndir = -3"}) {
        Blocks b(block("shp_parameters", "calc_fa = T\n" + std::string(count)));
        const auto stopped = stop_of([&] { b.shape(); });
        ASSERT_TRUE(stopped) << count;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_EQ(stopped->reason(), "ERROR at reading nm shp_paramters misc.");
        EXPECT_EQ(b.shown, "ERROR at reading nm shp_paramters misc.\n");
    }
}

TEST(ShapeParameters, DirectionsMustBeAsManyAsTold) {
    for (const char* dirs : {"", "fa_dirs = 1, 2", "fa_dirs = 1, 2, 3, 4"}) {
        Blocks b(block("shp_parameters",
                       "calc_fa = T\nfa_ndir = 3\nfa_read_dirs = T\n" + std::string(dirs)));
        const auto stopped = stop_of([&] { b.shape(); });
        ASSERT_TRUE(stopped) << dirs;
        EXPECT_THAT(stopped->what(), HasSubstr("expected fa_ndir = 3"));
    }
}

TEST(ShapeParameters, HugeCountsAllocateNothing) {
    Blocks derived(block("shp_parameters", "calc_fa = T\nfa_ndir = 2147483647"));
    EXPECT_TRUE(stop_of([&] { derived.shape(); }));
    Blocks listed(block("shp_parameters",
                        "calc_fa = T\nfa_ndir = 2147483647\nfa_read_dirs = T\nfa_dirs = "
                        "2147483647*1"));
    EXPECT_TRUE(stop_of([&] { listed.shape(); }));
    EXPECT_THAT(derived.shown, IsEmpty());
}

}  // namespace
}  // namespace torvex
