#include <limits>
#include <optional>
#include <string>

#include "base/assertion.hpp"
#include "base/edit.hpp"
#include "base/record_file.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "results/result_files.hpp"

namespace torvex {

namespace {

Extents extents_of(const Field3& field) {
    return {.ni = field.ni(), .nj = field.nj(), .nk = field.nk()};
}

std::string text_of(const Extents& e, int rank = 3) {
    const std::string plane = std::to_string(e.ni) + " x " + std::to_string(e.nj);
    return rank == 3 ? plane + " x " + std::to_string(e.nk) : plane;
}

// A file of the family that is being read, with what to do where it does not fit.
struct ResultReader {
    const std::string& path;
    const ReadCodes& codes;
    RecordReader records;

    void open() {
        if (!records.open(path)) {
            stop(codes.open, records.fault(), path, codes.fix);
        }
    }

    std::int32_t id() {
        std::int32_t id = 0;
        if (!records.read(id)) {
            stop(codes.id, records.fault(), path, codes.fix);
        }
        return id;
    }

    void expect_id(std::int32_t expected) {
        const std::int32_t found = id();
        if (found != expected) {
            stop(codes.id,
                 "the file has the id " + std::to_string(found) + ", expected " +
                     std::to_string(expected),
                 path, codes.fix);
        }
    }

    void expect(const Extents& found, const Extents& mesh, int rank = 3) {
        if (found != mesh) {
            stop(codes.extents,
                 "the arrays of the file have " + text_of(found, rank) +
                     " elements, those of the mesh have " + text_of(mesh, rank),
                 path, codes.fix);
        }
    }

    template <class... Items>
    void read(Items&... items) {
        if (!records.read(items...)) {
            stop(codes.extents, records.fault(), path, codes.fix);
        }
    }

    // A record of the extents that the header was compared with.
    void read_array(Field3& field, const Extents& extents) {
        require(extents_of(field) == extents, "arrays of different extents for one file");
        read(field);
    }

    // A field without room is read all the same, so that a damaged record shows.
    void read_fields(FlowState& flow, std::span<const FlowField> fields) {
        const Extents extents = extents_of(flow.u);
        Field3 passed_over;
        for (const FlowField& field : fields) {
            if ((flow.*field.member).size() > 0) {
                read_array(flow.*field.member, extents);
                continue;
            }
            if (passed_over.size() == 0) {
                passed_over.allocate(extents.ni, extents.nj, extents.nk);
            }
            read(passed_over);
        }
    }
};

void open_xyz(ResultReader& file, const Extents& nodes) {
    file.open();
    file.expect_id(101);
    Extents found;
    file.read(found.ni, found.nj, found.nk);
    if (found != nodes) {
        console(edit::list(found.ni, found.nj, found.nk, nodes.ni, nodes.nj, nodes.nk));
    }
    file.expect(found, nodes);
}

// True if the header fits and all arrays are there and whole.
bool is_whole_vpkeinp(const std::string& path, const Field3& u) {
    RecordReader file;
    std::int32_t id = 0;
    Extents extents;
    if (!file.open(path) || !file.read(id) || id != start_id ||
        !file.read(extents.ni, extents.nj, extents.nk) || extents != extents_of(u)) {
        return false;
    }
    for (std::size_t n = 0; n < start_fields.size(); ++n) {
        const std::optional<std::int64_t> bytes = file.next_size();
        if (!bytes || *bytes != static_cast<std::int64_t>(u.size() * sizeof(float)) ||
            !file.skip()) {
            return false;
        }
    }
    return true;
}

}  // namespace

Extents read_extents(const std::string& path, const ReadCodes& codes) {
    ResultReader file{.path = path, .codes = codes, .records = {}};
    file.open();
    file.id();
    Extents e;
    file.read(e.ni, e.nj, e.nk);
    // Positive 32-bit factors: the product of two fits 64 bits, of three it may not.
    const std::int64_t plane = std::int64_t{e.ni} * e.nj;
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (e.ni < 1 || e.nj < 1 || e.nk < 1 || plane > most || plane * e.nk > most) {
        stop(codes.extents, "the extents " + text_of(e) + " cannot be those of a mesh", path,
             codes.fix);
    }
    const std::optional<std::int64_t> bytes = file.records.next_size();
    if (!bytes) {
        stop(codes.extents, file.records.fault(), path, codes.fix);
    }
    if (*bytes != plane * e.nk * 4) {
        stop(codes.extents,
             "the first array has " + std::to_string(*bytes) + " bytes, which are not " +
                 text_of(e) + " reals",
             path, codes.fix);
    }
    return e;
}

void check_xyz(const std::string& path, const Extents& nodes, const ReadCodes& codes) {
    ResultReader file{.path = path, .codes = codes, .records = {}};
    open_xyz(file, nodes);
    const std::int64_t wanted = std::int64_t{nodes.ni} * nodes.nj * nodes.nk * 4;
    for (const char* array : {"x", "y", "z"}) {
        const std::optional<std::int64_t> bytes = file.records.next_size();
        if (!bytes) {
            stop(codes.extents, file.records.fault(), path, codes.fix);
        }
        if (*bytes != wanted) {
            stop(codes.extents,
                 "the array " + std::string(array) + " has " + std::to_string(*bytes) +
                     " bytes, expected " + std::to_string(wanted),
                 path, codes.fix);
        }
        file.records.skip();
    }
}

void read_xyz(const std::string& path, Field3& xn, Field3& yn, Field3& zn, const ReadCodes& codes) {
    ResultReader file{.path = path, .codes = codes, .records = {}};
    open_xyz(file, extents_of(xn));
    for (Field3* field : {&xn, &yn, &zn}) {
        file.read_array(*field, extents_of(xn));
    }
}

void read_z0(const std::string& path, Field2& z0, const ReadCodes& codes) {
    ResultReader file{.path = path, .codes = codes, .records = {}};
    file.open();
    file.expect_id(102);
    Extents found;
    file.read(found.ni, found.nj);
    file.expect(found, {.ni = z0.ni(), .nj = z0.nj(), .nk = 0}, 2);
    file.read(z0);
}

bool read_vpkeinp(const std::string& path, FlowState& flow) {
    if (!is_whole_vpkeinp(path, flow.u)) {
        return false;
    }
    constexpr ReadCodes codes{.open = 1, .id = 1, .extents = 1};
    ResultReader file{.path = path, .codes = codes, .records = {}};
    file.open();
    file.records.skip();
    file.records.skip();
    file.read_fields(flow, start_fields);
    return true;
}

StoredResult read_vpkeout(const std::string& path, int turbulence_model, FlowState& flow,
                          const ReadCodes& codes) {
    ResultReader file{.path = path, .codes = codes, .records = {}};
    file.open();
    StoredResult result;
    result.id = file.id();
    if (result.id != 112 && result.id != 122 && result.id != 132) {
        stop(codes.id,
             "the file has the id " + std::to_string(result.id) + ", expected 112, 122 or 132",
             path, codes.fix);
    }
    Extents found;
    file.read(found.ni, found.nj, found.nk);
    file.expect(found, extents_of(flow.u));
    file.read_fields(flow, result_fields);
    file.read(result.outer_count);
    if (result.outer_count < 0) {
        stop(codes.extents,
             "the iteration is " + std::to_string(result.outer_count) + ", expected 0 or more",
             path, codes.fix);
    }
    file.read(result.max_resid_m);
    if (turbulence_model == whatever_is_stored || result.id == result_id(turbulence_model)) {
        file.read_fields(flow, further_fields(result.id));
    }
    return result;
}

}  // namespace torvex
