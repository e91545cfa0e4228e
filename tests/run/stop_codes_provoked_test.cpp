// Walks the table of stop codes: every row has a case here that ends in it.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <utility>

#include "base/stop.hpp"
#include "canopy/canopy_file.hpp"
#include "canopy/shape/read_shape_file.hpp"
#include "case/case_blocks.hpp"
#include "maps/hgf_header.hpp"
#include "maps/plane_rectangular.hpp"
#include "nest/dstr_momen.hpp"
#include "nest/nest_case.hpp"
#include "results/result_files.hpp"
#include "roughness/canopy_conv_table.hpp"
#include "run/run_fixture.hpp"
#include "support/failures.hpp"
#include "support/file_descriptors.hpp"

namespace torvex::test {
namespace {

using Row = std::pair<int, std::string>;  // code and subject

// How something ended: the exit status and what standard error was told.
struct Ending {
    int code = -1;
    std::string message;
};

// A directory with a good case of one direction, and the means to spoil it.
class Spoiled {
 public:
    Spoiled() {
        directory.write("h.map", level_map("10"));
        directory.write("z0.map", level_map("0.03"));
    }

    Ending with(const CaseItems& items, const std::string& behind = {}) const {
        CaseItems all{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};
        all.insert(all.end(), items.begin(), items.end());
        directory.write("torvex.tin", quick_case_text(all, behind));
        return run({});
    }
    Ending run(const std::vector<std::string>& arguments) const {
        const ProgramRun ran = run_torvex_program(arguments, directory.path());
        EXPECT_EQ(ran.signal, 0) << ran.err;
        return {ran.status, ran.err};
    }
    // With a map of a given text in one of the four places.
    Ending with_map(const std::string& key, const std::string& text) const {
        directory.write("spoiled.map", text);
        return with({{"NML_CASEFILE", key + " = 'spoiled.map'"}});
    }
    // A resume of the direction, its mesh file spoiled in between.
    Ending resumed(const std::function<void()>& spoil) const {
        EXPECT_EQ(with({}).code, 0);
        directory.write("restart-000_0-restart.info", "0\n 1.0 1.0 1.0 1.0\n");
        spoil();
        return with({{"NML_RUN", "RESTART_FLAG = 1"}});
    }
    // The same inside the test's process, with a solve given.
    Ending solved(const Solve& solve) const {
        directory.write("torvex.tin", quick_case_text({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}}));
        const RunHere ran = run_here({}, solve);
        return {ran.status, ran.err};
    }

