#include "run/progress.hpp"

#include <algorithm>
#include <cmath>

#include "base/edit.hpp"
#include "base/status_line.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

std::string ratio_text(float ratio) {
    constexpr float untested = 1.0e6F;
    return ratio < untested ? std::string(trimmed(edit::F(ratio, 10, 1))) : "-";
}

std::string time_text(double seconds) {
    constexpr double minute = 60;
    constexpr double hour = 60 * minute;
    const auto whole = [](double x) { return std::to_string(std::llround(std::max(1.0, x))); };
    if (seconds < 2 * minute) {
        return whole(seconds) + " s";
    }
    return seconds < 2 * hour ? whole(seconds / minute) + " min" : whole(seconds / hour) + " h";
}

std::string time_left(const ProgressState& s) {
    if (s.iterations_done < 1) {
        return {};
    }
    const double limit = s.last_iter - s.iter;
    const bool decays = s.iterations_left >= 0 && s.iterations_left < limit;
    const double seconds =
        s.seconds / s.iterations_done * (decays ? s.iterations_left : std::max(0.0, limit));
    return (decays ? ", about " : ", at most ") + time_text(seconds) + " left";
}

}  // namespace

void DecayEstimate::add(int iter, double worst_ratio) {
    constexpr std::size_t kept = 5;
    if (!(worst_ratio > 0)) {
        return;
    }
    tests_.push_back({static_cast<double>(iter), std::log(worst_ratio)});
    if (tests_.size() > kept) {
        tests_.erase(tests_.begin());
    }
}

// The line of least squares through the logarithms, read from the newest test on.
double DecayEstimate::iterations_left() const {
    if (tests_.size() < 2) {
        return -1;
    }
    const auto n = static_cast<double>(tests_.size());
    double x = 0;
    double y = 0;
    for (const Test& test : tests_) {
        x += test.iter / n;
        y += test.log_ratio / n;
    }
    double xy = 0;
    double xx = 0;
    for (const Test& test : tests_) {
        xy += (test.iter - x) * (test.log_ratio - y);
        xx += (test.iter - x) * (test.iter - x);
    }
    const double slope = xy / xx;
    return slope < 0 ? std::max(0.0, tests_.back().log_ratio / -slope) : -1;
}

// The time left stands before the residuals, which a narrow terminal may cut.
std::string progress_text(const ProgressState& s) {
    return "WD " + edit::F(s.angle, 5, 1) + " (" + std::to_string(s.iwd) + " of " +
           std::to_string(s.directions) + "): iteration " + std::to_string(s.iter) + time_left(s) +
           "; m " + ratio_text(s.ratio.m) + " u " + ratio_text(s.ratio.u) + " v " +
           ratio_text(s.ratio.v) + " w " + ratio_text(s.ratio.w) + " of the criteria";
}

Progress::Progress(const CaseSettings& settings, const Direction& direction, int last_iter)
    : settings_(settings),
      direction_(direction),
      last_iter_(last_iter),
      first_iter_(direction.outer_count) {}

Progress::~Progress() {
    status_line().clear();
}

void Progress::iteration(int iter, bool tested) {
    StatusLine& line = status_line();
    if (!line.is_shown()) {
        return;
    }
    const Residuals& r = direction_.tested;
    const CaseSettings& s = settings_;
    const Residuals ratio{
        .m = r.m / s.CC_OUT_M, .u = r.u / s.CC_OUT_U, .v = r.v / s.CC_OUT_V, .w = r.w / s.CC_OUT_W};
    if (tested) {
        estimate_.add(iter, static_cast<double>(std::max({ratio.m, ratio.u, ratio.v, ratio.w})));
    }
    const Clock::time_point now = Clock::now();
    constexpr std::chrono::milliseconds least_interval{200};
    if (shown_ != Clock::time_point{} && now - shown_ < least_interval) {
        return;
    }
    shown_ = now;
    line.show(progress_text({.angle = direction_.angle,
                             .iwd = direction_.iwd,
                             .directions = s.N_WIND_DIRECTION,
                             .iter = iter,
                             .last_iter = last_iter_,
                             .ratio = ratio,
                             .seconds = std::chrono::duration<double>(now - start_).count(),
                             .iterations_done = iter - first_iter_,
                             .iterations_left = estimate_.iterations_left()}));
}

}  // namespace torvex
