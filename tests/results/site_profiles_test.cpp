#include "results/site_profiles.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "base/file_names.hpp"
#include "maps/local_metric.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/test_meshes.hpp"
#include "run/working_directory.hpp"
#include "solver/inflow_profile.hpp"
#include "support/case_text.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

namespace fs = std::filesystem;
using test::lines_of;
using test::stop_of;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string label_list(file_names::label_list);

constexpr double radian = 3.14159265358979 / 180;
constexpr Planes planes{9, 8, 5};

struct Point {
    double x, y, z;
};

// Cells of 100 m by 100 m by 10 m from (-400, -300, 0) on, sheared: a point (x, y, z) of the plain
// box lies at sheared(x, y, z). The first row, where y and z are 0 and nothing is sheared away but
// a constant, is the plain box, so that a site finds its plain x and y there.
Point sheared(double x, double y, double z) {
    const double from_first_row = y + 300;
    return {x + 0.3 * from_first_row, y + 2.0 * z, z + 0.4 * (x + 400)};
}

GridGeometry sheared_box() {
    GridGeometry grid = mapped_mesh(planes, [](double s, double t, double q) {
        const Point at = sheared(-400 + 800 * s, -300 + 700 * t, 40 * q);
        return Position{at.x, at.y, at.z};
    });
    XYZ2XYZC(grid);
    return grid;
}

// Levels of the cell centres above ground in the mesh above.
const std::vector<double> levels{0, 5, 15, 25, 35, 40};

struct Profile {
    std::vector<std::string> head;
    std::vector<std::array<double, 8>> rows;
};

Profile parse(const std::string& text) {
    Profile profile;
    const std::vector<std::string> lines = lines_of(text);
    for (std::size_t n = 0; n < lines.size(); ++n) {
        if (n < 2) {
            profile.head.push_back(lines[n]);
            continue;
        }
        EXPECT_EQ(lines[n].size(), 8U * 16U) << lines[n];
        std::istringstream in(lines[n]);
        for (double& value : profile.rows.emplace_back()) {
            EXPECT_TRUE(in >> value) << lines[n];
        }
    }
    return profile;
}

class SiteProfiles : public testing::Test {
 protected:
    SiteProfiles() {
        settings.cent_lon_min = 139 * 60 + 45;
        settings.cent_lat_min = 35 * 60 + 30;
        use(sheared_box());
    }

    void use(GridGeometry mesh) {
        grid = std::move(mesh);
        flow = {};
        allocate_fields(flow, grid, 1);
    }
    // A field given by the place of the cell centres.
    void fill(Field3& q, const std::function<double(Point)>& value) const {
        for (int k = 1; k <= grid.nk; ++k) {
            for (int j = 1; j <= grid.nj; ++j) {
                for (int i = 1; i <= grid.ni; ++i) {
                    q(i, j, k) = static_cast<float>(value(centre(i, j, k)));
                }
            }
        }
    }
    Point centre(int i, int j, int k) const {
        return {static_cast<double>(grid.xc(i, j, k)), static_cast<double>(grid.yc(i, j, k)),
                static_cast<double>(grid.zc(i, j, k))};
    }
    // A site so many metres east and north of the centre.
    void add_site(const std::string& label, double east, double north) {
        const MetresPerMinute metres = metres_per_minute(settings.cent_lat_min, settings.GS);
        Site& site = settings.SITE.at(static_cast<std::size_t>(settings.N_SITE++));
        site.LABEL = label;
        site.LON = {139.0F, 45.0F, static_cast<float>(60 * east / static_cast<double>(metres.lon))};
        site.LAT = {35.0F, 30.0F, static_cast<float>(60 * north / static_cast<double>(metres.lat))};
    }
    void write() { write_site_profiles({settings, grid, flow, angle, stem}, log); }

    std::vector<std::string> list() const { return lines_of(directory.read(label_list)); }
    std::vector<std::string> told() const { return lines_of(test::without_dates(log.kept())); }
    Profile profile(const std::string& name) const { return parse(directory.read(stem + name)); }
    std::vector<std::string> profile_names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(directory.path())) {
            if (entry.path().extension() == ".tpd") {
                names.push_back(entry.path().filename().string());
            }
        }
        std::ranges::sort(names);
        return names;
    }

    test::WorkingDirectory directory;
    CaseSettings settings;
    GridGeometry grid;
    FlowState flow;
    float angle = 270.0F;  // x to the east, y to the north
    std::string stem = "sites-270_0-";
    RunLog log;
};

