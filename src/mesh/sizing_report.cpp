#include "mesh/sizing_report.hpp"

#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "base/edit.hpp"

namespace torvex {

namespace {

std::string f8(float value) {
    return edit::F(value, 8, 1);
}

void both(std::string_view console_head, const std::string& text, RunLog& log) {
    console(std::string(console_head) + text);
    log.timed(" " + text);
}

void report_elevation(const ElevationRange& elevation, RunLog& log) {
    const auto line = [&log](const char* which, float value) {
        both("   - ",
             std::string(which) + " elevation in the domain is " + edit::F(value, 10, 1) + "m.",
             log);
    };
    line("Maximum", elevation.Hmax);
    line("Minimum", elevation.Hmin);
    line("Average", elevation.Havg);
}

float max_length(const DomainWidths& widths) {
    return 3.0F * widths.max_rad + widths.delta_u_hat + widths.delta_d_hat;
}

// How much more map than the study area a mesh of any direction needs.
void report_domain_size(const CaseSettings& settings, const DomainWidths& widths, RunLog& log) {
    const float need = need_length(settings, widths);
    const float diagonal = std::sqrt(settings.WE_LENGTH * settings.WE_LENGTH +
                                     settings.NS_LENGTH * settings.NS_LENGTH);
    const float ratio = need / diagonal;
    log.timed(" max_rad is " + f8(widths.max_rad) + "m.");
    log.timed(" max_length is " + f8(max_length(widths)) + "m, need_length is " + f8(need) + "m.");
    log.timed(" Coefficient of domain size is " + f8(ratio * ratio) + ".");
}

// The arithmetic of mode 1. The connection length shown is Hmax/grad, also where the buffer zone is
// longer than the connection needs.
std::vector<std::string> length_block(const CaseSettings& settings, const DomainWidths& w) {
    const std::string rule(64, '-');
    const float connection = w.elevation.Hmax / w.grad;
    const auto zone = [&](const std::string& suffix, float delta, float delta_hat) {
        const std::string hat = "delta^" + suffix;
        const std::string plain = "delta" + suffix;
        return std::vector<std::string>{
            "  " + plain + " =" + f8(delta) + ", Hmax =" + f8(w.elevation.Hmax) +
                ", grad =" + f8(w.grad),
            "  " + hat + " = max( " + plain + "/2 + Hmax / grad, " + plain + " ) =" + f8(delta_hat),
            "  connection_length =" + f8(connection) +
                ", flat_length =" + f8(delta_hat - connection)};
    };
    std::vector<std::string> lines{
        rule,
        "[calc domain length]",
        "  ns_length =" + f8(settings.NS_LENGTH) + ", we_length =" + f8(settings.WE_LENGTH),
        "[add length]",
        "  add_length =" + f8(w.add_length),
        "[up buffer zone]"};
    for (std::string& line : zone("_u", w.delta_u, w.delta_u_hat)) {
        lines.push_back(std::move(line));
    }
    lines.emplace_back("[down buffer zone]");
    for (std::string& line : zone("_d", w.delta_d, w.delta_d_hat)) {
        lines.push_back(std::move(line));
    }
    lines.emplace_back("[side buffer zone]");
    lines.push_back("  delta_s =" + f8(w.delta_s));
    lines.push_back(rule);
    return lines;
}

}  // namespace

float need_length(const CaseSettings& settings, const DomainWidths& widths) {
    const float length = max_length(widths);
    const float half_width = widths.max_rad + 2.0F * widths.delta_s;
    return std::sqrt(length * length + half_width * half_width) + settings.MAX_DXY;
}

void report_height_mode(const CaseSettings& settings, RunLog& log) {
    both("   - ", "boundary_height_mode is " + edit::I(settings.BOUNDARY_HEIGHT_MODE, 1), log);
}

void report_widths(const CaseSettings& settings, const DomainWidths& widths, RunLog& log) {
    constexpr std::string_view head = "     > ";
    report_elevation(widths.elevation, log);
    both(head, "l_diag is " + f8(widths.l_diag) + "m.", log);
    both(head, "up_bz_width is " + f8(widths.delta_u) + "m to " + f8(widths.delta_u_hat) + "m.",
         log);
    both(head, "down_bz_width is " + f8(widths.delta_d) + "m to " + f8(widths.delta_d_hat) + "m.",
         log);
    both(head, "side_bz_width is " + f8(widths.delta_s) + "m.", log);
    report_domain_size(settings, widths, log);
    if (settings.BOUNDARY_HEIGHT_MODE == 1) {
        const std::vector<std::string> block = length_block(settings, widths);
        for (const std::string& line : block) {
            console(std::string(head) + line);
        }
        for (const std::string& line : block) {
            log.timed(line);
        }
    }
}

void report_domain_height(float MAX_Z, RunLog& log) {
    both("   - ", "Computational domain height set to " + f8(MAX_Z) + "m.", log);
}

}  // namespace torvex
