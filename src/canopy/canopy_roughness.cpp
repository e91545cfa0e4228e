#include "canopy/canopy_roughness.hpp"

#include <algorithm>

#include "roughness/roughness_mean.hpp"
#include "roughness/roughness_strips.hpp"

namespace torvex {

void canopy_roughness(const ColumnLists* const (&sets)[2], Field2& z0) {
    for (int j = 2; j < z0.nj(); ++j) {
        for (int i = 2; i < z0.ni(); ++i) {
            double cover = 0;
            double sum = 0;  // sum f R
            for (const ColumnLists* set : sets) {
                for (std::size_t n = 0; set != nullptr && n < set->at(i, j).size(); ++n) {
                    const CanopyPiece& piece = set->at(i, j)[n];
                    cover += piece.fraction;
                    sum += piece.fraction * R(piece.attributes.z0);
                }
            }
            if (cover > 0) {
                const double c = std::min(1.0, cover);
                z0(i, j) = Z((1.0 - c) * R(z0(i, j)) + sum * c / cover);
            }
        }
    }
    repeat_on_ghost_ring(z0);
}

}  // namespace torvex
