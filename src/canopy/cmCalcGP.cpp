// cmCalcGP_LU, cmCalcGP_ZEN: pieces of polygons in the columns become canopy parameters of the
// layers.

#include <algorithm>
#include <vector>

#include "canopy/grid_parameters.hpp"
#include "canopy/piece_in_layer.hpp"

namespace torvex {

namespace {

constexpr double epsilon = 1.1920929e-7;  // keeps a height of 0 from dividing

GridParameters empty_set(const ColumnLists& columns, int layers) {
    GridParameters gp;
    for (Field3* field : {&gp.gp_density, &gp.gp_length, &gp.gp_cf, &gp.gp_height, &gp.gp_fill}) {
        field->allocate(columns.nx, columns.ny, layers);
    }
    for (Field2* field : {&gp.gp_cover, &gp.gp_z0, &gp.gp_z0org}) {
        field->allocate(columns.nx, columns.ny);
    }
    gp.gp_luid.allocate(columns.nx, columns.ny);
    return gp;
}

// One layer of a column. The sums are in double precision.
class LayerSums {
 public:
    LayerSums(const Layer& layer, int k, const char* error) : layer_(layer), k_(k), error_(error) {}

    // False if the piece does not reach the layer.
    bool add(const CanopyPiece& piece) {
        const CanopyAttributes& a = piece.attributes;
        const auto h = static_cast<double>(a.h);
        const std::optional<double> f = filled_height(h, k_, layer_, error_);
        if (!f) {
            return false;
        }
        const double p = static_cast<double>(a.pd) * *f / layer_.dz();
        const double c = static_cast<double>(a.rls) * p / (epsilon + h);
        density_ += piece.fraction * p;
        length_ += piece.fraction * c;
        drag_ += piece.fraction * p * static_cast<double>(a.cf);
        height_ = std::max(height_, h);
        fill_ = std::max(fill_, *f);
        return true;
    }

    void store(GridParameters& gp, int i, int j) const {
        gp.gp_height(i, j, k_) = static_cast<float>(height_);
        gp.gp_fill(i, j, k_) = static_cast<float>(fill_);
        if (density_ == 0) {
            return;
        }
        const double density = std::min(density_, 1.0);
        gp.gp_density(i, j, k_) = static_cast<float>(density);
        gp.gp_length(i, j, k_) = static_cast<float>(length_ / density * height_);
        gp.gp_cf(i, j, k_) = static_cast<float>(drag_ / density_);
    }

 private:
    Layer layer_;
    int k_;
    const char* error_;
    double density_ = 0, length_ = 0, drag_ = 0, height_ = 0, fill_ = 0;
};

void store_column(const Ring<CanopyPiece>& list, GridParameters& gp, int i, int j) {
    double cover = 0;
    for (std::size_t n = 0; n < list.size(); ++n) {
        cover += list[n].fraction;
    }
    const CanopyAttributes& last = list[list.size() - 1].attributes;
    gp.gp_cover(i, j) = static_cast<float>(cover);
    gp.gp_z0(i, j) = last.z0;
    gp.gp_z0org(i, j) = last.z0org;
    gp.gp_luid(i, j) = last.luid;
}

GridParameters spread(const ColumnLists& columns, const LayerLevels& levels, const char* error) {
    GridParameters gp = empty_set(columns, levels.layers());
    for (int j = 2; j <= columns.ny; ++j) {
        for (int i = 2; i <= columns.nx; ++i) {
            const Ring<CanopyPiece>& list = columns.at(i, j);
            if (list.empty()) {
                continue;
            }
            store_column(list, gp, i, j);
            bool reached = true;
            for (int k = 1; k <= levels.layers() && reached; ++k) {
                LayerSums sums(layer_of(levels, i, j, k), k, error);
                reached = false;
                for (std::size_t n = 0; n < list.size(); ++n) {
                    reached = sums.add(list[n]) || reached;
                }
                sums.store(gp, i, j);
            }
        }
    }
    return gp;
}

// Area of the pieces that reach a layer over the area of the polygons that they are of.
double share_of_polygons(const Ring<CanopyPiece>& list, int k, const Layer& layer,
                         const std::vector<CanopyEntity>& entities, const char* error) {
    double pieces = 0;
    double polygons = 0;
    std::vector<int> counted;
    for (std::size_t n = 0; n < list.size(); ++n) {
        const CanopyPiece& piece = list[n];
        if (!filled_height(static_cast<double>(piece.attributes.h), k, layer, error)) {
            continue;
        }
        pieces += piece.area;
        if (std::ranges::find(counted, piece.entity) == counted.end()) {
            counted.push_back(piece.entity);
            polygons += entities[static_cast<std::size_t>(piece.entity)].outline_area;
        }
    }
    return polygons > 0 ? pieces / polygons : 0;
}

}  // namespace

GridParameters cmCalcGP_LU(const ColumnLists& columns, const LayerLevels& levels) {
    return spread(columns, levels, "ERR in cmCalcGP_LU");
}

GridParameters cmCalcGP_ZEN(const ColumnLists& columns, const LayerLevels& levels,
                            const std::vector<CanopyEntity>& entities, const Array2<double>& S,
                            const Field3* gp_frontal) {
    constexpr const char* error = "ERR in cmCalcGP_ZEN";
    GridParameters gp = spread(columns, levels, error);
    if (gp_frontal == nullptr) {
        return gp;
    }
    for (int k = 1; k <= levels.layers(); ++k) {
        for (int j = 2; j <= columns.ny; ++j) {
            for (int i = 2; i <= columns.nx; ++i) {
                const auto frontal = static_cast<double>((*gp_frontal)(i, j, k));
                const auto density = static_cast<double>(gp.gp_density(i, j, k));
                if (!(frontal > 0) || density == 0) {
                    continue;
                }
                const Layer layer = layer_of(levels, i, j, k);
                const double s = share_of_polygons(columns.at(i, j), k, layer, entities, error);
                if (s > 0) {
                    gp.gp_length(i, j, k) =
                        static_cast<float>(density * S(i, j) * layer.dz() / (frontal * s));
                }
            }
        }
    }
    return gp;
}

Array2<double> column_areas(const Line1& x_line, const Line1& y_line) {
    const auto width = [](const Line1& line, int n) {
        return static_cast<double>(line(n)) - static_cast<double>(line(n - 1));
    };
    Array2<double> S(x_line.size(), y_line.size());
    for (int j = 2; j <= y_line.size(); ++j) {
        for (int i = 2; i <= x_line.size(); ++i) {
            S(i, j) = width(x_line, i) * width(y_line, j);
        }
    }
    return S;
}

}  // namespace torvex
