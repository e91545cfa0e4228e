// Degrees and minutes are the truncated parts of the whole angle, seconds the rest, rounded when
// they are written: 59.99996 s becomes 60_0000 and carries nothing over, so that a name changes
// with the last digit of its own field only.

#include "results/position_name.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/edit.hpp"

namespace torvex {

namespace {

char datum_letter(int datum) {
    switch (datum) {
        case 2:
            return 'J';
        case 3:
            return 'W';
        default:
            return 'T';
    }
}

double seconds_of(const Triple& angle) {
    return std::abs(static_cast<double>(angle(1)) * 3600.0 + static_cast<double>(angle(2)) * 60.0 +
                    static_cast<double>(angle(3)));
}

// The limit keeps an absurd angle within an integer; its field shows stars.
std::int64_t whole(double value) {
    return static_cast<std::int64_t>(std::min(9999.0, std::trunc(value)));
}

std::string angle_name(const Triple& angle, int degree_digits) {
    const double total = seconds_of(angle);
    const std::int64_t degrees = whole(total / 3600.0);
    const double below_degrees = total - static_cast<double>(degrees) * 3600.0;
    const std::int64_t minutes = whole(below_degrees / 60.0);
    const double seconds = below_degrees - static_cast<double>(minutes) * 60.0;
    std::string name =
        edit::I(degrees, degree_digits) + edit::I(minutes, 2) + edit::F(seconds, 7, 4);
    std::ranges::replace(name, '.', '_');
    std::ranges::replace(name, ' ', '0');
    return name;
}

}  // namespace

std::string position_name(const Triple& lat, const Triple& lon, int datum) {
    return datum_letter(datum) + angle_name(lat, 2) + "-" + angle_name(lon, 3);
}

}  // namespace torvex
