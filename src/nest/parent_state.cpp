#include "nest/parent_state.hpp"

#include <optional>
#include <string_view>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "results/restart_info.hpp"
#include "results/view_table.hpp"

namespace torvex {

namespace {

const std::string parent_table(file_names::directions_table);
constexpr char diverged_status = '3';

// Status digit of a direction in the parent's table, the last row that names it; 0 without one. A
// row is the angle in five columns, a blank and the digit.
char status_of(const std::string& table, float angle) {
    const std::string head = edit::F(angle, 5, 1) + ' ';
    char status = 0;
    for (const std::string_view row : split_lines(table)) {
        if (row.starts_with(head) && row.size() > head.size()) {
            status = row[head.size()];
        }
    }
    return status;
}

bool meets(const CaseSettings& criteria, const RestartInfo& info) {
    return info.resid_m <= criteria.CC_OUT_M && info.resid_u <= criteria.CC_OUT_U &&
           info.resid_v <= criteria.CC_OUT_V && info.resid_w <= criteria.CC_OUT_W;
}

}  // namespace

std::string parent_stem(const std::string& tag) {
    return file_names::restart_stem("", tag);
}

void require_idle_parent() {
    if (table_is_held(parent_table)) {
        stop(1, "another run is using this directory", parent_table,
             "wait for the parent to finish");
    }
}

void tell_parent_state(const CaseSettings& settings, const std::vector<std::string>& tags,
                       RunLog& log) {
    const std::string table = read_text_file(parent_table).value_or(std::string{});
    int iwd = 0;
    for (const std::string& tag : tags) {
        const float angle = settings.WIND_DIRECTION_ANGLE(++iwd);
        const std::optional<RestartInfo> info =
            read_restart_info(parent_stem(tag) + std::string(file_names::restart_info));
        std::string what;
        if (!info) {
            what = "is missing";
        } else if (status_of(table, angle) == diverged_status) {
            what = "diverged";
        } else if (!meets(settings, *info)) {
            what = "is not converged";
        } else {
            continue;
        }
        log.warn("WD " + edit::F(angle, 5, 1) + ": the parent of this direction " + what + ".");
    }
}

}  // namespace torvex
