#include "mesh/mesh_counts.hpp"

#include <unistd.h>

#include <limits>
#include <string>

#include "base/stop.hpp"

namespace torvex {

namespace {

// Nodes, geometry, flow fields and linear system hold about seventy single and two double values a
// cell; a mesh beyond this bound would only ever run in the swap space.
constexpr std::int64_t least_bytes_per_cell = 300;

}  // namespace

std::int64_t machine_memory() {
    return static_cast<std::int64_t>(::sysconf(_SC_PHYS_PAGES)) * ::sysconf(_SC_PAGESIZE);
}

void check_mesh_counts(int ni, int nj, int nk, std::int64_t memory, std::string_view where) {
    // The product of two counts fits 64 bits, that of three may not.
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    const std::int64_t plane = std::int64_t{ni} * nj;
    const std::string mesh = "the mesh of " + std::to_string(ni) + " x " + std::to_string(nj) +
                             " x " + std::to_string(nk) + " cells ";
    if (plane > most || plane * nk > most) {
        stop(1, mesh + "exceeds 2147483647 cells", where, "use a coarser mesh");
    }
    const std::int64_t cells = plane * nk;
    const std::int64_t needed = cells * least_bytes_per_cell;
    if (needed > memory) {
        constexpr std::int64_t megabyte = 1000000;
        stop(1,
             mesh + "needs at least " + std::to_string(needed / megabyte) +
                 " MB of memory, this machine has " + std::to_string(memory / megabyte) + " MB",
             where, "use a coarser mesh or a larger machine");
    }
}

}  // namespace torvex
