#include "canopy/ccd_planes.hpp"

#include <string>

#include "base/assertion.hpp"
#include "base/stop.hpp"

namespace torvex {

namespace {

// As in the drag density of a cell: a length of 0 must not divide.
constexpr double least_length = 1.0e-10;

CanopyPlane empty_plane(const CanopyRecords& records) {
    CanopyPlane plane;
    for (Field2* field : {&plane.cf, &plane.pd, &plane.rls}) {
        field->allocate(records.gp_density.ni(), records.gp_density.nj());
    }
    return plane;
}

struct ColumnSum {
    double pd = 0;      // sum of phi dz
    double cf = 0;      // of cf phi dz
    double drag = 0;    // of cf phi dz / length
    double length = 0;  // of length phi dz

    void add(double phi_dz, double cell_cf, double cell_length) {
        pd += phi_dz;
        cf += cell_cf * phi_dz;
        drag += cell_cf * phi_dz / (cell_length + least_length);
        length += cell_length * phi_dz;
    }
};

}  // namespace

CanopyPlane CCD_EXTRACT_K(const CanopyRecords& records, int k) {
    if (k < 1 || k > records.gp_density.nk()) {
        stop(1, "there is no canopy layer " + std::to_string(k), "the canopy file",
             "its layers are 1 to " + std::to_string(records.gp_density.nk()));
    }
    CanopyPlane plane = empty_plane(records);
    for (int j = 1; j <= plane.pd.nj(); ++j) {
        for (int i = 1; i <= plane.pd.ni(); ++i) {
            plane.cf(i, j) = records.gp_cf(i, j, k);
            plane.pd(i, j) = records.gp_density(i, j, k);
            plane.rls(i, j) = records.gp_length(i, j, k);
        }
    }
    return plane;
}

CanopyPlane CCD_SUM_K(const CanopyRecords& records, const Field3& dz) {
    const Field3& phi = records.gp_density;
    require(dz.ni() == phi.ni() && dz.nj() == phi.nj() && dz.nk() == phi.nk(),
            "layer thicknesses of other extents than the canopy");
    CanopyPlane plane = empty_plane(records);
    for (int j = 1; j <= phi.nj(); ++j) {
        for (int i = 1; i <= phi.ni(); ++i) {
            ColumnSum sum;
            for (int k = 1; k <= phi.nk(); ++k) {
                const double phi_dz =
                    static_cast<double>(phi(i, j, k)) * static_cast<double>(dz(i, j, k));
                sum.add(phi_dz, static_cast<double>(records.gp_cf(i, j, k)),
                        static_cast<double>(records.gp_length(i, j, k)));
            }
            if (!(sum.pd > 0.0)) {
                continue;
            }
            plane.pd(i, j) = static_cast<float>(sum.pd);
            plane.cf(i, j) = static_cast<float>(sum.cf / sum.pd);
            const double rls = sum.drag > 0.0 ? sum.cf / sum.drag : sum.length / sum.pd;
            plane.rls(i, j) = static_cast<float>(rls);
        }
    }
    return plane;
}

}  // namespace torvex
