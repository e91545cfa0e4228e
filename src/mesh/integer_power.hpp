#pragma once

namespace torvex {

// x to the power n in single precision, by repeated squaring: the same bits on every machine, which
// a general power function does not promise. A negative n gives the reciprocal.
inline float integer_power(float x, int n) {
    const bool negative = n < 0;
    unsigned int rest = negative ? 0U - static_cast<unsigned int>(n) : static_cast<unsigned int>(n);
    float power = (rest & 1U) != 0U ? x : 1.0F;
    for (rest >>= 1U; rest != 0U; rest >>= 1U) {
        x *= x;
        if ((rest & 1U) != 0U) {
            power *= x;
        }
    }
    return negative ? 1.0F / power : power;
}

}  // namespace torvex
