#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/field.hpp"
#include "solver/flow_fields.hpp"
#include "solver/flow_state.hpp"

// The family of binary files that outlive a wind direction. Each is a file of records (see
// record_framing.hpp): the id, the extents, then one record for each array.
//
//   xyz.tuf            101            nx ny nz   xn yn zn, each nx*ny*nz
//   z0.tuf             102            ni nj      z0, ni*nj
//   xyzc.tuf           103            ni nj nk   xc yc zc, each ni*nj*nk
//   vpkeinp.tuf        111            ni nj nk   the start fields, each ni*nj*nk
//   vpkeout_NNNNN.tuf  112, 122, 132  ni nj nk   the fields of every result, the iteration, one
//                                                residual, then the further fields of the id
//
// Writers glue the file name to a stem such as "restart-022_5-" and stop with code 1 where the file
// cannot be written; readers take the whole path. The extents are those of the arrays handed over,
// of a flow those of u. Which fields stand in which file, and in what order, says flow_fields.hpp.
namespace torvex {

inline constexpr std::string_view xyz_name = "xyz.tuf";
inline constexpr std::string_view z0_name = "z0.tuf";
inline constexpr std::string_view xyzc_name = "xyzc.tuf";
inline constexpr std::string_view vpkeinp_name = "vpkeinp.tuf";

// Counts of the elements of an array along i, j and k.
struct Extents {
    std::int32_t ni = 0, nj = 0, nk = 0;
    friend bool operator==(const Extents&, const Extents&) = default;
};

// Stop codes of a reader, and the way out that its messages name. An array that cannot be read
// counts as wrong extents.
struct ReadCodes {
    int open = 0;
    int id = 0;
    int extents = 0;
    const char* fix =
        "give a file of the same mesh keys, or start the direction afresh with RESTART_FLAG = 0";
};
inline constexpr ReadCodes xyz_codes{.open = 210, .id = 211, .extents = 212};
inline constexpr ReadCodes z0_codes{.open = 221, .id = 221, .extents = 222};
inline constexpr ReadCodes result_codes{.open = 231, .id = 231, .extents = 232};

inline constexpr std::int32_t start_id = 111;

// Id of a result file: 112 for the k-epsilon models 1 and 3, which continue each other's results,
// 122 for the k-l model 2, 132 for the hybrid model 4. Any other model is a stop.
std::int32_t result_id(int turbulence_model);

// The fields of a result behind the iteration and the residual: those of the k-l part that the id
// has.
std::span<const FlowField> further_fields(std::int32_t id);

// "vpkeout_00480.tuf"; a count that needs more than five digits becomes stars.
std::string result_name(std::int32_t iteration);

// The result of an iteration as a resume takes it: stem + "vpkeout_00480_r.tuf" if there is one, a
// result corrected by another tool, else stem + "vpkeout_00480.tuf".
std::string newest_result_path(const std::string& stem, std::int32_t iteration);

// The mesh nodes, the ground's roughness, the cell centres, and the start fields.
void write_xyz(const std::string& stem, const Field3& xn, const Field3& yn, const Field3& zn);
void write_z0(const std::string& stem, const Field2& z0);
void write_xyzc(const std::string& stem, const Field3& xc, const Field3& yc, const Field3& zc);
void write_vpkeinp(const std::string& stem, const FlowState& flow);

// `residual` is max_resid_m in a final write and the resid_m at hand in an intermediate one.
void write_vpkeout(const std::string& stem, std::int32_t iteration, float residual,
                   int turbulence_model, const FlowState& flow);

// The extents of a file of 3-D arrays whose mesh is not known beforehand. They are positive, fit an
// array, and the file holds a first array of that size, so that arrays may be allocated from them.
Extents read_extents(const std::string& path, const ReadCodes& codes);

// Stops as read_xyz would for nodes of these extents, before any array has been made for them.
void check_xyz(const std::string& path, const Extents& nodes, const ReadCodes& codes = xyz_codes);

// Stops with one of the codes where the file does not fit the arrays; wrong extents of xyz.tuf are
// also printed on the console, those of the file first.
void read_xyz(const std::string& path, Field3& xn, Field3& yn, Field3& zn,
              const ReadCodes& codes = xyz_codes);
void read_z0(const std::string& path, Field2& z0, const ReadCodes& codes = z0_codes);

// True if the file was there, whole and of these extents; otherwise the fields stay as they are.
// The start fields have their room.
bool read_vpkeinp(const std::string& path, FlowState& flow);

// What a result tells beside its fields.
struct StoredResult {
    std::int32_t id = 0;
    std::int32_t outer_count = 0;
    float max_resid_m = 0;
};

// In place of a model, for read_vpkeout: the further arrays are read wherever the file holds them.
inline constexpr int whatever_is_stored = 0;

// The further arrays are read only where both the id and the model are of the k-l or of the hybrid
// kind; otherwise lm, tkl and viskl are left alone and a result of one family starts another. u has
// its room; a field without room is read over.
StoredResult read_vpkeout(const std::string& path, int turbulence_model, FlowState& flow,
                          const ReadCodes& codes = result_codes);

}  // namespace torvex