    WorkingDirectory directory;
};

template <class Call>
Ending ending_of(Call call) {
    ::testing::internal::CaptureStdout();
    const auto stopped = stop_of(call);
    ::testing::internal::GetCapturedStdout();
    return stopped ? Ending{stopped->code(), stopped->what()} : Ending{};
}

using Case = std::function<Ending(const Spoiled&)>;
using Cases = std::map<Row, Case>;

Cases cases_of_maps() {
    Cases cases;
    struct Place {
        int first;
        const char* subject;
        const char* key;
    };
    for (const Place& place : {Place{110, "basic terrain map", "BASIC_H_FILE"},
                               {120, "detailed terrain map", "DETAILED_H_FILE"},
                               {130, "basic roughness map", "BASIC_Z0_FILE"},
                               {140, "detailed roughness map", "DETAILED_Z0_FILE"}}) {
        const std::string key = place.key;
        cases[{place.first + 1, place.subject}] = [key](const Spoiled& s) {
            return s.with({{"NML_CASEFILE", key + " = 'none.map'"}});
        };
        cases[{place.first + 2, place.subject}] = [key](const Spoiled& s) {
            return s.with_map(key, "<TORVEX_MAP lon-lat>\nn_lon = 5\n--DATA--\n");
        };
        cases[{place.first + 3, place.subject}] = [key](const Spoiled& s) {
            return s.with_map(key, "no map\n");
        };
        if (key.find("Z0") != std::string::npos) {
            cases[{place.first + 4, place.subject}] = [key](const Spoiled& s) {
                return s.with_map(key, level_map("0"));
            };
        }
    }
    return cases;
}

Cases cases_of_mesh() {
    const std::string coarse = "MIN_DXY = 100, MAX_DXY = 200";
    return {
        {{151, "domain"},
         [](const Spoiled& s) {
             return s.with({{"NML_CASEFILE", "CENT_LON = 139, 25, 1"}});
         }},
        {{152, "mesh"},
         [](const Spoiled& s) {
             return s.with({{"NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = 5000"}});
         }},
        {{153, "side buffer zone"},
         [coarse](const Spoiled& s) {
             return s.with({{"NML_CASEFILE", coarse}});
         }},
        {{154, "upwind buffer zone"},
         [](const Spoiled& s) {
             return s.with({{"NML_BOUNDARY_TREATMENT", "UP_BR = 0.001, BZ_LIMIT = 1"}});
         }},
        {{155, "downwind buffer zone"},
         [](const Spoiled& s) {
             return s.with({{"NML_BOUNDARY_TREATMENT", "DOWN_BR = 0.001, BZ_LIMIT = 1"}});
         }},
        {{156, "domain"},
         [](const Spoiled& s) {
             return s.with({{"NML_CASEFILE", "MIN_DXY = 51"}});
         }},
        {{157, "domain"},
         [](const Spoiled& s) {
             return s.with({{"NML_CASEFILE", "MESH_HRATIO = 0.99"}});
         }},
        {{1, "domain"},
         [](const Spoiled& s) {
             return s.with({{"NML_CASEFILE", "MIN_DXY = 0.001, MAX_DXY = 0.001"}});
         }},
        {{1, "mesh-line file"},
         [](const Spoiled& s) {
             s.directory.write("lines.txt", "no lines\n");
             return s.with({{"NML_CASEFILE", "XYCONF = 'lines.txt'"}});
         }},
    };
}

Cases cases_of_the_case_file() {
    return {
        {{1, "case file"},
         [](const Spoiled& s) {
             return s.with({{"NML_RUN", "BOGUS = 1"}});
         }},
        {{1, "tin file missing."},
         [](const Spoiled& s) {
             return s.run({"/f", "none.tin"});
         }},
        {{1, "ERROR at reading nm shp_paramters misc."},
         [](const Spoiled& s) { return s.with({}, "&shp_parameters\ncalc_fa = T\n/\n"); }},
        {{102, "command line"}, [](const Spoiled& s) { return s.run({"/F"}); }},
        {{158, "upwind roughness"},
         [](const Spoiled& s) {
             return s.with({{"NML_ER", "USE_EQUIVALENT_ROUGHNESS = T"}});
         }},
        {{161, "monitor"},
         [](const Spoiled& s) {
             return s.with({{"NML_MONITOR", "MONITOR_POSITION = 1, MONITOR_HEIGHT = 10"}});
         }},
        {{162, "monitor"},
         [](const Spoiled& s) {
             return s.with({{"NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = 20"}});
         }},
        {{163, "monitor"},
         [](const Spoiled& s) {
             return s.with({{"NML_MONITOR", "MONITOR_POSITION = 1"},
                            {"NML_MONITOR", "MONITOR_LON = 139 45 0, MONITOR_LAT = 35 30 0"}});
         }},
        {{185, "nesting"},
         [](const Spoiled& s) { return s.with({}, "&nest_points\nnest_mode = 1\n/\n"); }},
        {{186, "upwind roughness"},
         [](const Spoiled& s) {
             return s.with({{"NML_RUN", "ATLAS_FLAG = 1"}});
         }},
        {{191, "case file"},
         [](const Spoiled& s) {
             return s.with({{"NML_RUN", "ATLAS_FLAG = 1, TERRAIN_MODE = 'flat'"}});
         }},
    };
}

// With the block of a user's domain; its files are there as far as the case goes.
Ending with_user_domain(const Spoiled& s, const std::string& counts) {
    s.directory.write("counts.txt", counts);
    const Field3 x(2, 2, 2);
    Field3 rising = x;
    for (const int i : {1, 2}) {
        for (const int j : {1, 2}) {
            rising(i, j, 2) = 10;
        }
    }
    Field3 east = x;
    Field3 north = x;
    for (const int m : {1, 2}) {
        for (const int n : {1, 2}) {
            east(2, m, n) = 10;
            north(m, 2, n) = 10;
        }
    }
    write_xyz("given-", east, north, rising);
    write_z0("given-", Field2(3, 3, 0.1F));
    return s.with({{"NML_RUN", "TORVEX_MODE = 1"}},
                  "&user_domain\nmesh_n_file = counts.txt\nxyz_file = given-xyz.tuf\n"
                  "roughness_file = given-z0.tuf\ninlet = 3\n/\n");
}

Cases cases_of_the_user_domain() {
    return {
        {{1, "user domain"}, [](const Spoiled& s) { return with_user_domain(s, "3\n3\nx\n"); }},
        {{1, "*** inflow file error ***"},
         [](const Spoiled& s) { return with_user_domain(s, "3\n3\n3\n"); }},
    };
}

Cases cases_of_the_run() {
    return {
        {{0, "Error: parent calculation data missing."},
         [](const Spoiled& s) { return s.with({}, nest_block()); }},
        {{1, "another run is using this directory"},
         [](const Spoiled& s) {
             s.directory.write("view-wind_direction.dat", "");
             const int file = ::open("view-wind_direction.dat", O_RDWR);
             EXPECT_EQ(flock(file, LOCK_EX | LOCK_NB), 0);
             Ending ending = s.with({});
             ::close(file);
             return ending;
         }},
        {{1, "[main] ERROR: Can't delete logs."},
         [](const Spoiled& s) {
             const std::string file = s.directory.file("view-monitor.dat");
             return s.solved([&file](torvex::Run&, Direction&) { close_descriptor_of(file); });
         }},
        {{1, "files"},
         [](const Spoiled& s) {
             std::filesystem::create_directory("torvex.log");
             return s.with({});
         }},
        {{2, "user stop"},
         [](const Spoiled& s) {
             return s.solved([](torvex::Run&, Direction& d) { d.stop_requested = true; });
         }},
    };
}

constexpr const char* nest_result = "restart-000_0-vpkeout_00000.tuf";

// A finished parent, spoiled, and then its child.
Ending with_child(const Spoiled& s, const std::function<void()>& spoil) {
    EXPECT_EQ(s.with({}).code, 0);
    spoil();
    return s.with({}, nest_block());
}

// The block of a child with one of its values changed.
std::string nest_block_with(const std::string& good, const std::string& bad) {
    std::string block = nest_block();
    return block.replace(block.find(good), good.size(), bad);
}

Cases cases_of_nesting() {
    return {
        {{100, "nesting"},
         [](const Spoiled&) {
             return ending_of([] {
                 CaseSettings settings;
                 RunLog log;
                 read_nest_points({"gone.tin", "", false}, settings, log);
             });
         }},
        {{180, "nesting"},
         [](const Spoiled& s) {
             return s.with({}, nest_block_with("n_x_div = 2", "n_x_div = 0"));
         }},
        {{181, "nesting"},
         [](const Spoiled&) {
             return ending_of([] {
                 NestCase c;
                 c.settings.nest.c2xmax = c.settings.nest.c2ymax = 10.0F;
                 c.settings.nest.n_x_div = c.settings.nest.n_y_div = 1;
                 c.settings.nest.lat = Triple{0.0F, 1.0F, 0.0F};  // 1.8 km north of the parent
                 c.settings.N_WIND_DIRECTION = 1;
                 nest_check_domain(c.settings, c.lines);
             });
         }},
        {{182, "nesting"},
         [](const Spoiled& s) {
             return s.with({}, nest_block_with("c2xmax = 100", "c2xmax = 9000"));
         }},
        {{183, "nesting"},
         [](const Spoiled& s) {
             return with_child(
                 s, [&s] { s.directory.write("restart-000_0-restart.info", "no count\n"); });
         }},
        {{184, "nesting"},
         [](const Spoiled& s) {
             return with_child(s, [] { std::filesystem::resize_file(nest_result, 1000); });
         }},
        {{1, "[dstrMomen] ERROR: Divide by Zero."},
         [](const Spoiled&) {
             return ending_of([] {
                 NestCase c;
                 for (const int j : {1, 2}) {
                     c.child.zn(1, j, 3) = c.child.zn(1, j, 2);
                 }
                 dstrMomen(c.pass(), c.parent, c.flow);
             });
         }},
    };
}

constexpr const char* nodes = "restart-000_0-xyz.tuf";

Cases cases_of_saved_files() {
    return {
        {{210, "xyz.tuf"},
         [](const Spoiled& s) { return s.resumed([] { std::filesystem::remove(nodes); }); }},
        {{211, "xyz.tuf"},
         [](const Spoiled& s) { return s.resumed([&] { s.directory.write(nodes, "no nodes"); }); }},
        {{212, "xyz.tuf"},
         [](const Spoiled& s) {
             return s.resumed([] { std::filesystem::resize_file(nodes, 1000); });
         }},
        {{221, "z0.tuf"},
         [](const Spoiled& s) {
             Field2 z0(2, 2);
             return ending_of([&] { read_z0(s.directory.file("none-z0.tuf"), z0); });
         }},
        {{222, "z0.tuf"},
         [](const Spoiled& s) {
             Field2 z0(2, 2);
             write_z0("some-", z0);
             Field2 other(2, 3);
             return ending_of([&] { read_z0(s.directory.file("some-z0.tuf"), other); });
         }},
        {{231, "result file"},
         [](const Spoiled& s) {
             FlowState flow;
             return ending_of([&] { read_vpkeout(s.directory.file("none.tuf"), 1, flow); });
         }},
        {{232, "result file"},
         [](const Spoiled& s) {
             // The id alone: a record of four bytes between its two lengths.
             s.directory.write("cut.tuf", std::string("\4\0\0\0\x70\0\0\0\4\0\0\0", 12));
             FlowState flow;
             flow.u.allocate(2, 2, 2);
             return ending_of([&] { read_vpkeout(s.directory.file("cut.tuf"), 1, flow); });
         }},
    };
}

constexpr const char* canopy_block = "&canopy_parameters\ncanopy_mode = 1\n/\n";
constexpr const char* canopy_file = "restart-000_0-ccd.tuf";

Cases cases_of_the_canopy() {
    return {
        {{1, "canopy file"}, [](const Spoiled& s) { return s.with({}, canopy_block); }},
        {{1, "Error: File Inconsistency."},
         [](const Spoiled& s) {
             s.directory.write(canopy_file, "no canopy");
             return s.with({}, canopy_block);
         }},
        {{1, "ERROR: NAN detacted in ccd.tuf file."},
         [](const Spoiled& s) {
             EXPECT_EQ(s.with({}).code, 0);
             const Extents n = read_extents("restart-000_0-xyzc.tuf", {1, 1, 1});
             CanopyRecords records;
             records.gp_cf.allocate(n.ni, n.nj, n.nk, std::nanf(""));
             records.gp_density = records.gp_length = records.gp_cf;
             write_canopy_file(canopy_file, records);
             return s.with({}, canopy_block);
         }},
    };
}

// A set of shapes read from tests/canopy/shape/data.
Ending reading_of(const std::string& name, const std::string& column = {}) {
    return ending_of([&] {
        ShapeSet set;
        set.name = "sf_tree";
        set.filename = name;
        set.dbf_h = column;
        read_shape_file(set);
    });
}

const std::string shapes = TORVEX_SHAPES_DIR;

Cases cases_of_shapes() {
    return {
        {{1, "ERROR: Shape File Not Found."},
         [](const Spoiled&) { return reading_of("none.shp"); }},
        {{1, "ERROR: DB File Not Found."},
         [](const Spoiled&) {
             for (const char* extension : {".shp", ".shx"}) {
                 std::filesystem::copy_file(shapes + "/wood_z" + extension,
                                            std::string("alone") + extension);
             }
             return reading_of("alone.shp");
         }},
        {{1, "ERROR: DB File Field Not Found."},
         [](const Spoiled&) { return reading_of(shapes + "/wood_z.shp", "HEIGHT"); }},
        {{1, "Unknown shape type:"},
         [](const Spoiled&) { return reading_of(shapes + "/trees.shp"); }},
        {{1, "shapefile"},
         [](const Spoiled& s) {
             for (const char* extension : {".shp", ".shx", ".dbf"}) {
                 s.directory.write(std::string("bad") + extension, "");
             }
             return reading_of("bad.shp");
         }},
        {{1, "Caught error during reading cnpy_conv_tab"},
         [](const Spoiled& s) {
             s.directory.write("classes.tin", "heading\n1 wood\n");
             return ending_of([] {
                 CanopyConvTable table;
                 read_canopy_conv_table(table, "classes.tin");
             });
         }},
    };
}

Cases cases_of_single_rooms() {
    return {
        {{1, "Turbulence Model Error"},
         [](const Spoiled&) { return ending_of([] { result_id(5); }); }},
        {{1, "Error in HGF version"},
         [](const Spoiled&) {
             return ending_of([] {
                 ListInput input("%HGF 2.00\n1 2\n");
                 read_hgf_header(input);
             });
         }},
        {{1, "Error in header of HGF file"},
         [](const Spoiled&) {
             return ending_of([] {
                 ListInput input("%HGF 1.00\n%FOO 3\n1 2\n");
                 read_hgf_header(input);
             });
         }},
        {{1, "Please initialize module."},
         [](const Spoiled&) {
             return ending_of([] {
                 PlanePoint point;
                 geographic_to_plane({}, point);
             });
         }},
        {{1, "plane coordinates"},
         [](const Spoiled&) {
             return ending_of([] {
                 PlaneSystem system;
                 set_coordinate_system(system, 20);
             });
         }},
    };
}

Cases all_cases() {
    Cases all;
    for (const Cases& some :
         {cases_of_maps(), cases_of_mesh(), cases_of_the_case_file(), cases_of_the_user_domain(),
          cases_of_the_run(), cases_of_saved_files(), cases_of_the_canopy(), cases_of_shapes(),
          cases_of_single_rooms(), cases_of_nesting()}) {
        all.insert(some.begin(), some.end());
    }
    return all;
}

// Rows that no case can end in yet. A new row belongs into a case above, or here for the time
// being.
const std::set<Row> not_provoked_yet{};

TEST(StopCodesProvoked, EveryRowHasACaseThatEndsInIt) {
    const Cases cases = all_cases();
    for (const StopCode& row : stop_codes()) {
        const Row key{row.code, std::string(row.subject)};
        const auto found = cases.find(key);
        if (found == cases.end()) {
            EXPECT_TRUE(not_provoked_yet.contains(key))
                << "no case provokes " << row.code << ", " << row.subject;
            continue;
        }
        const Spoiled spoiled;
        const Ending ending = found->second(spoiled);
        EXPECT_EQ(ending.code, row.code) << row.subject << ": " << ending.message;
        if (row.code > 2) {
            EXPECT_THAT(ending.message,
                        ::testing::ContainsRegex("(^|\n)stop " + std::to_string(row.code) + ": "));
        } else if (row.code < 2) {
            EXPECT_FALSE(ending.message.empty()) << row.subject;
        }
        // Failures that are known by their text alone tell just that.
        if (row.code < 2 && std::isupper(static_cast<unsigned char>(row.subject.front())) != 0) {
            EXPECT_THAT(ending.message, ::testing::HasSubstr(std::string(row.subject)));
        }
    }
}

TEST(StopCodesProvoked, EveryCaseHasItsRow) {
    std::set<Row> rows;
    for (const StopCode& row : stop_codes()) {
        rows.emplace(row.code, row.subject);
    }
    for (const auto& [row, provoke] : all_cases()) {
        EXPECT_TRUE(rows.contains(row)) << row.first << ", " << row.second;
    }
    for (const Row& row : not_provoked_yet) {
        EXPECT_TRUE(rows.contains(row)) << row.first << ", " << row.second;
    }
}

}  // namespace
}  // namespace torvex::test
