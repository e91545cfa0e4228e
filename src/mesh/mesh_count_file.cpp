#include "mesh/mesh_count_file.hpp"

#include <cstdint>
#include <optional>

#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "mesh/mesh_counts.hpp"

namespace torvex {

namespace {

constexpr int least_count = 3;  // one cell between its two boundary layers
constexpr const char* fix =
    "mesh_n_file holds three lines: the counts of cells along i, j and k, boundary layers included";

int read_count(ListInput& input, const std::string& path, const char* name) {
    const long line = input.line();
    std::int32_t count = 0;
    if (!input.read(count)) {
        stop(1, input.fault().message() + " (" + name + ")", place(path, input.fault().line), fix);
    }
    if (count < least_count) {
        stop(1,
             std::string(name) + " is " + std::to_string(count) + ", expected at least " +
                 std::to_string(least_count),
             place(path, line), fix);
    }
    return count;
}

}  // namespace

MeshCounts read_mesh_counts(const std::string& path) {
    if (path.empty()) {
        stop(1, "mesh_n_file names no file", "block &user_domain", fix);
    }
    const std::optional<std::string> text = read_text_file(path);
    if (!text) {
        stop(1, "the file of mesh counts cannot be opened", path, fix);
    }
    ListInput input(*text);
    MeshCounts counts;
    counts.ni = read_count(input, path, "ni");
    counts.nj = read_count(input, path, "nj");
    counts.nk = read_count(input, path, "nk");
    check_mesh_counts(counts.ni, counts.nj, counts.nk, machine_memory(), path);
    return counts;
}

}  // namespace torvex
