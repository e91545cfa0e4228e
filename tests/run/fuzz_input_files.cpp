// fuzz_input_files EXAMPLE COUNT SEED: reads COUNT damaged versions of each kind of file that a run
// takes besides its case file, made from files of a small run and from maps cut out of an example.
// Each must be read or end in a stop that names the file. Built with the address and undefined
// behaviour sanitizers in every preset, and with a limit on what a single allocation may ask for.
// An input that fails is left in fuzz_input_files.bad.

#include <algorithm>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/text_file.hpp"
#include "base/upwind_roughness_log.hpp"
#include "canopy/canopy_file.hpp"
#include "case/alpha_table.hpp"
#include "case/fuzzing.hpp"
#include "maps/load_maps.hpp"
#include "maps/map_file.hpp"
#include "mesh/mesh_count_file.hpp"
#include "mesh/mesh_line_file.hpp"
#include "mesh/refit_lines.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "results/view_table.hpp"
#include "run/control_files.hpp"
#include "run/file_mutations.hpp"
#include "solver/inflow_profile.hpp"
#include "support/case_text.hpp"
#include "support/run_program.hpp"
#include "support/temporary_directory.hpp"

// Larger than the largest text, and than the largest map that may be written in short.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name that the sanitizer looks for
extern "C" const char* __asan_default_options() {
    return "max_allocation_size_mb=600";
}

namespace torvex::test {
namespace {

constexpr ReadCodes any_code{.open = 1, .id = 1, .extents = 1};
const std::string stem = "restart-000_0-";

struct Kind {
    std::string file;
    enum class Form { text, records } form;
    std::function<void()> read;
};

// Two runs of the smallest case in the current directory: k-epsilon, then the hybrid model, which
// finds the mesh log of the first one and writes its mesh lines.
void make_files(const TemporaryDirectory& directory, const std::string& example) {
    directory.write("h.map", level_map("10"));
    directory.write("z0.map", level_map("0.03"));
    for (const char* model : {"1", "4"}) {
        directory.write(
            "torvex.tin",
            quick_case_text({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                             {"NML_RUN", "DEBUG_MODE = 1"},
                             {"NML_NAVIER_STOKES", std::string("TURBULENCE_MODEL = ") + model},
                             {"NML_MONITOR", "MONITOR_STEP = 1"},
                             {"NML_NUMERICAL_SOLVER", std::string("MAXIT = ") + model}}));
        const ProgramRun ran = run_torvex_program({}, directory.path());
        if (ran.status != 0) {
            throw std::runtime_error("the run that makes the files failed: " + ran.err);
        }
    }
    const auto cut = [&](const char* name, const std::string& counts, std::size_t lines) {
        std::ifstream in(example + "/" + name, std::ios::binary);
        std::string text;
        std::string line;
        while (std::getline(in, line) && line != "--DATA--") {
            text += line.starts_with("n_l") ? "" : line + "\n";
        }
        text += counts + "\n--DATA--\n";
        for (; lines > 0 && std::getline(in, line); --lines) {
            text += line + "\n";
        }
        directory.write(name, text);
    };
    cut("elevation.map", "n_lon = 25, n_lat = 12", 12);
    cut("roughness.map", "n_lon = 20\nn_lat = 7", 7);
    directory.write("profile.txt",
                    "height u tke\n10 5.5 1.25\n50 8 1.1 remark\n200.0 1.1E+01 0.9\n");
    directory.write("alpha.txt", "3\n0 0.2\n180.0 0.3\n270 0.15\n");
    directory.write("counts.txt", "35\n24\n14\n");
    directory.write("#OutputIntermediateCount", "100\n");
    directory.write("view-monitor-000_0.dat", directory.read("view-convergence-000_0.dat"));
}

// The mesh of the small run, and arrays to read its files into.
struct Mesh {
    Extents nodes = read_extents(stem + "xyz.tuf", any_code);
    Extents cells = read_extents(stem + "xyzc.tuf", any_code);
    std::vector<Field3> node_arrays{3, Field3(nodes.ni, nodes.nj, nodes.nk)};
    FlowState flow;
    Field2 z0{cells.ni, cells.nj, 0.03F};
    CanopyRecords canopy;

