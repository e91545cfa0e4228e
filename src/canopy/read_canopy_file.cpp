#include <array>
#include <cmath>
#include <cstdint>
#include <optional>

#include "base/assertion.hpp"
#include "base/record_file.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "canopy/canopy_factors.hpp"
#include "canopy/canopy_file.hpp"

namespace torvex {

namespace {

// Ends the run; the text is known to those who watch the console.
[[noreturn]] void fail(const std::string& text, const std::string& where, const std::string& fix) {
    console(text);
    stop(1, text, where, fix);
}

std::string text_of(int ni, int nj, int nk) {
    return std::to_string(ni) + " x " + std::to_string(nj) + " x " + std::to_string(nk);
}

class CanopyReader {
 public:
    CanopyReader(const std::string& path, const CanopyTarget& mesh) : path_(path), mesh_(mesh) {
        if (!file_.open(path)) {
            fail(std::string(trimmed(path)) + " not found.", {},
                 file_.fault() +
                     "; prepare the canopy file of this direction, or set canopy_mode = 0");
        }
    }

    void header() {
        std::int32_t id = 0;
        read(id);
        if (id != canopy_file_id) {
            inconsistent("the id is " + std::to_string(id) + ", expected " +
                         std::to_string(canopy_file_id));
        }
        std::int32_t ni = 0;
        std::int32_t nj = 0;
        std::int32_t nk = 0;
        read(ni, nj, nk);
        if (ni != mesh_.ni || nj != mesh_.nj || nk != mesh_.nk) {
            inconsistent("the counts are " + text_of(ni, nj, nk) + ", those of the mesh are " +
                         text_of(mesh_.ni, mesh_.nj, mesh_.nk));
        }
    }

    void array(Field3& field) {
        field.allocate(mesh_.ni, mesh_.nj, mesh_.nk);
        read(field);
    }

    // A file may end in front of the roughness, or within it.
    void roughness(Field2& gp_z0) {
        if (gp_z0.ni() != mesh_.ni || gp_z0.nj() != mesh_.nj) {
            gp_z0.release();
        }
        if (!has_roughness()) {
            return;
        }
        gp_z0.allocate(mesh_.ni, mesh_.nj);
        read(gp_z0);
    }

 private:
    [[noreturn]] void inconsistent(const std::string& what) {
        fail("Error: File Inconsistency.", path_ + ": " + what,
             "prepare the file anew on the mesh of this direction");
    }

    template <class... Items>
    void read(Items&... items) {
        if (!file_.read(items...)) {
            inconsistent(file_.fault());
        }
    }

    bool has_roughness() {
        const std::optional<std::int64_t> bytes = file_.next_size();
        if (!bytes && !file_.cut_off()) {
            inconsistent(file_.fault());
        }
        return bytes && *bytes >= std::int64_t{4} * mesh_.ni * mesh_.nj;
    }

    const std::string& path_;
    const CanopyTarget& mesh_;
    RecordReader file_;
};

void read_records(const std::string& file_name, const CanopyTarget& mesh, CanopyRecords& records) {
    CanopyReader reader(file_name, mesh);
    reader.header();
    reader.array(records.gp_cf);
    reader.array(records.gp_density);
    reader.array(records.gp_length);
    reader.roughness(records.gp_z0);
}

void check_cell(const std::string& file_name, const CanopyRecords& records, int i, int j, int k) {
    const std::array named{std::pair{"gp_cf", &records.gp_cf},
                           std::pair{"gp_density", &records.gp_density},
                           std::pair{"gp_length", &records.gp_length}};
    for (const auto& [name, field] : named) {
        if (std::isnan((*field)(i, j, k))) {
            fail("ERROR: NAN detacted in ccd.tuf file.",
                 file_name + ": " + name + " of cell (" + std::to_string(i) + ", " +
                     std::to_string(j) + ", " + std::to_string(k) + ")",
                 "prepare the file anew; an empty cell has the density 0");
        }
    }
}

void build_factors(const std::string& file_name, const CanopyParameters& parameters,
                   const CanopyRecords& records, const CanopyTarget& out) {
    for (Field3* field : {&out.gp_d, &out.gp_k, &out.gp_e}) {
        field->allocate(out.ni, out.nj, out.nk);
    }
    for (int k = 1; k <= out.nk; ++k) {
        for (int j = 1; j <= out.nj; ++j) {
            for (int i = 1; i <= out.ni; ++i) {
                check_cell(file_name, records, i, j, k);
                const float density = records.gp_density(i, j, k);
                out.gp_d(i, j, k) =
                    drag_density(records.gp_cf(i, j, k), density, records.gp_length(i, j, k));
                out.gp_k(i, j, k) = tke_dissipation_factor(parameters, density);
                out.gp_e(i, j, k) = ted_dissipation_factor(parameters, density);
            }
        }
    }
}

}  // namespace

void read_canopy_file(const std::string& file_name, const CanopyParameters& parameters,
                      CanopyRecords& records, const CanopyTarget& target) {
    target.gp_d.release();
    target.gp_k.release();
    target.gp_e.release();
    console("Reading canopy parameter file " + file_name);
    read_records(file_name, target, records);
    build_factors(file_name, parameters, records, target);
    if (target.z0_out != nullptr && records.gp_z0.size() > 0) {
        require(target.z0_out->ni() == target.ni && target.z0_out->nj() == target.nj,
                "roughness field of other size");
        *target.z0_out = records.gp_z0;
    }
}

}  // namespace torvex
