#include "base/assertion.hpp"
#include "base/record_file.hpp"
#include "canopy/canopy_file.hpp"

namespace torvex {

void write_canopy_file(const std::string& path, const CanopyRecords& records) {
    const int ni = records.gp_cf.ni();
    const int nj = records.gp_cf.nj();
    const int nk = records.gp_cf.nk();
    RecordWriter file(path);
    file.record(canopy_file_id);
    file.record(std::int32_t{ni}, std::int32_t{nj}, std::int32_t{nk});
    for (const Field3* field : {&records.gp_cf, &records.gp_density, &records.gp_length}) {
        require(field->ni() == ni && field->nj() == nj && field->nk() == nk,
                "arrays of different extents for one file");
        file.record(*field);
    }
    if (records.gp_z0.size() > 0) {
        require(records.gp_z0.ni() == ni && records.gp_z0.nj() == nj,
                "arrays of different extents for one file");
        file.record(records.gp_z0);
    }
    file.commit();
}

}  // namespace torvex
