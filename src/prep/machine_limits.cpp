// Limits of the machine and of control groups.
//
// /proc/self/cgroup has a line "NUMBER:CONTROLLERS:PATH" for each hierarchy: version 1 with
// "memory" among the controllers, version 2 with none. /proc/self/mountinfo says where that
// hierarchy is mounted, and which of its groups the mount point shows. The limit of every group
// above counts too. In a container the path may be that of the host, which is mounted nowhere here:
// the groups that are there still count.

#include "prep/machine_limits.hpp"

#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string_view>
#include <system_error>
#include <vector>

#include "base/text_file.hpp"
#include "base/value_scanner.hpp"

namespace torvex {

namespace {

// A file of the kernel, whose size on disk is not that of its text.
std::optional<std::string> kernel_text(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

bool holds(std::string_view list, std::string_view word) {
    const auto words = split(list, ',');
    return std::ranges::find(words, word) != words.end();
}

// Where a hierarchy is mounted, and the group that the mount point is.
struct Mount {
    std::string point;
    std::string group;
};

// "36 35 0:31 GROUP POINT OPTIONS [...] - TYPE SOURCE SUPER_OPTIONS"
std::optional<Mount> find_mount(const std::string& mountinfo, bool second_version) {
    for (const std::string_view line : split_lines(mountinfo)) {
        const std::size_t dash = line.find(" - ");
        const auto head = split(line, ' ');
        if (dash == std::string_view::npos || head.size() < 6) {
            continue;
        }
        const auto tail = split(line.substr(dash + 3), ' ');
        const bool fits = second_version ? tail[0] == "cgroup2"
                                         : tail[0] == "cgroup" && holds(tail.back(), "memory");
        if (fits) {
            return Mount{std::string(head[4]), std::string(head[3])};
        }
    }
    return std::nullopt;
}

// A file that holds a number of bytes. Version 1 has a number near 2^63 where there is no limit,
// version 2 the word "max".
std::optional<std::int64_t> limit_in(const std::string& file) {
    constexpr double no_limit = 0x1p62;
    const std::string text = kernel_text(file).value_or("");
    const std::vector<std::string_view> lines = split_lines(text);
    double bytes = 0;
    if (lines.empty() || !parse_real(trimmed(lines[0]), bytes) ||
        !(bytes >= 0 && bytes < no_limit)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(bytes);
}

// The path of a group below its mount point.
std::string below_mount(std::string_view path, const Mount& mount) {
    if (mount.group != "/" && path.starts_with(mount.group)) {
        path.remove_prefix(mount.group.size());
    }
    return std::string(path);
}

std::optional<std::int64_t> least_limit(const std::string& top, std::string path,
                                        const char* file) {
    std::optional<std::int64_t> least;
    for (;;) {
        const auto limit = limit_in(top + path + "/" + file);
        if (limit) {
            least = std::min(*limit, least.value_or(*limit));
        }
        const std::size_t slash = path.rfind('/');
        if (slash == std::string::npos) {
            return least;
        }
        path.erase(slash);
    }
}

}  // namespace

std::optional<std::int64_t> group_memory_limit(const std::string& root) {
    const auto groups = kernel_text(root + "/proc/self/cgroup");
    const auto mounts = kernel_text(root + "/proc/self/mountinfo");
    if (!groups || !mounts) {
        return std::nullopt;
    }
    std::optional<std::int64_t> least;
    for (const std::string_view line : split_lines(*groups)) {
        const auto parts = split(line, ':');
        if (parts.size() < 3) {
            continue;
        }
        const bool second_version = parts[1].empty();
        if (!second_version && !holds(parts[1], "memory")) {
            continue;
        }
        if (const auto mount = find_mount(*mounts, second_version)) {
            const std::string_view path = line.substr(parts[0].size() + parts[1].size() + 2);
            const auto limit = least_limit(root + mount->point, below_mount(path, *mount),
                                           second_version ? "memory.max" : "memory.limit_in_bytes");
            if (limit) {
                least = std::min(*limit, least.value_or(*limit));
            }
        }
    }
    return least;
}

std::int64_t peak_memory() {
    constexpr std::int64_t kilobyte = 1024;
    rusage usage{};
    return getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss * kilobyte : 0;
}

std::optional<std::int64_t> free_disk() {
    std::error_code error;
    const std::filesystem::space_info space = std::filesystem::space(".", error);
    if (error) {
        return std::nullopt;
    }
    constexpr std::uintmax_t most = std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(std::min(space.available, most));
}

}  // namespace torvex
