#include "canopy/shape/shape_bytes.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>

#include "base/stop.hpp"

namespace torvex {

namespace {

constexpr std::int64_t header_bytes = 100;
constexpr std::int64_t index_entry_bytes = 8;
constexpr std::int64_t record_head_bytes = 8;
constexpr std::int64_t polygon_head_bytes = 44;  // type, box, number of parts, number of points
constexpr std::int32_t file_code = 9994;
constexpr std::int32_t format_version = 1000;

constexpr int null_shape = 0;
constexpr int polygon = 5;
constexpr int polygon_z = 15;
constexpr int polygon_m = 25;

std::string existing(const std::string& stem, const char* lower, const char* upper) {
    std::error_code error;
    for (const char* extension : {lower, upper}) {
        if (std::filesystem::is_regular_file(stem + extension, error)) {
            return stem + extension;
        }
    }
    return {};
}

std::uint32_t word(const unsigned char* p) {
    return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8U |
           static_cast<std::uint32_t>(p[2]) << 16U | static_cast<std::uint32_t>(p[3]) << 24U;
}

std::int32_t little(const unsigned char* p) {
    return static_cast<std::int32_t>(word(p));
}

std::int32_t big(const unsigned char* p) {
    const std::array<unsigned char, 4> turned{p[3], p[2], p[1], p[0]};
    return static_cast<std::int32_t>(word(turned.data()));
}

double real(const unsigned char* p) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(word(p)) |
                                 static_cast<std::uint64_t>(word(p + 4)) << 32U);
}

bool all_finite(const unsigned char* p, std::int64_t count) {
    for (std::int64_t n = 0; n < count; ++n) {
        if (!std::isfinite(real(p + 8 * n))) {
            return false;
        }
    }
    return true;
}

[[noreturn]] void damaged(const std::string& file, const std::string& what) {
    stop(1, "shapefile damaged: " + what, file,
         "write the shapefile anew with the tool it came from");
}

// The 100 bytes that .shp and .shx begin with; returns the type of the shapes.
int read_header(FileBytes& file, const std::string& name) {
    std::array<unsigned char, header_bytes> head{};
    if (!file.read(0, head)) {
        damaged(name, "the file ends inside its header");
    }
    if (big(head.data()) != file_code || little(head.data() + 28) != format_version) {
        damaged(name, "the header is not that of a shapefile");
    }
    const std::int64_t told = std::int64_t{2} * big(head.data() + 24);
    if (told < header_bytes || told > file.size()) {
        damaged(name, "the header tells of " + std::to_string(told) + " bytes, the file has " +
                          std::to_string(file.size()));
    }
    if (told > header_bytes && !all_finite(head.data() + 36, 4)) {
        damaged(name, "the box of the header is not finite");
    }
    return little(head.data() + 32);
}

}  // namespace

ShapeFileNames shape_file_names(const std::string& name) {
    const std::size_t slash = name.find_last_of('/');
    const std::size_t dot = name.find_last_of('.');
    const bool has_extension =
        dot != std::string::npos && (slash == std::string::npos || dot > slash);
    const std::string stem = has_extension ? name.substr(0, dot) : name;
    return {existing(stem, ".shp", ".SHP"), existing(stem, ".shx", ".SHX"),
            existing(stem, ".dbf", ".DBF")};
}

FileBytes::~FileBytes() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

bool FileBytes::open(const std::string& path) {
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat state {};
    if (descriptor_ < 0 || ::fstat(descriptor_, &state) != 0) {
        return false;
    }
    size_ = state.st_size;
    return true;
}

bool FileBytes::read(std::int64_t at, std::span<unsigned char> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::pread(descriptor_, bytes.data() + done, bytes.size() - done,
                                  at + static_cast<std::int64_t>(done));
        if (n <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(n);
    }
    return true;
}

void ShapeBytes::fail(const std::string& what) const {
    damaged(name_, what);
}

void ShapeBytes::fail(const std::string& what, int entity) const {
    damaged(name_ + ", entity " + std::to_string(entity), what);
}

void ShapeBytes::open(const ShapeFileNames& names) {
    name_ = names.shp;
    if (!shp_.open(names.shp)) {
        fail("it cannot be opened");
    }
    type_ = read_header(shp_, name_);
    read_index(names.shx);
}

