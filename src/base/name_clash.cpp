#include "base/name_clash.hpp"

#include <filesystem>
#include <map>
#include <system_error>
#include <utility>
#include <vector>

#include "base/text_file.hpp"

namespace torvex {

namespace {

namespace fs = std::filesystem;

// Where a name leads: its directory without links, and the last part as it stands.
fs::path place_of_name(const fs::path& path) {
    std::error_code error;
    const fs::path whole = fs::absolute(path, error).lexically_normal();
    const fs::path directory = fs::weakly_canonical(whole.parent_path(), error);
    return error ? whole : directory / whole.filename();
}

bool same_file(const fs::path& a, const fs::path& b) {
    std::error_code error;
    return fs::equivalent(a, b, error) && !error;
}

}  // namespace

std::optional<NameClash> name_clash(std::span<const NamedInput> inputs,
                                    std::span<const std::string> outputs) {
    std::map<fs::path, const std::string*> places;
    std::vector<const std::string*> existing;
    for (const std::string& output : outputs) {
        places.emplace(place_of_name(output), &output);
        std::error_code error;
        if (fs::exists(output, error)) {
            existing.push_back(&output);
        }
    }
    for (const NamedInput& input : inputs) {
        const std::string path(trimmed(input.path));
        if (path.empty()) {
            continue;
        }
        if (const auto same = places.find(place_of_name(path)); same != places.end()) {
            return NameClash{input, *same->second};
        }
        for (const std::string* const output : existing) {
            if (same_file(path, *output)) {
                return NameClash{input, *output};
            }
        }
    }
    return std::nullopt;
}

}  // namespace torvex
