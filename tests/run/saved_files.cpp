#include "run/saved_files.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/file_names.hpp"
#include "base/record_file.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"

namespace torvex::test {

namespace {

namespace fs = std::filesystem;

constexpr int count_record = 14;  // of a result file, behind id, extents and eleven arrays

// Reads a file of records to its end; `count` takes the iteration of a result file.
std::string complaint_about_records(const std::string& path, std::int32_t& count) {
    RecordReader file;
    file.open(path);
    std::vector<float> values;
    int record = 0;
    while (file.fault().empty() && !file.at_end()) {
        ++record;
        const std::optional<std::int64_t> bytes = file.next_size();
        if (bytes && *bytes == 4 && (record == 1 || record == count_record)) {
            file.read(count);
        } else if (bytes && record > 2) {
            values.resize(static_cast<std::size_t>(*bytes) / sizeof(float));
            file.read(std::span(values));
            if (!std::ranges::all_of(values, [](float value) { return std::isfinite(value); })) {
                return path + ": record " + std::to_string(record) + " is not finite";
            }
        } else {
            file.skip();
        }
    }
    return file.fault().empty() ? std::string() : path + ": " + file.fault();
}

std::string complaint_about_info(const fs::path& path) {
    const std::optional<RestartInfo> info = read_restart_info(path.string());
    if (!info) {
        return path.string() + " has no count";
    }
    const std::string name = path.string();
    const std::string stem = name.substr(0, name.find("restart", name.rfind('/') + 9));
    const std::string result = stem + result_name(info->outer_count);
    std::int32_t count = -1;
    if (!fs::exists(result) || !complaint_about_records(result, count).empty() ||
        count != info->outer_count) {
        return name + " names the result " + std::to_string(info->outer_count) +
               ", which is not there or has another count";
    }
    const bool plain = name.ends_with("-restart.info");
    if (plain && fs::last_write_time(path) < fs::last_write_time(stem + std::string(xyz_name))) {
        return name + " is older than the mesh beside it";
    }
    return {};
}

}  // namespace

std::string complaint_about_saved_files(const fs::path& directory) {
    std::string complaint;
    for (const auto& entry : fs::directory_iterator(directory)) {
        std::int32_t ignored = 0;
        if (entry.path().extension() == ".tuf") {
            complaint += complaint_about_records(entry.path().string(), ignored);
        } else if (entry.path().extension() == ".info" &&
                   !entry.path().filename().string().ends_with(file_names::fingerprint)) {
            complaint += complaint_about_info(entry.path());
        }
    }
    return complaint;
}

bool lies_at(const std::string& xyz_file, float height) {
    const Extents n = read_extents(xyz_file, xyz_codes);
    Field3 x(n.ni, n.nj, n.nk);
    Field3 y = x;
    Field3 z = x;
    read_xyz(xyz_file, x, y, z);
    bool level = true;
    for (int j = 1; j <= n.nj; ++j) {
        for (int i = 1; i <= n.ni; ++i) {
            level = level && std::abs(z(i, j, 1) - height) < 1e-3F;
        }
    }
    return level;
}

bool has_temporary_file(const fs::path& directory) {
    std::error_code gone;
    for (const auto& entry : fs::directory_iterator(directory, gone)) {
        if (entry.path().extension() == ".tmp") {
            return true;
        }
    }
    return false;
}

}  // namespace torvex::test
