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

// One record each; all must have the extents of the header.
template <class... Fields>
void write_arrays(RecordWriter& file, const Field3& first, const Fields&... others) {
    const auto write = [&file, &first](const Field3& field) {
        require(field.ni() == first.ni() && field.nj() == first.nj() && field.nk() == first.nk(),
                "arrays of different extents for one file");
        file.record(field);
    };
    write(first);
    (write(others), ...);
}

void write_coordinates(const std::string& path, std::int32_t id, const Field3& x, const Field3& y,
                       const Field3& z) {
    RecordWriter file(path);
    write_header(file, id, x);
    write_arrays(file, x, y, z);
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

void write_vpkeinp(const std::string& stem, const ResultFields& f) {
    RecordWriter file(stem + std::string(vpkeinp_name));
    write_header(file, 111, *f.u);
    write_arrays(file, *f.u, *f.v, *f.w, *f.p, *f.tke, *f.ted);
    file.commit();
}

void write_vpkeout(const std::string& stem, std::int32_t iteration, float residual,
                   int turbulence_model, const ResultFields& f) {
    const std::int32_t id = result_id(turbulence_model);
    RecordWriter file(stem + result_name(iteration));
    write_header(file, id, *f.u);
    write_arrays(file, *f.u, *f.v, *f.w, *f.p, *f.tke, *f.ted, *f.flxU, *f.flxV, *f.flxW, *f.vis,
                 *f.pp);
    file.record(iteration);
    file.record(residual);
    if (id == 122) {
        write_arrays(file, *f.lm);
    } else if (id == 132) {
        write_arrays(file, *f.lm, *f.tkl, *f.viskl);
    }
    file.commit();
}

}  // namespace torvex
