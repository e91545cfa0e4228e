#include "run/write_sites.hpp"

#include "results/site_profiles.hpp"

namespace torvex {

void write_sites(Run& run, const Direction& direction) {
    write_site_profiles(
        {run.settings, direction.grid, direction.flow, direction.angle, direction.sites_stem},
        run.log);
}

}  // namespace torvex
