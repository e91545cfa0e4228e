// The record of a check as JSON. What is not known is null.

#include <functional>

#include "base/json_text.hpp"
#include "prep/case_check.hpp"

namespace torvex {

namespace {

std::string metres(float value) {
    return json::number(static_cast<double>(value), 3);
}

std::string metres(std::optional<float> value) {
    return value ? metres(*value) : json::null;
}

std::string bytes(std::optional<std::int64_t> value) {
    return value ? json::integer(*value) : json::null;
}

template <class Record>
std::string array_of(const std::vector<Record>& records,
                     const std::function<std::string(const Record&)>& object) {
    std::vector<std::string> values;
    for (const Record& record : records) {
        values.push_back(object(record));
    }
    return json::array(values);
}

std::string domain(const MeshLines& lines) {
    const bool sized = lines.need_length > 0.0F;
    return json::object({{"max_rad", metres(lines.max_rad)},
                         {"top", metres(lines.MAX_Z)},
                         {"hmax", metres(lines.elevation.Hmax)},
                         {"hmin", metres(lines.elevation.Hmin)},
                         {"havg", metres(lines.elevation.Havg)},
                         {"need_m", sized ? metres(lines.need_length) : json::null}});
}

std::string warnings(const Run& run) {
    constexpr std::string_view head = "Warning: ";
    std::vector<std::string> texts;
    for (const Warning& warning : run.log.warnings()) {
        const std::string& text = warning.text;
        texts.push_back(text.starts_with(head) ? text.substr(head.size()) : text);
    }
    return json::texts(texts);
}

}  // namespace

std::string check_json(const Run& run, const CaseCheck& check) {
    const bool sized = check.sized;
    const bool own_domain = run.settings.TORVEX_MODE != 0;
    const ResourceCheck& needs = check.resources;
    const std::string mesh = json::object({{"ni", json::integer(check.ni)},
                                           {"nj", json::integer(check.nj)},
                                           {"nk", json::integer(check.nk)},
                                           {"cells", json::integer(check.cells())}});
    const std::string memory = json::object({{"bytes", json::integer(needs.memory)},
                                             {"limit_bytes", json::integer(needs.memory_limit)},
                                             {"group_limit_bytes", bytes(needs.group_limit)}});
    const std::string maps = array_of<MapCheck>(check.maps, [](const MapCheck& map) {
        return json::object(
            {{"cover_m", metres(map.cover_m)}, {"largest_study_m", metres(map.largest_study_m)}});
    });
    const std::string sites = array_of<SiteCheck>(check.sites, [](const SiteCheck& site) {
        return json::object(
            {{"ground", metres(site.ground)}, {"inside", json::boolean(site.inside)}});
    });
    const std::string seconds =
        check.s_per_iteration ? json::number(*check.s_per_iteration, 6) : json::null;
    return json::document(
        {{"mesh", sized ? mesh : json::null},
         {"domain", sized && !own_domain ? domain(run.lines) : json::null},
         {"maps", maps},
         {"memory", sized ? memory : json::null},
         {"disk", sized ? json::object({{"bytes", json::integer(needs.disk)}}) : json::null},
         {"time", json::object({{"s_per_iteration", seconds}})},
         {"sites", sites},
         {"keys", json::object({{"given", json::texts(check.keys.given)},
                                {"defaulted", json::texts(check.keys.defaulted)},
                                {"without_effect", json::texts(check.keys.without_effect)}})},
         {"warnings", warnings(run)}});
}

}  // namespace torvex