    Mesh() {
        allocate(flow, kept_fields, cells.ni, cells.nj, cells.nk);
        for (Field3* factor : {&flow.gp_d, &flow.gp_k, &flow.gp_e}) {
            factor->allocate(cells.ni, cells.nj, cells.nk);
        }
    }
};

void write_canopy(const Mesh& mesh) {
    const Field3 field(mesh.cells.ni, mesh.cells.nj, mesh.cells.nk, 0.25F);
    write_canopy_file(stem + "ccd.tuf", {field, field, field, mesh.z0});
}

void read_table(const std::string& name) {
    ViewTable table;
    table.open(name, ViewTable::Existing::keep);
    table.append("a row");
    table.write_last("another");
    if (table.slot(table.count()) != "another") {
        throw std::runtime_error("a row that was written is not there");
    }
    clear_view_log(table);
    if (table.count() != 1) {
        throw std::runtime_error("a cleared table is not empty");
    }
}

std::vector<Kind> kinds_of_maps(CaseSettings& settings, RunLog& log) {
    settings.BASIC_H_FILE = "elevation.map";
    settings.TERRAIN_MODE = "normal";
    settings.cent_lon_min = -113.0 * 60.0 - 5.7;
    settings.cent_lat_min = 43.0 * 60.0 + 20.85;
    constexpr float radius = 1000.0F;
    return {{"elevation.map", Kind::Form::text,
             [&log] { read_map_file("elevation.map", basic_h_role, nullptr, log); }},
            {"roughness.map", Kind::Form::text,
             [&log] { read_map_file("roughness.map", detailed_z0_role, nullptr, log); }},
            {"elevation.map", Kind::Form::text, [&settings, &log] {
                 MapState state;
                 elevation_in_radius(settings, radius, state, log);
             }}};
}

std::vector<Kind> kinds_of_results(Mesh& mesh) {
    std::vector<Field3>& nodes = mesh.node_arrays;
    const auto result = [&mesh](const std::string& name, int model) {
        return Kind{name, Kind::Form::records,
                    [&mesh, name, model] { read_vpkeout(name, model, mesh.flow); }};
    };
    return {
        {stem + "xyz.tuf", Kind::Form::records,
         [&nodes] { read_xyz(stem + "xyz.tuf", nodes[0], nodes[1], nodes[2]); }},
        {stem + "xyzc.tuf", Kind::Form::records, [] { read_extents(stem + "xyzc.tuf", any_code); }},
        {stem + "z0.tuf", Kind::Form::records, [&mesh] { read_z0(stem + "z0.tuf", mesh.z0); }},
        {stem + "vpkeinp.tuf", Kind::Form::records,
         [&mesh] { read_vpkeinp(stem + "vpkeinp.tuf", mesh.flow); }},
        result(stem + "vpkeout_00001.tuf", 1),
        result(stem + "vpkeout_00004.tuf", 4),
        {stem + "ccd.tuf", Kind::Form::records,
         [&mesh] {
             FlowState& f = mesh.flow;
             read_canopy_file(stem + "ccd.tuf", {}, mesh.canopy,
                              {.ni = mesh.cells.ni,
                               .nj = mesh.cells.nj,
                               .nk = mesh.cells.nk,
                               .gp_d = f.gp_d,
                               .gp_k = f.gp_k,
                               .gp_e = f.gp_e,
                               .z0_out = &mesh.z0});
         }},
        {stem + "restart.info", Kind::Form::text,
         [] { read_restart_info(stem + "restart.info"); }}};
}

std::vector<Kind> kinds_of_texts(CaseSettings& settings, RunLog& log) {
    const auto profile = [&settings](const std::string& name, bool table) {
        return Kind{name, Kind::Form::text, [&settings, name, table] {
                        settings.INFLOW_PROFILE_FILE = name;
                        settings.INFLOW_PROFILE_TABLE = table;
                        read_inflow_profile(settings);
                    }};
    };
    settings.DIRECTIONAL_ALPHA_FILE_NAME = "alpha.txt";
    const MeshLines lines = read_mesh_line_file("tmp");
    return {profile("profile.txt", true),
            profile("sites-000_0-_INFLOW_PROFILE.tpd", false),
            {"alpha.txt", Kind::Form::text, [&settings] { read_alpha_table(settings); }},
            {"tmp", Kind::Form::text, [] { read_mesh_line_file("tmp"); }},
            {"counts.txt", Kind::Form::text, [] { read_mesh_counts("counts.txt"); }},
            {"log-meshnumber", Kind::Form::text,
             [&settings, &log, lines] {
                 MeshLines moved = lines;
                 refit_lines(settings, log, moved);
             }},
            {"log-upwind_roughness-000_0", Kind::Form::text,
             [] { read_upwind_roughness("log-upwind_roughness-000_0", "run again"); }},
            {"view-convergence-000_0.dat", Kind::Form::text,
             [] { read_table("view-convergence-000_0.dat"); }},
            {"view-monitor-000_0.dat", Kind::Form::text,
             [] {
                 copy_view_log("view-monitor-000_0.dat", "view-monitor.dat");
                 read_table("view-monitor.dat");
             }},
            {"#OutputIntermediateCount", Kind::Form::text, [] {
                 std::int32_t interval = 1;
                 read_intermediate_interval(interval);
                 if (interval < 0) {
                     throw std::runtime_error("a negative interval");
                 }
             }}};
}

bool try_kind(const Kind& kind, const TemporaryDirectory& directory, long count,
              FileMutator& mutator) {
    const std::string good = directory.read(kind.file);
    const auto receive = [&](const std::string& input) {
        return received(
            input,
            [&](const std::string& bytes) {
                directory.write(kind.file, bytes);
                kind.read();
            },
            [&](const std::string& message) {
                return message.find(kind.file) != std::string::npos;
            });
    };
    if (const Reception reception = receive(good); !reception.accepted) {
        std::cerr << kind.file << " is refused as it stands: " << reception.message
                  << reception.complaint << '\n';
        return false;
    }
    long accepted = 0;
    for (long n = 1; n <= count; ++n) {
        const std::string input =
            kind.form == Kind::Form::text ? mutator.text(good) : mutator.records(good);
        const Reception reception = receive(input);
        if (!reception.complaint.empty()) {
            std::cerr << kind.file << ", input " << n << ", met " << reception.complaint << '\n';
            return false;
        }
        accepted += reception.accepted ? 1 : 0;
    }
    std::cerr << kind.file << ": " << count << " inputs, " << accepted << " accepted, "
              << count - accepted << " refused\n";
    directory.write(kind.file, good);
    return true;
}

int fuzz(const std::string& example, long count, std::uint32_t seed) {
    const TemporaryDirectory directory;
    make_files(directory, example);
    std::filesystem::current_path(directory.path());
    CaseSettings settings;
    RunLog log;
    Mesh mesh;
    write_canopy(mesh);
    std::vector<Kind> kinds = kinds_of_maps(settings, log);
    for (auto&& more : {kinds_of_results(mesh), kinds_of_texts(settings, log)}) {
        kinds.insert(kinds.end(), more.begin(), more.end());
    }
    FileMutator mutator(seed);
    const bool good = std::ranges::all_of(
        kinds, [&](const Kind& kind) { return try_kind(kind, directory, count, mutator); });
    std::filesystem::current_path("/");
    return good ? 0 : 1;
}

}  // namespace
}  // namespace torvex::test

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: fuzz_input_files EXAMPLE COUNT SEED\n";
        return 1;
    }
    try {
        torvex::test::keep_failing_input(
            std::filesystem::absolute("fuzz_input_files.bad").string());
        std::cout.setstate(std::ios::failbit);  // what a run shows on its console is of no interest
        return torvex::test::fuzz(argv[1], std::stol(argv[2]),
                                  static_cast<std::uint32_t>(std::stoul(argv[3])));
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
