// A map file, header and values. The file is taken into memory in one piece and each row of it is
// read straight into the array; what a corrupt header asks for is allocated only if the data could
// hold it.

#include "maps/map_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <span>

#include "base/edit.hpp"
#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

constexpr float largest_roughness = 10.0F;  // where the roughness average R(z0) has its pole [m]

[[noreturn]] void stop_open(const MapRole& role, const std::string& path, const char* reason) {
    stop(role.code + 1, "cannot open the " + std::string(role.name) + ": " + reason, path,
         "name an existing map in " + std::string(role.key));
}

[[noreturn]] void stop_read(const MapRole& role, const std::string& what, const std::string& where,
                            const std::string& fix) {
    stop(role.code + 3, std::string(role.name) + ": " + what, where, fix);
}

class OpenFile {
 public:
    // Opened without waiting, so that a named pipe cannot hold the run.
    explicit OpenFile(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int descriptor() const { return descriptor_; }

 private:
    int descriptor_;
};

FileIdentity identity_of(const OpenFile& file, const std::string& path, const MapRole& role) {
    struct stat status {};
    if (file.descriptor() < 0 || ::fstat(file.descriptor(), &status) != 0) {
        stop_open(role, path, std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        stop_open(role, path, "it is not a regular file");
    }
    return {path,           status.st_dev,         status.st_ino,
            status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

// Refuses what the machine could only answer by ending the run.
void require_memory(double bytes, const char* for_what, const std::string& path,
                    const MapRole& role) {
    const double machine = static_cast<double>(::sysconf(_SC_PHYS_PAGES)) *
                           static_cast<double>(::sysconf(_SC_PAGE_SIZE));
    if (bytes > machine) {
        stop_read(role,
                  std::string(for_what) + edit::F(bytes * 1.0e-9, 12, 1) +
                      " GB, which is more than the memory of this machine",
                  path, "check n_lon and n_lat, or cut the map");
    }
}

struct Bytes {
    std::unique_ptr<char[]> data;
    std::size_t size = 0;

    std::string_view text() const { return {data.get(), size}; }
};

// A file that shrinks meanwhile ends early, one that grows is cut: the parser sees to the rest.
Bytes read_all(const OpenFile& file, const FileIdentity& identity, const MapRole& role) {
    require_memory(static_cast<double>(identity.size), "the file has", identity.path, role);
    const auto wanted = static_cast<std::size_t>(identity.size);
    Bytes bytes{std::make_unique_for_overwrite<char[]>(wanted), 0};
    while (bytes.size < wanted) {
        const ssize_t got =
            ::read(file.descriptor(), bytes.data.get() + bytes.size, wanted - bytes.size);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            stop_read(role, std::strerror(errno), identity.path, "the file must be readable");
        }
        if (got == 0) {
            break;
        }
        bytes.size += static_cast<std::size_t>(got);
    }
    return bytes;
}

double value_count(const MapHeader& header) {
    return static_cast<double>(header.columns) * static_cast<double>(header.rows);
}

// Up to so many values a map may be written in short, with repeat counts and slashes. Beyond, a few
// damaged bytes could fill the memory with gigabytes.
constexpr double largest_short_map = 1.0e8;

// No more values than this can stand in a text: one for each byte, but for repeat counts and for
// slashes, which end a row wherever they stand.
double most_values(std::string_view text, const MapHeader& header) {
    auto most = static_cast<double>(text.size()) + 1.0;
    if (value_count(header) > largest_short_map) {
        return most;
    }
    for (std::size_t at = text.find('/'); at != std::string_view::npos;
         at = text.find('/', at + 1)) {
        most += header.columns;
    }
    for (std::size_t at = text.find('*'); at != std::string_view::npos;
         at = text.find('*', at + 1)) {
        double weight = 1.0;
        constexpr std::size_t longest_count = 40;  // leading zeros included
        for (std::size_t n = 1; n <= std::min(at, longest_count); ++n, weight *= 10.0) {
            const char c = text[at - n];
            if (c < '0' || c > '9') {
                break;
            }
            most += weight * (c - '0');
        }
    }
    return most;
}

bool acceptable(float value, bool roughness) {
    return std::isfinite(value) && (!roughness || value > 0.0F);
}

bool all_acceptable(std::span<const float> row, bool roughness) {
    constexpr float highest = std::numeric_limits<float>::max();
    const float lowest = roughness ? std::numeric_limits<float>::denorm_min() : -highest;
    int bad = 0;
    for (const float value : row) {
        bad |= static_cast<int>(!(value >= lowest && value <= highest));
    }
    return bad == 0;
}

[[noreturn]] void stop_value(std::span<const float> row, int j, const std::string& where,
                             const MapRole& role) {
    const auto bad = std::find_if(row.begin(), row.end(), [&role](float value) {
        return !acceptable(value, role.roughness);
    });
    const float value = *bad;
    const std::string what = std::string(role.name) + ": column " +
                             std::to_string(bad - row.begin() + 1) + " of data row " +
                             std::to_string(j) + ", which begins here, is" + edit::E(value, 15, 7);
    const bool not_positive = role.roughness && (std::isnan(value) || value <= 0.0F);
    if (not_positive) {
        stop(role.code + 4, what, where, "every roughness length must be above 0");
    }
    stop(role.code + 3, what, where, "every value must be a finite number");
}

// The largest value of a roughness map and the first line of the first row above the limit.
struct Peak {
    float value = 0;
    long line = 0;
};

std::shared_ptr<const Field2> read_values(ListInput& input, double most, const MapHeader& header,
                                          const std::string& path, const MapRole& role,
                                          Peak& peak) {
    const double count = value_count(header);
    const std::string size = std::to_string(header.columns) + " columns (n_lon) by " +
                             std::to_string(header.rows) + " rows (n_lat)";
    if (count > most) {
        stop_read(role, "the data are too short for " + size, place(path, input.line()),
                  count > largest_short_map
                      ? "correct the counts, or complete the map; one so large takes no repeat "
                        "counts or slashes"
                      : "correct the counts, or complete the map");
    }
    require_memory(count * sizeof(float), "its values take", path, role);

    auto values = std::make_shared<Field2>(header.columns, header.rows);
    const auto columns = static_cast<std::size_t>(header.columns);
    for (int j = 1; j <= header.rows; ++j) {
        const std::span<float> row(values->data() + columns * static_cast<std::size_t>(j - 1),
                                   columns);
        const long line = input.line();
        if (!input.read_row(row.data(), columns)) {
            const ListFault& fault = input.fault();
            const std::string problem =
                fault.text.empty()
                    ? "the file ends"
                    : "cannot read " + excerpt(fault.text) + ", expected " + fault.expected + ",";
            stop_read(role, problem + " in data row " + std::to_string(j), place(path, fault.line),
                      "the header promises " + size);
        }
        if (!all_acceptable(row, role.roughness)) {
            stop_value(row, j, place(path, line), role);
        }
        if (role.roughness) {
            peak.value = std::max(peak.value, *std::max_element(row.begin(), row.end()));
            if (peak.line == 0 && peak.value > largest_roughness) {
                peak.line = line;
            }
        }
    }
    return values;
}

void warn_of_signs(std::string_view key, const FixedArray<float, 2>& base, const std::string& path,
                   RunLog& log) {
    if ((base(1) < 0.0F && base(2) > 0.0F) || (base(1) > 0.0F && base(2) < 0.0F)) {
        const double minutes = static_cast<double>(base(1)) * 60.0 + static_cast<double>(base(2));
        log.timed(" Warning: " + std::string(key) + " in " + path +
                  " has numbers of different sign and is understood as" + edit::F(minutes, 12, 4) +
                  " minutes.");
    }
}

}  // namespace

std::shared_ptr<const ParsedMap> read_map_file(const std::string& path, const MapRole& role,
                                               const std::shared_ptr<const ParsedMap>& last,
                                               RunLog& log) {
    const OpenFile file(path);
    const FileIdentity identity = identity_of(file, path, role);
    if (last != nullptr && last->file == identity) {
        return last;
    }
    const Bytes bytes = read_all(file, identity, role);
    const std::string_view text = without_byte_order_mark(bytes.text());
    ListInput input(text);
    const MapHeader header = read_map_header(input);
    if (header.error != 0) {
        stop(role.code + header.error, std::string(role.name) + ": " + header.problem,
             place(path, header.line),
             "a map begins with <TORVEX_MAP lon-lat>, its keys n_lon, n_lat, d_lon, d_lat, "
             "base_longitude, base_latitude and the line --DATA--");
    }
    Peak peak;
    auto values = read_values(input, most_values(text, header), header, path, role, peak);
    warn_of_signs("base_longitude", header.base_longitude, path, log);
    warn_of_signs("base_latitude", header.base_latitude, path, log);
    if (peak.line > 0) {
        log.timed(" Warning: roughness above 10 m from line " + std::to_string(peak.line) + " of " +
                  path + " on, largest" + edit::F(peak.value, 10, 3) +
                  " m: it is taken as 9.999 m.");
    }
    return std::make_shared<const ParsedMap>(ParsedMap{identity, header, std::move(values)});
}

}  // namespace torvex
