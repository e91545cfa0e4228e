// A map file, header and values. Each row is read straight into the array; what a corrupt header
// asks for is allocated only if the data could hold it.

#include "maps/map_file.hpp"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

#include "base/edit.hpp"
#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "maps/map_bytes.hpp"

namespace torvex {

namespace {

[[noreturn]] void stop_open(const MapRole& role, const std::string& path,
                            const std::string& reason) {
    stop(role.code + 1, "cannot open the " + std::string(role.name) + ": " + reason, path,
         "name an existing map in " + std::string(role.key));
}

[[noreturn]] void stop_read(const MapRole& role, const std::string& what, const std::string& where,
                            const std::string& fix) {
    stop(role.code + 3, std::string(role.name) + ": " + what, where, fix);
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

// Rows that left values unread are why the data end too early.
std::string hint_of_long_rows(const MapFindings& findings) {
    return findings.long_rows == 0
               ? ""
               : "; rows in front of it left values unread on their line, from line " +
                     std::to_string(findings.first_long_line) + " on";
}

std::shared_ptr<const Field2> read_values(MapBytes& bytes, const MapHeader& header,
                                          const MapRole& role, MapFindings& findings) {
    const std::string& path = bytes.identity().path;
    const double count = value_count(header);
    const std::string size = std::to_string(header.columns) + " columns (n_lon) by " +
                             std::to_string(header.rows) + " rows (n_lat)";
    ListInput input = bytes.body();
    if (count > most_values(input.rest(), header)) {
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
        const RowInFile at{.row = j, .line = input.line(), .text = input.rest()};
        if (!input.read_row(row.data(), columns)) {
            const ListFault& fault = input.fault();
            const std::string problem =
                fault.text.empty()
                    ? "the file ends"
                    : "cannot read " + excerpt(fault.text) + ", expected " + fault.expected + ",";
            stop_read(role, problem + " in data row " + std::to_string(j), place(path, fault.line),
                      "the header promises " + size + hint_of_long_rows(findings));
        }
        if (!all_acceptable(row, role.roughness)) {
            stop_value(row, j, place(path, at.line), role);
        }
        add_row(row, at, input, role.roughness, findings);
    }
    if (input.number_follows()) {
        findings.line_behind = input.line();
    }
    return values;
}

void warn_of_signs(std::string_view key, const FixedArray<float, 2>& base, const std::string& path,
                   RunLog& log) {
    if ((base(1) < 0.0F && base(2) > 0.0F) || (base(1) > 0.0F && base(2) < 0.0F)) {
        const double minutes = static_cast<double>(base(1)) * 60.0 + static_cast<double>(base(2));
        log.warn(std::string(key) + " in " + path +
                 " has numbers of different sign and is understood as" + edit::F(minutes, 12, 4) +
                 " minutes.");
    }
}

}  // namespace

std::shared_ptr<const ParsedMap> read_map_file(const std::string& path, const MapRole& role,
                                               const std::shared_ptr<const ParsedMap>& last,
                                               RunLog& log) {
    MapBytes bytes(path);
    if (!bytes.problem().empty()) {
        stop_open(role, path, bytes.problem());
    }
    if (last != nullptr && last->file == bytes.identity()) {
        return last;
    }
    const MapHeader header = bytes.read_header();
    if (header.error != 0) {
        stop(role.code + header.error, std::string(role.name) + ": " + header.problem,
             place(path, header.line),
             "a map begins with <TORVEX_MAP lon-lat>, its keys n_lon, n_lat, d_lon, d_lat, "
             "base_longitude, base_latitude and the line --DATA--");
    }
    require_memory(static_cast<double>(bytes.identity().size), "the file has", path, role);
    if (!bytes.read_all()) {
        stop_read(role, bytes.problem(), path, "the file must be readable");
    }
    MapFindings findings;
    auto values = read_values(bytes, header, role, findings);
    warn_of_signs("base_longitude", header.base_longitude, path, log);
    warn_of_signs("base_latitude", header.base_latitude, path, log);
    if (role.roughness && findings.odd_count > 0) {
        log.warn("roughness above 10 m from line " + std::to_string(findings.first_row_line) +
                 " of " + path + " on, largest" + edit::F(findings.largest, 10, 3) +
                 " m: it is taken as 9.999 m.");
    }
    return std::make_shared<const ParsedMap>(
        ParsedMap{bytes.identity(), header, std::move(values), findings});
}

}  // namespace torvex
