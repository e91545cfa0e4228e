#include "results/canopy_plane_files.hpp"

#include <gtest/gtest.h>

#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

// Two columns along i, one along j.
struct Fields {
    Field2 x{2, 1};
    Field2 y{2, 1};
    Field2 z{2, 1};
    CanopyPlane plane{Field2(2, 1), Field2(2, 1), Field2(2, 1)};

    Fields() {
        x(1, 1) = -50;
        x(2, 1) = 50;
        y(1, 1) = 25;
        y(2, 1) = 25;
        z(2, 1) = 12.5F;
        plane.cf(1, 1) = 0.4F;
        plane.pd(1, 1) = 0.05F;
        plane.rls(1, 1) = 0.125F;
    }
};

TEST(CanopyPlaneFiles, Vtk) {
    const test::TemporaryDirectory directory;
    const Fields f;
    write_canopy_vtk(directory.file("a.vtk"), {f.x, f.y, f.z, f.plane});
    EXPECT_EQ(directory.read("a.vtk"),
              "# vtk DataFile Version 2.0\n"
              "TORVEX Calculation Results By Ilse Marov\n"
              "ASCII\n"
              "\n"
              "DATASET STRUCTURED_GRID\n"
              "DIMENSIONS     2     1     1\n"
              "POINTS                 2 float\n"
              " -0.50000000E+02  0.25000000E+02  0.00000000E+00\n"
              "  0.50000000E+02  0.25000000E+02  0.12500000E+02\n"
              "\n"
              "POINT_DATA                 2\n"
              "\n"
              "SCALARS Cf float 1\n"
              "LOOKUP_TABLE default\n"
              "  0.40000001E+00\n"
              "  0.00000000E+00\n"
              "\n"
              "SCALARS pd float 1\n"
              "LOOKUP_TABLE default\n"
              "  0.50000001E-01\n"
              "  0.00000000E+00\n"
              "\n"
              "SCALARS rls float 1\n"
              "LOOKUP_TABLE default\n"
              "  0.12500000E+00\n"
              "  0.00000000E+00\n");
}

TEST(CanopyPlaneFiles, Tecplot) {
    const test::TemporaryDirectory directory;
    const Fields f;
    write_canopy_tecplot(directory.file("a.dat"), {f.x, f.y, f.z, f.plane});
    EXPECT_EQ(directory.read("a.dat"),
              "variables = x, y, cf, pd, rls\n"
              "zone f=point, i=  2, j=  1\n"
              " -0.50000000E+02  0.25000000E+02  0.40000001E+00  0.50000001E-01  0.12500000E+00\n"
              "  0.50000000E+02  0.25000000E+02  0.00000000E+00  0.00000000E+00  0.00000000E+00\n");
}

}  // namespace
}  // namespace torvex
