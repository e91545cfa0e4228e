#include "run/write_sites.hpp"

#include <string>

#include "base/edit.hpp"
#include "results/site_profiles.hpp"

namespace torvex {

namespace {

SiteOutput site_output(const Run& run, const Direction& direction) {
    return {run.settings, direction.grid, direction.flow, direction.angle, direction.sites_stem};
}

}  // namespace

void write_sites(Run& run, const Direction& direction) {
    write_site_profiles(site_output(run, direction), run.log);
}

void warn_of_sites_outside(Run& run, const Direction& direction) {
    std::string names;
    for (const std::string& name : sites_outside(site_output(run, direction))) {
        names += (names.empty() ? "" : ", ") + name;
    }
    if (!names.empty()) {
        run.log.warn("WD " + edit::F(direction.angle, 5, 1) +
                     ": outside the mesh, so that no profile is written: " + names + ".");
    }
}

}  // namespace torvex
