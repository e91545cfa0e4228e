// Start fields and inflow from a table over the height h above ground, linear between its rows, the
// end values beyond them. With specify_turbulence the rows hold h, u, tke and ted; without, they
// hold h, u and the standard deviation sigma_u of u, from which
//
//   tke = 0.5 (1 + 0.8^2 + 0.5^2) sigma_u^2,   sigma_v = 0.8 sigma_u, sigma_w = 0.5 sigma_u
//   ted = CMU^0.75 tke^1.5 / min(0.4 h, 0.4 Zg)
//
// sigma_u is interpolated before it is squared. The ratios are those of the neutral surface layer
// (Panofsky and Dutton 1984). Length, viscosity and ground layer are those of INIT.
//
// reads   zc, z0; inflow_profile_file, specify_turbulence; CMU, DENSIT, VISCOS
// writes  u, tke, ted, vis in all cells; lm, tkl, viskl in models 2 and 4; the other fields are 0

#include "solver/table_inflow.hpp"

#include <cmath>
#include <optional>

#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "solver/init.hpp"
#include "solver/profile_table.hpp"

namespace torvex {

namespace {

constexpr float energy_of_variance = 0.5F * (1.0F + 0.8F * 0.8F + 0.5F * 0.5F);

float energy_of_sigma(float sigma_u) {
    return energy_of_variance * (sigma_u * sigma_u);
}

// What the columns behind height and speed must hold.
std::optional<std::string> fault_of_row(const ProfileTable& table, std::size_t row, bool precise) {
    const float third = table.columns[2][row];
    if (third < 0.0F) {
        return precise ? "tke is negative" : "sigma u is negative";
    }
    if (precise && !(table.columns[3][row] > 0.0F)) {
        return "ted is not above 0";
    }
    if (!precise && !std::isfinite(energy_of_sigma(third))) {
        return "sigma u is too large";
    }
    return std::nullopt;
}

ProfileTable read_inflow_table(const UserDomain& user) {
    const std::string& path = user.inflow_profile_file;
    const std::optional<std::string> text = read_text_file(path);
    if (!text) {
        inflow_file_error("the table cannot be opened",
                          path.empty() ? "block &user_domain, inflow_profile_file" : path);
    }
    ProfileTable table;
    const std::size_t columns = user.specify_turbulence ? 4 : 3;
    if (const auto fault = read_profile_table(*text, columns, table)) {
        inflow_file_error(fault->what, place(path, fault->line));
    }
    for (std::size_t row = 0; row < table.lines.size(); ++row) {
        if (const auto fault = fault_of_row(table, row, user.specify_turbulence)) {
            inflow_file_error(*fault, place(path, table.lines[row]));
        }
    }
    return table;
}

// In place of the dissipation that follows from tke and the length.
void take_dissipation(const ProfileTable& table, const GridGeometry& g, FlowState& s) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const ProfilePlace at = place_in(table.columns[0], height_above_ground(g, i, j, k));
                s.ted(i, j, k) = value_at(table.columns[3], at);
            }
        }
    }
    copy_lowest_level(s.ted);
}

}  // namespace

void inflow_file_error(const std::string& what, const std::string& where) {
    const std::string text = "*** inflow file error ***";
    console(text);
    stop(1, text + ": " + what, where,
         "inlet is 0, 1 or 2; for 1 give a table of height, speed and sigma u, or with "
         "specify_turbulence of height, speed, tke and ted");
}

void fill_table_inflow(const CaseSettings& settings, const GridGeometry& g, FlowState& s) {
    const bool precise = settings.user.specify_turbulence;
    console(precise ? "- Specify turbulent property precisely."
                    : "- Specify turbulence by the sigma u.");
    const ProfileTable table = read_inflow_table(settings.user);
    allocate_fields(s, g, settings.TURBULENCE_MODEL);
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const ProfilePlace at = place_in(table.columns[0], height_above_ground(g, i, j, k));
                const float third = value_at(table.columns[2], at);
                s.u(i, j, k) = value_at(table.columns[1], at);
                s.tke(i, j, k) = precise ? third : energy_of_sigma(third);
            }
        }
    }
    copy_lowest_level(s.tke);
    if (!precise) {
        console("- Calculating ted");
    }
    fill_dissipation(settings, g, s);
    if (precise) {
        take_dissipation(table, g, s);
    }
    fill_viscosity(settings, s);
}

}  // namespace torvex
