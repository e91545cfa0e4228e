#pragma once

#include <cmath>
#include <optional>
#include <string>

#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "canopy/layer_levels.hpp"

namespace torvex {

// Levels of one layer of a column.
struct Layer {
    double low = 0;
    double high = 0;

    double dz() const { return high - low; }
};

// Layer k = 1.. of column (i,j), heights above its ground [m].
inline Layer layer_of(const LayerLevels& levels, int i, int j, int k) {
    return {levels.level(i, j, k), levels.level(i, j, k + 1)};
}

// The height that an entity of height h fills of layer k: all of it where h lies above, the rest of
// h where h lies within (a height on a level ends the layer below it; 0 lies in layer 1), nothing
// where h does not reach the layer. `error` is the text of a height for which none of this holds.
inline std::optional<double> filled_height(double h, int k, const Layer& layer, const char* error) {
    if (h > layer.high) {
        return layer.dz();
    }
    if (h > layer.low || (k == 1 && h >= layer.low)) {
        return h - layer.low;
    }
    if (h <= layer.low) {
        return std::nullopt;
    }
    console(error);
    stop(1, error, {}, "every height must be a number");
}

}  // namespace torvex
