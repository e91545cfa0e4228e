// Vertical profiles at the sites and at the inflow, as text:
//
//   line 1       number of levels, free form
//   line 2       " z_agl u v w p tke ted z_asl"
//   then         eight values a level, each E16.8: height above the ground of the interpolated
//                column [m], velocity in the axes of the mesh [m/s], pressure [Pa], tke [m2/s2],
//                ted [m2/s3], height above the map datum [m]
//
// reads   xc, yc, zc, u, v, w, p, tke, ted
// writes  STEM<position name>.tpd, STEM_INFLOW_PROFILE.tpd, the label list

#include "results/site_profiles.hpp"

#include <array>
#include <optional>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/whole_file.hpp"
#include "maps/local_metric.hpp"
#include "results/mesh_column.hpp"
#include "results/position_name.hpp"

namespace torvex {

namespace {

constexpr const char* column_titles = " z_agl u v w p tke ted z_asl\n";

using Profile = std::array<Line1, 8>;

std::string profile_text(const Profile& profile) {
    const int nk = profile[0].size();
    std::string text = edit::list(nk) + "\n" + column_titles;
    for (int k = 1; k <= nk; ++k) {
        for (const Line1& values : profile) {
            text += edit::E(values(k), 16, 8);
        }
        text += '\n';
    }
    return text;
}

// The columns of a profile file, each taken from its field by `at`.
template <class Column>
Profile profile(const SiteOutput& output, Column at) {
    const FlowState& flow = output.flow;
    const Line1 z_asl = at(output.grid.zc);
    return {above_ground(z_asl), at(flow.u),   at(flow.v),   at(flow.w),
            at(flow.p),          at(flow.tke), at(flow.ted), z_asl};
}

ColumnPlace place_of(const Site& site, const SiteOutput& output) {
    const CaseSettings& settings = output.settings;
    return column_place(
        position_from_centre(minutes_of(site.LON), minutes_of(site.LAT), settings.cent_lon_min,
                             settings.cent_lat_min, settings.GS, output.angle),
        output.grid);
}

std::string wind_direction(const SiteOutput& output) {
    return " WD " + edit::F(output.angle, 5, 1);
}

// Writes the profile of a site and returns the name of its position; nothing if it lies outside.
std::optional<std::string> write_site(const Site& site, const SiteOutput& output) {
    const ColumnPlace place = place_of(site, output);
    if (!place.inside()) {
        return std::nullopt;
    }
    const std::string name = position_name(site.LAT, site.LON, output.settings.GS);
    const Profile values = profile(output, [place](const Field3& q) { return column(q, place); });
    write_text_file_whole(output.stem + name + ".tpd", profile_text(values));
    return name;
}

void write_label_list(const std::string& lines, const SiteOutput& output, RunLog& log) {
    try {
        write_text_file_whole(std::string(file_names::label_list), lines);
    } catch (const Stop& failure) {
        log.warn_line(wind_direction(output) + ": (Warning) " +
                      std::string(file_names::label_list) + ": " + failure.reason());
    }
}

void write_inflow(const SiteOutput& output) {
    const Profile values = profile(output, [](const Field3& q) { return column(q, 1, 1); });
    write_text_file_whole(output.stem + "_INFLOW_PROFILE.tpd", profile_text(values));
}

}  // namespace

std::vector<std::string> sites_outside(const SiteOutput& output) {
    std::vector<std::string> outside;
    for (int n = 1; n <= output.settings.N_SITE; ++n) {
        const Site& site = output.settings.SITE[static_cast<std::size_t>(n - 1)];
        if (!place_of(site, output).inside()) {
            outside.push_back(site.LABEL.empty() ? "SITE(" + std::to_string(n) + ")"
                                                 : std::string(trimmed(site.LABEL)));
        }
    }
    return outside;
}

void write_site_profiles(const SiteOutput& output, RunLog& log) {
    const CaseSettings& settings = output.settings;
    std::string list;
    for (int n = 1; n <= settings.N_SITE; ++n) {
        const Site& site = settings.SITE[static_cast<std::size_t>(n - 1)];
        const std::string label(trimmed(site.LABEL));
        const std::optional<std::string> name = write_site(site, output);
        if (name) {
            list += edit::I(n, 5) + ", " + label + ", " + *name + "\n";
        } else {
            log.timed(wind_direction(output) + "- Site [" + label +
                      "] : (Warning) Site Position is out of computational domain.");
        }
    }
    write_label_list(list, output, log);
    if (!settings.nested()) {
        write_inflow(output);
    }
}

}  // namespace torvex
