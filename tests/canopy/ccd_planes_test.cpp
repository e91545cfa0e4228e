#include "canopy/ccd_planes.hpp"

#include <gtest/gtest.h>

#include "support/failures.hpp"

namespace torvex {
namespace {

// One column of four cells: ground cell, two with canopy, one on top.
CanopyRecords column(float cf1, float phi1, float len1, float cf2, float phi2, float len2) {
    CanopyRecords records;
    records.gp_cf.allocate(1, 1, 4);
    records.gp_density.allocate(1, 1, 4);
    records.gp_length.allocate(1, 1, 4);
    records.gp_cf(1, 1, 2) = cf1;
    records.gp_density(1, 1, 2) = phi1;
    records.gp_length(1, 1, 2) = len1;
    records.gp_cf(1, 1, 3) = cf2;
    records.gp_density(1, 1, 3) = phi2;
    records.gp_length(1, 1, 3) = len2;
    return records;
}

Field3 thickness(float dz2, float dz3) {
    Field3 dz(1, 1, 4);
    dz(1, 1, 2) = dz2;
    dz(1, 1, 3) = dz3;
    return dz;
}

TEST(CanopyPlanes, ALayerIsTakenAsItStands) {
    const CanopyPlane plane = CCD_EXTRACT_K(column(0.4F, 0.05F, 2, 1, 0.5F, 20), 3);
    EXPECT_EQ(plane.cf(1, 1), 1.0F);
    EXPECT_EQ(plane.pd(1, 1), 0.5F);
    EXPECT_EQ(plane.rls(1, 1), 20.0F);
}

TEST(CanopyPlanes, ALayerThatIsNotThereStops) {
    const CanopyRecords records = column(1, 1, 1, 1, 1, 1);
    EXPECT_EQ(test::stop_code_of([&] { CCD_EXTRACT_K(records, 0); }), 1);
    EXPECT_EQ(test::stop_code_of([&] { CCD_EXTRACT_K(records, 5); }), 1);
}

// phi dz: 0.05*5 = 0.25 and 0.5*10 = 5, together 5.25. cf: (0.4*0.25 + 1*5)/5.25 = 5.1/5.25.
// Drag over the height, without the half: 0.4*0.25/2 + 1*5/20 = 0.05 + 0.25 = 0.3, so that
// rls = 5.1/0.3 = 17.
TEST(CanopyPlanes, TheSumKeepsTheDragOfTheColumn) {
    const CanopyPlane plane = CCD_SUM_K(column(0.4F, 0.05F, 2, 1, 0.5F, 20), thickness(5, 10));
    EXPECT_FLOAT_EQ(plane.pd(1, 1), 5.25F);
    EXPECT_FLOAT_EQ(plane.cf(1, 1), 5.1F / 5.25F);
    EXPECT_FLOAT_EQ(plane.rls(1, 1), 17.0F);
}

TEST(CanopyPlanes, WithoutDragTheLengthIsAMeanByDensity) {
    const CanopyPlane plane = CCD_SUM_K(column(0, 0.1F, 2, 0, 0.3F, 6), thickness(5, 5));
    EXPECT_FLOAT_EQ(plane.pd(1, 1), 2.0F);
    EXPECT_EQ(plane.cf(1, 1), 0.0F);
    EXPECT_FLOAT_EQ(plane.rls(1, 1), (0.5F * 2 + 1.5F * 6) / 2.0F);
}

TEST(CanopyPlanes, AnEmptyColumnHasThreeZeros) {
    const CanopyPlane plane = CCD_SUM_K(column(1, 0, 3, 1, 0, 3), thickness(5, 5));
    EXPECT_EQ(plane.cf(1, 1), 0.0F);
    EXPECT_EQ(plane.pd(1, 1), 0.0F);
    EXPECT_EQ(plane.rls(1, 1), 0.0F);
}

}  // namespace
}  // namespace torvex
