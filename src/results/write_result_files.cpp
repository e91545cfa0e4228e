#include <filesystem>
#include <system_error>

#include "base/assertion.hpp"
#include "base/edit.hpp"
#include "base/record_file.hpp"
#include "base/stop.hpp"
#include "results/result_files.hpp"

namespace torvex {

namespace {

void write_header(RecordWriter& file, std::int32_t id, const Field3& first) {
    file.record(id);
    file.record(std::int32_t{first.ni()}, std::int32_t{first.nj()}, std::int32_t{first.nk()});
}

// A record of the extents of the header.
void write_array(RecordWriter& file, const Field3& field, const Field3& first) {
    require(field.ni() == first.ni() && field.nj() == first.nj() && field.nk() == first.nk(),
            "arrays of different extents for one file");
    file.record(field);
}

void write_fields(RecordWriter& file, const FlowState& flow, std::span<const FlowField> fields) {
    for (const FlowField& field : fields) {
        write_array(file, flow.*field.member, flow.u);
    }
}

void write_coordinates(const std::string& path, std::int32_t id, const Field3& x, const Field3& y,
                       const Field3& z) {
    RecordWriter file(path);
    write_header(file, id, x);
    for (const Field3* field : {&x, &y, &z}) {
        write_array(file, *field, x);
    }
    file.commit();
}

}  // namespace

std::int32_t result_id(int turbulence_model) {
    switch (turbulence_model) {
        case 1:
        case 3:
            return 112;
        case 2:
            return 122;
        case 4:
            return 132;
        default:
            stop(1, "Turbulence Model Error",
                 "TURBULENCE_MODEL = " + std::to_string(turbulence_model),
                 "choose 1 (k-epsilon), 2 (k-l), 3 (Launder-Kato) or 4 (hybrid)");
    }
}

std::span<const FlowField> further_fields(std::int32_t id) {
    switch (id) {
        case 122:
            return fields_kept(Kept::kl_result, Kept::kl_result);
        case 132:
            return length_fields;
        default:
            return {};
    }
}

std::string result_name(std::int32_t iteration) {
    return "vpkeout_" + edit::I(iteration, 5, 5) + ".tuf";
}

std::string newest_result_path(const std::string& stem, std::int32_t iteration) {
    const std::string corrected = stem + "vpkeout_" + edit::I(iteration, 5, 5) + "_r.tuf";
    std::error_code ignored;
    return std::filesystem::exists(corrected, ignored) ? corrected : stem + result_name(iteration);
}

void write_xyz(const std::string& stem, const Field3& xn, const Field3& yn, const Field3& zn) {
    write_coordinates(stem + std::string(xyz_name), 101, xn, yn, zn);
}

void write_z0(const std::string& stem, const Field2& z0) {
    RecordWriter file(stem + std::string(z0_name));
    file.record(std::int32_t{102});
    file.record(std::int32_t{z0.ni()}, std::int32_t{z0.nj()});
    file.record(z0);
    file.commit();
}

void write_xyzc(const std::string& stem, const Field3& xc, const Field3& yc, const Field3& zc) {
    write_coordinates(stem + std::string(xyzc_name), 103, xc, yc, zc);
}

void write_vpkeinp(const std::string& stem, const FlowState& flow) {
    RecordWriter file(stem + std::string(vpkeinp_name));
    write_header(file, start_id, flow.u);
    write_fields(file, flow, start_fields);
    file.commit();
}

void write_vpkeout(const std::string& stem, std::int32_t iteration, float residual,
                   int turbulence_model, const FlowState& flow) {
    const std::int32_t id = result_id(turbulence_model);
    RecordWriter file(stem + result_name(iteration));
    write_header(file, id, flow.u);
    write_fields(file, flow, result_fields);
    file.record(iteration);
    file.record(residual);
    write_fields(file, flow, further_fields(id));
    file.commit();
}

}  // namespace torvex
