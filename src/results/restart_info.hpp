#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "results/result_files.hpp"

// restart.info, the text file that tells a resume how far a direction came:
//
//   line 1  outer_count
//   line 2  resid_m resid_u resid_v resid_w
//   line 3  ni nj nk, in a nested run only
namespace torvex {

// A residual that nobody knows; it never passes a convergence test.
inline constexpr float unknown_residual = 1.0e25F;

// What the file holds; extents in a nested run only.
struct RestartInfo {
    std::int32_t outer_count = 0;
    float resid_m = unknown_residual;
    float resid_u = unknown_residual;
    float resid_v = unknown_residual;
    float resid_w = unknown_residual;
    std::optional<Extents> nest_extents = {};
    int residuals_read = 0;  // set by the reader
};

// The name that write_restart_info used last, forgotten (`= {}`) at the start of each direction.
struct RestartInfoName {
    std::string path;
};

// Writes the file as a whole; a failure is a stop. `numbered` true: its name is stem + "restart-" +
// iteration in five digits + ".info"; false: stem + "restart.info". Without it the last name stays
// in force, so that a divergence behind an intermediate write refreshes the numbered file.
void write_restart_info(RestartInfoName& last, const std::string& stem, const RestartInfo& info,
                        std::optional<bool> numbered = std::nullopt);

// The same under a given name. A final write takes stem + "restart.info" and leaves the remembered
// name alone.
void write_restart_file(const std::string& path, const RestartInfo& info);

// Removes the file, where there is one, before the mesh of its direction is made anew: a run that
// is killed before it writes its own must not leave it beside files that it does not belong to. A
// file that cannot be removed is a stop.
void forget_file(const std::string& path);

// Nothing if the file is missing or has no readable count. Residuals behind the first unreadable
// one stay unknown. Lines behind the second are not looked at.
std::optional<RestartInfo> read_restart_info(const std::string& path);

}  // namespace torvex
