#include "roughness/directional_alpha.hpp"

#include <cstddef>
#include <string>
#include <vector>

#include "base/edit.hpp"
#include "base/whole_file.hpp"
#include "roughness/alpha2z0.hpp"

namespace torvex {

namespace {

bool applies(const RoughnessPass& pass) {
    if (!pass.settings.USE_DIRECTIONAL_ALPHA || pass.preview()) {
        return false;
    }
    for (const std::int32_t iwd : pass.settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS.span()) {
        if (iwd < 0) {
            return false;
        }
        if (iwd == pass.iwd) {
            return true;
        }
    }
    return false;
}

std::string convergence_text(const std::vector<AlphaRound>& rounds) {
    std::string text;
    for (const AlphaRound& r : rounds) {
        text += edit::I(r.it, 5);
        for (const float value :
             {r.lo, r.hi, r.mid, r.alpha, r.target, r.error, r.eps, r.alpha_lo, r.alpha_hi}) {
            text += edit::E(value, 14, 5);
        }
        text += '\n';
    }
    return text;
}

float exponent_of_direction(const RoughnessPass& pass, float last_alpha) {
    const std::vector<float>& direction = pass.settings.alpha_direction;
    const float wd = pass.settings.WIND_DIRECTION_ANGLE(pass.iwd);
    const bool wraps = !direction.empty() && direction.front() > wd;
    const float q = wraps ? wd + 360.0F : wd;
    const std::optional<float> alpha = interpolated_alpha(direction, pass.settings.alpha_value, q);
    if (!alpha) {
        pass.warn("WARNING! Direction is outside the table of directional alpha.");
    }
    return alpha.value_or(last_alpha);
}

}  // namespace

std::optional<float> interpolated_alpha(std::span<const float> direction,
                                        std::span<const float> alpha, float q) {
    const std::size_t n = direction.size();
    if (n < 2 || alpha.size() != n) {
        return std::nullopt;
    }
    for (std::size_t m = 1; m < n; ++m) {
        if (!(direction[m - 1] < direction[m])) {
            return std::nullopt;
        }
    }
    if (!(q >= direction.front() && q <= direction.back())) {
        return std::nullopt;
    }
    // The interval m, m + 1 that begins at or below q; the last one also holds its end.
    std::size_t m = 0;
    std::size_t above = n - 1;
    while (above - m > 1) {
        const std::size_t middle = (m + above) / 2;
        (q >= direction[middle] ? m : above) = middle;
    }
    const float t = (q - direction[m]) / (direction[m + 1] - direction[m]);
    return (1.0F - t) * alpha[m] + t * alpha[m + 1];
}

void take_directional_alpha(const RoughnessPass& pass, UpwindRoughness& upwind) {
    if (!applies(pass)) {
        return;
    }
    const CaseSettings& settings = pass.settings;
    upwind.alpha = exponent_of_direction(pass, upwind.alpha);
    const AlphaSearch search{.z0_min = settings.DIRECTIONAL_ALPHA_Z0_MIN,
                             .z0_max = settings.DIRECTIONAL_ALPHA_Z0_MAX,
                             .eps = settings.DIRECTIONAL_ALPHA_BS_EPS,
                             .maxit = settings.DIRECTIONAL_ALPHA_BS_MAXIT};
    pass.tell("Interpolated directional alpha, " + edit::E(upwind.alpha, 11, 4) + " is used.");
    pass.log.timed(" Bisectoin method is used to calculate z0");
    pass.log.timed(" " + edit::E(search.z0_min, 11, 4) + "< z0 <" + edit::E(search.z0_max, 11, 4) +
                   "  eps=" + edit::E(search.eps, 11, 4) +
                   " maxit=" + std::to_string(search.maxit));
    std::vector<AlphaRound> rounds;
    const AlphaStatus status = alpha2z0(upwind.alpha, search, upwind.z_up, rounds);
    if (pass.writes()) {
        write_text_file_whole("alpha2z0_convergence-" + pass.tag + ".txt",
                              convergence_text(rounds));
    }
    if (status == AlphaStatus::not_converged) {
        pass.warn("WARNING! Bisection method not converged.");
    } else {
        pass.tell("Corresponding z0, " + edit::E(upwind.z_up, 11, 4) + " (m) is used.");
    }
}

}  // namespace torvex
