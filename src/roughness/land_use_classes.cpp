#include "roughness/land_use_classes.hpp"

#include <limits>
#include <string>

#include "base/stop.hpp"

namespace torvex {

void replace_codes(const CanopyConvTable& table, LandUseMap& map) {
    if (map.replaced) {
        return;
    }
    float number = 0;
    for (const CanopyClass& row : table.rows) {
        number += 1.0F;
        for (int j = 1; row.valid && j <= map.values.nj(); ++j) {
            for (int i = 1; i <= map.values.ni(); ++i) {
                if (map.values(i, j) == row.code) {
                    map.values(i, j) = number;
                }
            }
        }
    }
    map.replaced = true;
}

Array2<std::int32_t> replaced_codes(const CanopyConvTable& table, LandUseMap& map) {
    replace_codes(table, map);
    constexpr auto bound = -static_cast<float>(std::numeric_limits<std::int32_t>::min());
    Array2<std::int32_t> numbers(map.values.ni(), map.values.nj());
    for (int j = 1; j <= numbers.nj(); ++j) {
        for (int i = 1; i <= numbers.ni(); ++i) {
            const float value = map.values(i, j);
            if (!(value >= -bound && value < bound)) {
                stop(1, "land-use map: a value is no land-use code",
                     "column " + std::to_string(i) + ", row " + std::to_string(j));
            }
            numbers(i, j) = static_cast<std::int32_t>(value);
        }
    }
    return numbers;
}

}  // namespace torvex
