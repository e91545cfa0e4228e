#include "solver/accelerated/trouble.hpp"

namespace torvex {

Trouble judge(Course& course, int seen, float resid_m) {
    constexpr int settling = 5;
    constexpr int patience = 40;
    constexpr float most_rise = 5.0F;
    constexpr float at_rest = 1.0e-4F;
    course.seen = seen;
    if (seen < settling) {
        course.smallest_at = seen;
        return Trouble::none;
    }
    if (resid_m < course.smallest) {
        course.smallest = resid_m;
        course.smallest_at = seen;
        return Trouble::none;
    }
    if (resid_m / most_rise > course.smallest) {
        return Trouble::rising;
    }
    return seen - course.smallest_at >= patience && resid_m > at_rest ? Trouble::hanging
                                                                      : Trouble::none;
}

}  // namespace torvex
