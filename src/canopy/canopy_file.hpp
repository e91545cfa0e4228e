#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/case_settings.hpp"
#include "canopy/canopy_records.hpp"

// The canopy of one wind direction on its mesh, prepared before the run, is a file of records (see
// base/record_framing.hpp):
//
//   1      104
//   2      ni nj nk
//   3..5   gp_cf, gp_density, gp_length, each ni*nj*nk
//   6      gp_z0, ni*nj; may be left out
//
// Nothing but the counts ties the file to a mesh.
namespace torvex {

inline constexpr std::string_view canopy_file_name = "ccd.tuf";  // behind the stem of a direction
inline constexpr std::int32_t canopy_file_id = 104;

// The mesh, and the arrays on it that a canopy file fills.
struct CanopyTarget {
    int ni, nj, nk;
    Field3& gp_d;              // drag density [1/m]
    Field3& gp_k;              // dissipation factor of tke [-]
    Field3& gp_e;              // dissipation factor of ted [-]
    Field2* z0_out = nullptr;  // takes gp_z0, where wanted
};

// Reads the file and builds the arrays, which are released first and allocated anew. `records`
// lives for the run and has the extents of the mesh afterwards; without record 6 its gp_z0 keeps
// what an earlier file of these extents gave, and with nothing there *z0_out stays as it is.
//
// stops 1 with the text on the console: "... not found.", "Error: File Inconsistency.", "ERROR: NAN
// detacted in ccd.tuf file."
void read_canopy_file(const std::string& file_name, const CanopyParameters& parameters,
                      CanopyRecords& records, const CanopyTarget& target);

// The arrays have one set of extents; record 6 is written if gp_z0 has any.
void write_canopy_file(const std::string& path, const CanopyRecords& records);

}  // namespace torvex
