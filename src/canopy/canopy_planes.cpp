#include "canopy/canopy_planes.hpp"

namespace torvex {

namespace {

CanopyPlane plane_of(const CanopyRecords& records) {
    const int ni = records.gp_density.ni();
    const int nj = records.gp_density.nj();
    return {Field2(ni, nj), Field2(ni, nj), Field2(ni, nj)};
}

}  // namespace

CanopyPlane CCD_EXTRACT_K(const CanopyRecords& records, int k) {
    CanopyPlane plane = plane_of(records);
    for (int j = 1; j <= plane.pd.nj(); ++j) {
        for (int i = 1; i <= plane.pd.ni(); ++i) {
            plane.cf(i, j) = records.gp_cf(i, j, k);
            plane.pd(i, j) = records.gp_density(i, j, k);
            plane.rls(i, j) = records.gp_length(i, j, k);
        }
    }
    return plane;
}

CanopyPlane CCD_SUM_K(const CanopyRecords& records) {
    CanopyPlane plane = plane_of(records);
    for (int j = 1; j <= plane.pd.nj(); ++j) {
        for (int i = 1; i <= plane.pd.ni(); ++i) {
            double pd = 0;
            double drag = 0;        // sum cf pd
            double per_length = 0;  // sum cf pd/rls
            double lengths = 0;     // sum rls pd
            for (int k = 1; k <= records.gp_density.nk(); ++k) {
                const auto phi = static_cast<double>(records.gp_density(i, j, k));
                const auto rls = static_cast<double>(records.gp_length(i, j, k));
                const double cf_phi = static_cast<double>(records.gp_cf(i, j, k)) * phi;
                pd += phi;
                drag += cf_phi;
                per_length += rls > 0 ? cf_phi / rls : 0;
                lengths += rls * phi;
            }
            if (pd > 0) {
                plane.pd(i, j) = static_cast<float>(pd);
                plane.cf(i, j) = static_cast<float>(drag / pd);
                plane.rls(i, j) =
                    static_cast<float>(per_length > 0 ? drag / per_length : lengths / pd);
            }
        }
    }
    return plane;
}

}  // namespace torvex
