#include "results/restart_info.hpp"

#include <unistd.h>

#include <cerrno>
#include <limits>
#include <string_view>
#include <system_error>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"
#include "base/whole_file.hpp"

namespace torvex {

namespace {

void read_residuals(std::string_view line, RestartInfo& info) {
    ValueScanner scanner({.at = line.data(), .end = line.data() + line.size(), .line = 2},
                         {.over_lines = false});
    for (float* residual : {&info.resid_m, &info.resid_u, &info.resid_v, &info.resid_w}) {
        const ValueToken token = scanner.next();
        if (token.kind == ValueToken::Kind::null) {
            continue;
        }
        if (token.kind != ValueToken::Kind::word || !parse_real(token.text, *residual)) {
            return;
        }
        ++info.residuals_read;
    }
}

}  // namespace

void write_restart_file(const std::string& path, const RestartInfo& info) {
    std::string text = edit::list(info.outer_count) + '\n';
    text += edit::list(info.resid_m, info.resid_u, info.resid_v, info.resid_w) + '\n';
    if (info.nest_extents) {
        const Extents& e = *info.nest_extents;
        text += edit::list(e.ni, e.nj, e.nk) + '\n';
    }
    write_text_file_whole(path, text);
}

void write_restart_info(RestartInfoName& last, const std::string& stem, const RestartInfo& info,
                        std::optional<bool> numbered) {
    if (numbered.value_or(false)) {
        last.path = stem + "restart-" + edit::I(info.outer_count, 5, 5) + ".info";
    } else if (numbered || last.path.empty()) {
        last.path = stem + std::string(file_names::restart_info);
    }
    write_restart_file(last.path, info);
}

void forget_file(const std::string& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        stop(1, "the file cannot be removed: " + std::generic_category().message(errno), path,
             "remove it by hand");
    }
}

std::optional<RestartInfo> read_restart_info(const std::string& path) {
    const std::optional<std::string> text = read_text_file(path);
    if (!text) {
        return std::nullopt;
    }
    ListInput input(*text);
    // A value left out ("," or "/") is no failure of the read, but leaves the count unknown.
    constexpr std::int32_t none = std::numeric_limits<std::int32_t>::min();
    RestartInfo info{.outer_count = none};
    if (!input.read(info.outer_count) || info.outer_count == none) {
        return std::nullopt;
    }
    std::string_view line;
    while (input.read_line(line) && trimmed(line).empty()) {
    }
    read_residuals(line, info);
    return info;
}

}  // namespace torvex
