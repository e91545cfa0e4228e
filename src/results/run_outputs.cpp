#include "results/run_outputs.hpp"

#include "base/text_file.hpp"
#include "results/position_name.hpp"
#include "results/result_files.hpp"
#include "results/site_profiles.hpp"

namespace torvex {

namespace {

void add_direction(const CaseSettings& settings, const std::string& tag,
                   std::vector<std::string>& names) {
    const std::string& prefix = settings.run_prefix;
    for (const char* head : {"view-convergence-", "view-monitor-"}) {
        names.push_back(prefix + head + tag + ".dat");
    }
    names.push_back(prefix + "log-upwind_roughness-" + tag);
    for (const char* head : {"calc_roughness1-", "calc_sbz_roughness2-"}) {
        names.push_back(head + tag + ".tdt");
    }
    names.push_back("alpha2z0_convergence-" + tag + ".txt");
    const std::string restart = prefix + "restart-" + tag + "-";
    for (const std::string_view name : {xyz_name, z0_name, xyzc_name, vpkeinp_name}) {
        names.push_back(restart + std::string(name));
    }
    names.push_back(restart + "restart.info");
    names.push_back(restart + "torvex.conv.log");
    const std::string sites = prefix + "sites-" + tag + "-";
    for (int n = 1; n <= settings.N_SITE; ++n) {
        const Site& site = settings.SITE[static_cast<std::size_t>(n - 1)];
        names.push_back(sites + position_name(site.LAT, site.LON, settings.GS) + ".tpd");
    }
    names.push_back(sites + "_INFLOW_PROFILE.tpd");
}

}  // namespace

std::vector<std::string> run_output_names(const CaseSettings& settings,
                                          std::span<const std::string> tags) {
    const std::string& prefix = settings.run_prefix;
    std::vector<std::string> names{"torvex.log", label_list_name, "#stop_message"};
    for (const char* name : {"log-meshnumber", "view-wind_direction.dat", "view-convergence.dat",
                             "view-monitor.dat"}) {
        names.push_back(prefix + name);
    }
    if (settings.DEBUG_MODE == 1 && trimmed(settings.XYCONF).empty()) {
        names.emplace_back("tmp");  // the lines that were fitted to those of another run
    }
    for (const std::string& tag : tags) {
        add_direction(settings, tag, names);
    }
    return names;
}

}  // namespace torvex
