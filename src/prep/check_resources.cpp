// What a direction needs of memory and disk, against what there is.

#include <algorithm>
#include <string>

#include "base/edit.hpp"
#include "base/text_file.hpp"
#include "mesh/mesh_counts.hpp"
#include "prep/case_check.hpp"
#include "prep/machine_limits.hpp"
#include "results/result_files.hpp"
#include "solver/flow_fields.hpp"

namespace torvex {

namespace {

constexpr std::int64_t real_bytes = 4;

// Until a direction has been tried. Fields of single precision on the cells: the mesh
// (GridGeometry), the flow, the linear system with its sources in double precision, and about
// sixteen that the solvers make for themselves; the program and its threads come to some 12 MB.
std::int64_t estimated_memory(const CaseSettings& settings, std::int64_t cells) {
    constexpr std::int64_t mesh_fields = 19;
    constexpr std::int64_t source_fields = 4;
    constexpr std::int64_t scratch_fields = 16;
    constexpr std::int64_t canopy_fields = 3;
    constexpr std::int64_t program = 12'000'000;
    const auto of_flow = std::ranges::count_if(
        flow_fields, [&](const FlowField& f) { return has_field(settings.TURBULENCE_MODEL, f); });
    const std::int64_t fields = mesh_fields + of_flow + std::int64_t{system_fields.size()} +
                                source_fields + scratch_fields +
                                (settings.canopy_on() ? canopy_fields : 0);
    return program + real_bytes * cells * fields;
}

// The binary files of a direction: nodes, centres, roughness, start and one result.
std::int64_t disk_bytes(const Run& run) {
    const MeshLines& n = run.lines;
    const std::int64_t nodes = std::int64_t{n.nx} * n.ny * n.nz;
    const std::int64_t cells = std::int64_t{n.ni} * n.nj * n.nk;
    const auto kept = std::ranges::count_if(flow_fields, [&](const FlowField& f) {
        const int model = run.settings.TURBULENCE_MODEL;
        return f.kept == Kept::start || f.kept == Kept::result ||
               (f.kept == Kept::kl_result && (model == 2 || model == 4)) ||
               (f.kept == Kept::hybrid_result && model == 4);
    });
    const auto start = static_cast<std::int64_t>(start_fields.size());
    return real_bytes * (3 * nodes + (3 + start + kept) * cells + std::int64_t{n.ni} * n.nj);
}

std::string megabytes(std::int64_t bytes) {
    constexpr double megabyte = 1e6;
    std::string text(trimmed(edit::F(static_cast<double>(bytes) / megabyte, 40, 0)));
    text.pop_back();  // the point
    return text + " MB";
}

}  // namespace

ResourceCheck check_resources(const Run& run) {
    ResourceCheck found;
    found.memory =
        estimated_memory(run.settings, std::int64_t{run.lines.ni} * run.lines.nj * run.lines.nk);
    found.memory_limit = machine_memory();
    found.group_limit = group_memory_limit();
    found.disk = disk_bytes(run);
    found.disk_free = free_disk();
    return found;
}

std::vector<std::string> resource_warnings(const ResourceCheck& resources, int directions) {
    std::vector<std::string> warnings;
    const auto too_little = [&](const std::string& limit) {
        warnings.push_back("a direction needs about " + megabytes(resources.memory) +
                           " of memory, " + limit + ": use a coarser mesh or a larger machine.");
    };
    if (resources.memory > resources.memory_limit) {
        too_little("this machine has " + megabytes(resources.memory_limit));
    }
    if (resources.group_limit && resources.memory > *resources.group_limit) {
        too_little("the control group of this process allows " + megabytes(*resources.group_limit));
    }
    if (resources.disk_free && resources.disk * directions > *resources.disk_free) {
        warnings.push_back("the directions leave about " + megabytes(resources.disk * directions) +
                           ", the file system here has room for " +
                           megabytes(*resources.disk_free) + ".");
    }
    return warnings;
}

}  // namespace torvex