constexpr const char* centre_name = "T353000_0000-1394500_0000.tpd";
constexpr const char* inflow_name = "_INFLOW_PROFILE.tpd";
const std::string outside_end = "] : (Warning) Site Position is out of computational domain.";

TEST_F(SiteProfiles, LinearFieldsAreExactAtTheSiteOnAShearedMesh) {
    const std::array<std::function<double(Point)>, 6> fields{
        [](Point r) { return 5 + 0.02 * r.x - 0.01 * r.y + 0.1 * r.z; },
        [](Point r) { return -3 + 0.004 * r.x; },
        [](Point r) { return 0.006 * r.y; },
        [](Point r) { return -40 + 0.3 * r.z; },
        [](Point r) { return 2 + 0.001 * r.x + 0.002 * r.y; },
        [](Point r) { return 7 - 0.003 * r.y + 0.005 * r.z; }};
    const std::array<Field3*, 6> arrays{&flow.u, &flow.v, &flow.w, &flow.p, &flow.tke, &flow.ted};
    for (std::size_t n = 0; n < arrays.size(); ++n) {
        fill(*arrays[n], fields[n]);
    }
    struct Case {
        float angle;
        double x, y;  // in the frame of the mesh
    };
    for (const Case& c :
         {Case{270, 130, -70}, Case{270, -390, -290}, Case{210, 333, 210}, Case{90, 12, 399}}) {
        settings.N_SITE = 0;
        angle = c.angle;
        // x points to where the wind blows, y to the left of it
        const double to = (static_cast<double>(c.angle) + 180) * radian;
        add_site("mast", c.x * std::sin(to) - c.y * std::cos(to),
                 c.x * std::cos(to) + c.y * std::sin(to));
        write();
        ASSERT_EQ(list().size(), 1U);
        const Profile found = profile(list()[0].substr(13) + ".tpd");
        ASSERT_EQ(found.rows.size(), levels.size());
        for (std::size_t k = 0; k < levels.size(); ++k) {
            const Point at = sheared(c.x, c.y, levels[k]);
            EXPECT_NEAR(found.rows[k][0], levels[k], 1e-3);
            for (std::size_t n = 0; n < fields.size(); ++n) {
                EXPECT_NEAR(found.rows[k].at(n + 1), fields[n](at), 1e-3) << n << ' ' << k;
            }
            EXPECT_NEAR(found.rows[k][7], at.z, 1e-3);
        }
    }
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(SiteProfiles, LayoutOfAProfileFile) {
    use(uniform_mesh({3, 3, 3}, 100, 100, 20));
    XYZ2XYZC(grid);
    flow.u.fill(12.5F);
    flow.v.fill(-0.25F);
    flow.w.fill(0.0625F);
    flow.p.fill(-1000.0F);
    flow.tke.fill(0.5F);
    flow.ted.fill(0.0009765625F);
    add_site("a", 0, 0);
    write();
    const std::string values =
        "  0.12500000E+02 -0.25000000E+00  0.62500000E-01 -0.10000000E+04  0.50000000E+00"
        "  0.97656250E-03";
    // cell centres at 10 m and 30 m between the boundary faces at 0 and 40 m
    EXPECT_EQ(directory.read(stem + centre_name),
              "           4\n z_agl u v w p tke ted z_asl\n"
              "  0.00000000E+00" +
                  values +
                  "  0.00000000E+00\n"
                  "  0.10000000E+02" +
                  values +
                  "  0.10000000E+02\n"
                  "  0.30000000E+02" +
                  values +
                  "  0.30000000E+02\n"
                  "  0.40000000E+02" +
                  values + "  0.40000000E+02\n");
}

TEST_F(SiteProfiles, InflowProfileIsTheColumnOfTheFirstCorner) {
    // Whatever stands beside the column is not looked at.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    int n = 0;
    for (Field3* q : {&flow.u, &flow.v, &flow.w, &flow.p, &flow.tke, &flow.ted}) {
        q->fill(nan);
        ++n;
        for (int k = 1; k <= grid.nk; ++k) {
            (*q)(1, 1, k) = static_cast<float>(10 * n + k);
        }
    }
    for (int k = 1; k <= grid.nk; ++k) {
        grid.zc(1, 1, k) = static_cast<float>(250 + k * k);
    }
    write();
    EXPECT_THAT(profile_names(), ElementsAre("sites-270_0-_INFLOW_PROFILE.tpd"));
    const Profile found = profile(inflow_name);
    EXPECT_THAT(found.head, ElementsAre("           6", " z_agl u v w p tke ted z_asl"));
    ASSERT_EQ(found.rows.size(), 6U);
    for (int k = 1; k <= 6; ++k) {
        EXPECT_THAT(
            found.rows[static_cast<std::size_t>(k - 1)],
            ElementsAre(k * k - 1, 10 + k, 20 + k, 30 + k, 40 + k, 50 + k, 60 + k, 250 + k * k));
    }
}

TEST_F(SiteProfiles, NestedRunHasNoInflowProfile) {
    settings.nest.nest_mode = 1;
    stem = "nest-" + stem;
    add_site("a", 0, 0);
    write();
    EXPECT_THAT(profile_names(), ElementsAre(stem + centre_name));
    EXPECT_EQ(list().size(), 1U) << "the list has no prefix";
}

TEST_F(SiteProfiles, WithoutSitesTheListIsEmptyAndTheInflowIsWritten) {
    directory.write(label_list, "of an earlier output\n");
    write();
    EXPECT_EQ(directory.read(label_list), "");
    EXPECT_THAT(profile_names(), ElementsAre(stem + inflow_name));
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(SiteProfiles, SiteOutsideHasAWarningAndNothingElse) {
    angle = 22.5F;
    add_site("  mast 1 ", 0, 0);
    add_site("far away", 5000, 0);
    add_site("", 0, -5000);
    add_site("mast 4", 0, 0);
    write();
    EXPECT_THAT(list(), ElementsAre("    1, mast 1, T353000_0000-1394500_0000",
                                    "    4, mast 4, T353000_0000-1394500_0000"));
    EXPECT_THAT(told(), ElementsAre("<date> WD  22.5- Site [far away" + outside_end,
                                    "<date> WD  22.5- Site [" + outside_end));
    EXPECT_THAT(profile_names(), ElementsAre(stem + centre_name, stem + inflow_name));
}

TEST_F(SiteProfiles, EveryOutputRewritesTheList) {
    add_site("first", 0, 0);
    add_site("second", 100, 0);
    write();
    EXPECT_EQ(list().size(), 2U);
    settings.N_SITE = 1;
    write();
    EXPECT_THAT(list(), ElementsAre("    1, first, T353000_0000-1394500_0000"));
}

TEST_F(SiteProfiles, TwoSitesInOnePlaceShareTheirFile) {
    add_site("mast", 0, 0);
    add_site("its shadow", 0, 0);
    write();
    EXPECT_THAT(list(), ElementsAre("    1, mast, T353000_0000-1394500_0000",
                                    "    2, its shadow, T353000_0000-1394500_0000"));
    EXPECT_THAT(profile_names(), ElementsAre(stem + centre_name, stem + inflow_name));
}

TEST_F(SiteProfiles, LetterOfTheDatumStaysForAllSites) {
    settings.GS = 2;
    add_site("a", 0, 0);
    add_site("b", 0, 0);
    write();
    EXPECT_THAT(list(), ElementsAre("    1, a, J353000_0000-1394500_0000",
                                    "    2, b, J353000_0000-1394500_0000"));
    EXPECT_TRUE(directory.has(stem + "J353000_0000-1394500_0000.tpd"));
}

// A box whose last boundary lines stand exactly on the centre of the case, where a site has the
// offset 0 without rounding.
GridGeometry box_ending_at_the_centre(double beyond_x, double beyond_y) {
    GridGeometry grid = mapped_mesh({3, 3, 3}, [=](double s, double t, double q) {
        return Position{-200 + 200 * s + beyond_x, -200 + 200 * t + beyond_y, 40 * q};
    });
    XYZ2XYZC(grid);
    return grid;
}

TEST_F(SiteProfiles, SiteOnTheLastLinesIsInside) {
    use(box_ending_at_the_centre(0, 0));
    for (int k = 1; k <= grid.nk; ++k) {
        flow.u(4, 4, k) = 9.0F;  // the corner column alone has wind
    }
    add_site("corner", 0, 0);
    write();
    EXPECT_THAT(told(), IsEmpty());
    for (const auto& row : profile(centre_name).rows) {
        EXPECT_EQ(row[1], 9.0);
    }
}

TEST_F(SiteProfiles, SiteBeyondAnyOfTheFourBordersIsOutside) {
    add_site("corner", 0, 0);
    int n = 0;
    for (const auto& [x, y] : {std::pair{-0.01, 0.0}, {0.0, -0.01}, {200.01, 0.0}, {0.0, 200.01}}) {
        use(box_ending_at_the_centre(x, y));
        write();
        EXPECT_EQ(told().size(), static_cast<std::size_t>(++n)) << x << ' ' << y;
        EXPECT_THAT(list(), IsEmpty());
    }
    use(box_ending_at_the_centre(200, 200));
    write();
    EXPECT_EQ(list().size(), 1U) << "the first lines are inside";
}

TEST_F(SiteProfiles, LinesThatDoNotRiseCountAsOutside) {
    add_site("mast", 0, 0);
    grid.xc(9, 1, 1) = grid.xc(8, 1, 1);  // far from the site
    write();
    EXPECT_THAT(told(), ElementsAre("<date> WD 270.0- Site [mast" + outside_end));
    use(sheared_box());
    grid.yc(1, 7, 1) = grid.yc(1, 6, 1) - 1;
    write();
    EXPECT_EQ(told().size(), 2U);
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_THAT(profile_names(), ElementsAre(stem + inflow_name));
}

TEST_F(SiteProfiles, ProfileThatCannotBeWrittenEndsTheRun) {
    directory.write(label_list, "of an earlier output\n");
    add_site("mast", 0, 0);
    fs::create_directory(stem + centre_name);
    const auto stopped = stop_of([this] { write(); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_EQ(stopped->where(), stem + centre_name);
    EXPECT_THAT(stopped->reason(), HasSubstr("Is a directory"));
    EXPECT_THAT(list(), ElementsAre("of an earlier output"));
}

TEST_F(SiteProfiles, InflowProfileThatCannotBeWrittenEndsTheRun) {
    stem = "no/such/place-";
    const auto stopped = stop_of([this] { write(); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_EQ(stopped->where(), stem + inflow_name);
}

TEST_F(SiteProfiles, ListThatCannotBeWrittenIsToldAndLetGo) {
    fs::create_directory(label_list);
    add_site("mast", 0, 0);
    write();
    EXPECT_THAT(profile_names(), ElementsAre(stem + centre_name, stem + inflow_name));
    ASSERT_EQ(told().size(), 1U);
    EXPECT_THAT(told()[0],
                testing::StartsWith("<date> WD 270.0: (Warning) _latlon_label_list.txt: "));
    EXPECT_THAT(told()[0], HasSubstr("Is a directory"));
}

TEST_F(SiteProfiles, ProfileServesAsTheInflowOfAnotherCase) {
    fill(flow.u, [](Point r) { return 4 + 0.1 * r.z; });
    flow.tke.fill(1.5F);
    add_site("mast", -400, 0);  // where the ground is at height 0
    write();
    settings.INFLOW_PROFILE_FILE = stem + list()[0].substr(13) + ".tpd";
    settings.INFLOW_PROFILE_TABLE = false;
    const InflowProfile inflow = read_inflow_profile(settings);
    ASSERT_EQ(inflow.height.size(), levels.size());
    for (std::size_t k = 0; k < levels.size(); ++k) {
        EXPECT_NEAR(inflow.height[k], levels[k], 1e-3);
        EXPECT_NEAR(inflow.u[k], 4 + 0.1 * levels[k], 1e-3);
        EXPECT_EQ(inflow.tke[k], 1.5F);
    }
}

}  // namespace
}  // namespace torvex