void ShapeBytes::read_index(const std::string& shx) {
    FileBytes index;
    if (!index.open(shx)) {
        damaged(shx, "it cannot be opened");
    }
    if (read_header(index, shx) != type_) {
        damaged(shx, "the type of its shapes is not that of the .shp");
    }
    const std::int64_t entries = (index.size() - header_bytes) / index_entry_bytes;
    std::array<unsigned char, header_bytes> head{};
    index.read(0, head);
    const std::int64_t told =
        (std::int64_t{2} * big(head.data() + 24) - header_bytes) / index_entry_bytes;
    if (told > entries || told > std::numeric_limits<std::int32_t>::max()) {
        damaged(shx, "the index tells of more entities than it holds");
    }
    std::vector<unsigned char> bytes(static_cast<std::size_t>(told * index_entry_bytes));
    if (!index.read(header_bytes, bytes)) {
        damaged(shx, "the index cannot be read");
    }
    spans_.resize(static_cast<std::size_t>(told));
    for (std::size_t n = 0; n < spans_.size(); ++n) {
        const unsigned char* entry = bytes.data() + n * index_entry_bytes;
        spans_[n] = {std::int64_t{2} * big(entry), std::int64_t{2} * big(entry + 4)};
        const Span& span = spans_[n];
        if (span.at < header_bytes || span.bytes < 4 ||
            span.at + record_head_bytes + span.bytes > shp_.size()) {
            damaged(shx, "entity " + std::to_string(n) + " lies outside the .shp");
        }
    }
}

void ShapeBytes::check(int i) {
    const Span& span = spans_[static_cast<std::size_t>(i)];
    record_.resize(static_cast<std::size_t>(record_head_bytes + span.bytes));
    if (!shp_.read(span.at, record_)) {
        fail("the record cannot be read", i);
    }
    if (std::int64_t{2} * big(record_.data() + 4) != span.bytes) {
        fail("the length of the record is not that of the index", i);
    }
    const int type = little(record_.data() + record_head_bytes);
    if (type != null_shape && type != type_) {
        fail("the record is of type " + std::to_string(type) + ", the file of type " +
                 std::to_string(type_),
             i);
    }
    if (type == polygon || type == polygon_z || type == polygon_m) {
        check_polygon(i);
    }
}

// type, box (4 doubles), number of parts, number of points, parts, points (2 doubles); then, for Z,
// its range and a value for each point; then, for Z and M, the same for M, which may be left out.
void ShapeBytes::check_polygon(int entity) {
    const unsigned char* body = record_.data() + record_head_bytes;
    const auto bytes = static_cast<std::int64_t>(record_.size()) - record_head_bytes;
    if (bytes < polygon_head_bytes) {
        fail("the record ends inside the head of a polygon", entity);
    }
    const std::int64_t parts = little(body + 36);
    const std::int64_t points = little(body + 40);
    if (parts < 1 || points < 1 || parts > points) {
        fail("a polygon of " + std::to_string(parts) + " parts and " + std::to_string(points) +
                 " points",
             entity);
    }
    const std::int64_t z = type_ == polygon_z ? 16 + 8 * points : 0;
    if (polygon_head_bytes + 4 * parts + 16 * points + z > bytes) {
        fail("the record is too short for " + std::to_string(parts) + " parts and " +
                 std::to_string(points) + " points",
             entity);
    }
    std::int64_t before = -1;
    for (std::int64_t part = 0; part < parts; ++part) {
        const std::int64_t start = little(body + polygon_head_bytes + 4 * part);
        if (start <= before || start >= points || (part == 0 && start != 0)) {
            fail("ring " + std::to_string(part) + " begins at point " + std::to_string(start) +
                     ", out of order",
                 entity);
        }
        before = start;
    }
    if (!all_finite(body + 4, 4) ||
        !all_finite(body + polygon_head_bytes + 4 * parts, 2 * points)) {
        fail("a coordinate is not finite", entity);
    }
}

void check_table_bytes(const std::string& dbf) {
    constexpr std::int64_t field_bytes = 32;
    constexpr unsigned char end_of_fields = 0x0D;
    FileBytes file;
    std::array<unsigned char, field_bytes> head{};
    if (!file.open(dbf) || !file.read(0, head)) {
        damaged(dbf, "the file ends inside its header");
    }
    const std::int64_t rows = little(head.data() + 4);
    const std::int64_t head_length = head[8] + 256 * head[9];
    const std::int64_t row_length = head[10] + 256 * head[11];
    if (rows < 0 || head_length < field_bytes || row_length < 1 ||
        head_length + rows * row_length > file.size()) {
        damaged(dbf, "the header tells of " + std::to_string(rows) + " rows of " +
                         std::to_string(row_length) + " bytes, the file has " +
                         std::to_string(file.size()) + " bytes");
    }
    std::vector<unsigned char> fields(static_cast<std::size_t>(head_length - field_bytes));
    if (!file.read(field_bytes, fields)) {
        damaged(dbf, "the fields cannot be read");
    }
    std::int64_t width = 1;  // in front of the fields stands the mark of a deleted row
    for (std::size_t at = 0; at + field_bytes <= fields.size() && fields[at] != end_of_fields;
         at += field_bytes) {
        width += fields[at + 16];
    }
    if (width > row_length) {
        damaged(dbf, "the fields are " + std::to_string(width) + " bytes wide, a row has " +
                         std::to_string(row_length));
    }
}

}  // namespace torvex
