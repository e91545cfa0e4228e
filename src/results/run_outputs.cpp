#include "results/run_outputs.hpp"

#include "base/file_names.hpp"
#include "base/text_file.hpp"
#include "results/position_name.hpp"
#include "results/result_files.hpp"

namespace torvex {

namespace {

void add_direction(const CaseSettings& settings, const std::string& tag,
                   std::vector<std::string>& names) {
    const std::string& prefix = settings.run_prefix;
    for (const char* head : {"view-convergence-", "view-monitor-"}) {
        names.push_back(std::string(prefix).append(head).append(tag).append(".dat"));
    }
    names.push_back(prefix + std::string(file_names::upwind_roughness_log) + tag);
    for (const char* head : {"calc_roughness1-", "calc_sbz_roughness2-"}) {
        names.push_back(head + tag + ".tdt");
    }
    names.push_back("alpha2z0_convergence-" + tag + ".txt");
    const std::string restart = file_names::restart_stem(prefix, tag);
    for (const std::string_view name :
         {xyz_name, z0_name, xyzc_name, vpkeinp_name, file_names::restart_info,
          file_names::fingerprint, file_names::convergence_log}) {
        names.push_back(restart + std::string(name));
    }
    const std::string sites = file_names::sites_stem(prefix, tag);
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
    std::vector<std::string> names{std::string(file_names::run_log),
                                   std::string(file_names::label_list), "#stop_message"};
    for (const std::string_view name :
         {file_names::mesh_log, file_names::directions_table,
          std::string_view("view-convergence.dat"), std::string_view("view-monitor.dat")}) {
        names.push_back(prefix + std::string(name));
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
