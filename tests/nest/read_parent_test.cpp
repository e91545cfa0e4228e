// Everything that can be wrong with the files of a parent has its code and names file and reason.

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "canopy/canopy_file.hpp"
#include "nest/parent_files.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::NestCase;
using test::ParentFiles;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

double hill(double x, double y) {
    return 80.0 / (1.0 + (x * x + y * y) / 4.0e4);
}

class ReadParent : public ::testing::Test {
 protected:
    ReadParent() {
        c.parent.flow.u.fill(4.0F);
        c.parent.flow.tke.fill(0.5F);
        c.parent.flow.ted.fill(0.25F);
        files.result(c, 7, 1);
    }

    Parent read() {
        ::testing::internal::CaptureStdout();
        try {
            Parent parent = read_parent(c.pass(), files.stem);
            shown = ::testing::internal::GetCapturedStdout();
            return parent;
        } catch (...) {
            ::testing::internal::GetCapturedStdout();
            throw;
        }
    }
    // Code and message that the reading ends with.
    std::string failure(int code) {
        const auto stopped = test::stop_of([this] { read(); });
        EXPECT_TRUE(stopped);
        EXPECT_EQ(stopped ? stopped->code() : 0, code);
        return stopped ? stopped->what() : "";
    }

    NestCase c{hill};
    ParentFiles files{c};
    std::string shown;
    const std::string result_file = "restart-270_0-vpkeout_00007.tuf";
    const std::string mesh_file = "restart-270_0-xyz.tuf";
};

TEST_F(ReadParent, FindsWhatTheParentLeft) {
    const Parent parent = read();
    EXPECT_EQ(parent.result.id, 112);
    EXPECT_EQ(parent.flow.u(3, 3, 3), 4.0F);
    EXPECT_EQ(parent.flow.ted(3, 3, 3), 0.25F);
    EXPECT_EQ(parent.grid.zn(7, 6, 1), 80.0F);
    EXPECT_EQ(parent.grid.zc(7, 6, 4), c.parent.grid.zc(7, 6, 4));
    EXPECT_NEAR(parent.grid.fx(5, 5, 5), 0.5F, 1.0e-3F);
    EXPECT_EQ(parent.flow.lm.size(), 0U);
    EXPECT_EQ(shown, "   - Open vpkeout restart-270_0-vpkeout_00007.tuf\n");
    EXPECT_EQ(c.log.kept(), "");
}

TEST_F(ReadParent, CorrectedResultComesFirst) {
    c.parent.flow.u.fill(9.0F);
    files.result(c, 8, 1);
    std::filesystem::rename("restart-270_0-vpkeout_00008.tuf", "restart-270_0-vpkeout_00007_r.tuf");
    EXPECT_EQ(read().flow.u(2, 2, 2), 9.0F);
}

TEST_F(ReadParent, LengthFieldsOfTheSameKindAreKept) {
    files.result(c, 7, 4);
    EXPECT_EQ(read().flow.lm.size(), 0U);
    c.settings.TURBULENCE_MODEL = 4;
    const Parent hybrid = read();
    EXPECT_EQ(hybrid.flow.lm(2, 2, 2), 2.0F);
    EXPECT_EQ(hybrid.flow.viskl(2, 2, 2), 2.0F);
    EXPECT_EQ(hybrid.flow.ted(2, 2, 2), 0.25F);
    c.settings.TURBULENCE_MODEL = 2;
    EXPECT_EQ(read().flow.lm.size(), 0U);
}

// ted = CMU^0.75 tke^1.5/lm, whatever stands in the file and whatever the model of the child.
TEST_F(ReadParent, DissipationOfTheLengthModelComesFromItsLength) {
    files.result(c, 7, 2);
    for (const int model : {1, 2, 3, 4}) {
        c.settings.TURBULENCE_MODEL = model;
        const Parent parent = read();
        EXPECT_NEAR(parent.flow.ted(3, 3, 3), std::pow(0.09, 0.75) * std::pow(0.5, 1.5) / 2.0,
                    1.0e-6);
        EXPECT_NEAR(parent.flow.ted(3, 3, 2), parent.flow.ted(3, 3, 3), 1.0e-9);
        EXPECT_EQ(parent.flow.lm.size() > 0, model == 2);
        EXPECT_EQ(parent.flow.tkl.size(), 0U);
    }
    files.length.fill(0.0F);
    files.result(c, 7, 2);
    EXPECT_THAT(failure(184), HasSubstr("mixing length"));
}

TEST_F(ReadParent, UnreadableInfo) {
    for (const char* text : {"", "\n", "no count\n", ", \n"}) {
        files.info(text);
        EXPECT_THAT(failure(183), HasSubstr("restart-270_0-restart.info"));
    }
    std::filesystem::remove("restart-270_0-restart.info");
    failure(183);
    std::filesystem::create_directory("restart-270_0-restart.info");
    failure(183);
}

TEST_F(ReadParent, MissingOrDamagedResult) {
    files.info("9\n");
    EXPECT_THAT(failure(184), HasSubstr("restart-270_0-vpkeout_00009.tuf"));
    files.info();
    for (const auto size : {0, 3, 20, 5000}) {
        files.result(c, 7, 1);
        std::filesystem::resize_file(result_file, static_cast<std::uintmax_t>(size));
        EXPECT_THAT(failure(184), HasSubstr(result_file)) << size;
    }
    files.result(c, 7, 1);
    std::filesystem::resize_file(result_file, std::filesystem::file_size(result_file) - 4);
    EXPECT_THAT(failure(184), HasSubstr(result_file));
    write_xyz("other-", c.parent.flow.u, c.parent.flow.v, c.parent.flow.w);
    std::filesystem::copy_file("other-xyz.tuf", result_file,
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_THAT(failure(184), HasSubstr("id 101"));
}

// Two cells along an axis are its boundaries alone; with three there is a mesh to compare.
TEST_F(ReadParent, ResultWithoutCellsInside) {
    const auto write = [this](int ni, int nj, int nk) {
        FlowState flow;
        allocate(flow, result_fields, ni, nj, nk);
        write_vpkeout(files.stem, 7, 0.0F, 1, flow);
    };
    write(2, 3, 3);
    EXPECT_THAT(failure(184), HasSubstr("no cells inside its boundaries"));
    write(3, 3, 2);
    EXPECT_THAT(failure(184), HasSubstr("no cells inside its boundaries"));
    write(3, 3, 3);
    EXPECT_THAT(failure(184), HasSubstr(mesh_file));
}

TEST_F(ReadParent, ValuesThatAreNoNumbers) {
    for (const float bad : {std::nanf(""), std::numeric_limits<float>::infinity()}) {
        c.parent.flow.w(4, 5, 6) = bad;
        files.result(c, 7, 1);
        EXPECT_THAT(failure(184), HasSubstr("w of (4, 5, 6) is no finite number"));
    }
}

TEST_F(ReadParent, MissingOrDamagedMesh) {
    std::filesystem::resize_file(mesh_file, 100);
    EXPECT_THAT(failure(184), HasSubstr(mesh_file));
    std::filesystem::remove(mesh_file);
    EXPECT_THAT(failure(184), HasSubstr(mesh_file));
    GridGeometry g = c.parent.grid;
    g.zn(3, 3, 3) = std::nanf("");
    files.mesh(g);
    EXPECT_THAT(failure(184), HasSubstr("z of (3, 3, 3)"));
    g.zn(3, 3, 3) = g.zn(3, 3, 2);
    files.mesh(g);
    EXPECT_THAT(failure(184), HasSubstr("node (3, 3, 3) does not lie above"));
}

TEST_F(ReadParent, MeshOfOtherCountsThanTheResult) {
    files.mesh(c.child);
    EXPECT_THAT(failure(184), HasSubstr(mesh_file));
}

TEST_F(ReadParent, MeshOfOtherLines) {
    const auto differs = HasSubstr("parent mesh differs from this case");
    c.lines.x_line(4) += 0.09F;  // a tenth of a metre is the tolerance
    EXPECT_NO_THROW(read());
    c.lines.x_line(4) += 0.05F;
    EXPECT_THAT(failure(184), AllOf(differs, HasSubstr("x plane 4")));
    c.lines.x_line(4) = -300.0F;
    c.lines.y_line(2) = -401.0F;
    EXPECT_THAT(failure(184), AllOf(differs, HasSubstr("y plane 2")));
    c.lines.y_line = test::line_of({-100, 0, 100});
    EXPECT_THAT(failure(184), AllOf(differs, HasSubstr("13 x 11 planes, this case has 13 x 3")));
}

// Another centre leaves the lines as they are.
TEST_F(ReadParent, OtherGroundThanTheMap) {
    c.maps.basic_h =
        test::centred_map(31, 31, 100.0F, [](double x, double y) { return hill(x, y) + 0.9; });
    EXPECT_NO_THROW(read());
    c.maps.basic_h =
        test::centred_map(31, 31, 100.0F, [](double x, double y) { return hill(x - 100.0, y); });
    EXPECT_THAT(failure(184),
                AllOf(HasSubstr("ground"), HasSubstr("hill.map"), HasSubstr(mesh_file)));
    // Beyond the unchanged ground nothing is compared.
    c.maps.basic_h = test::centred_map(31, 31, 100.0F, [](double x, double y) {
        return hill(x, y) + (std::hypot(x, y) > 450.0 ? 30.0 : 0.0);
    });
    EXPECT_NO_THROW(read());
}

TEST_F(ReadParent, OtherTopIsWarnedOf) {
    read();
    EXPECT_THAT(c.log.kept(), Not(HasSubstr("Warning")));
    c.child = test::grid_over(test::line_of({-200, 0, 200}), test::line_of({-200, 0, 200}),
                              test::line_of({0, 50, 400, 1100}), hill);
    read();
    EXPECT_THAT(c.log.kept(), HasSubstr("Warning: WD 270.0: the columns of the parent are 9"));
}

// Tops within a hundredth of the column's height are those of other levels over the same ground.
TEST_F(ReadParent, TopsThatDifferByAFewMetresAreNot) {
    c.child = test::grid_over(test::line_of({-200, 0, 200}), test::line_of({-200, 0, 200}),
                              test::line_of({0, 50, 400, 1004}), hill);
    read();
    EXPECT_THAT(c.log.kept(), Not(HasSubstr("Warning")));
}

TEST_F(ReadParent, CanopyOfTheParentIsLookedAt) {
    c.settings.canopy.canopy_mode = 1;
    read();
    EXPECT_THAT(shown, HasSubstr("Calling cmOpenCalcPara in nest_bc_set..\n"));
    EXPECT_THAT(c.log.kept(), HasSubstr("restart-270_0-ccd.tuf: no canopy of the parent"));

    CanopyRecords records;
    records.gp_cf = records.gp_density = records.gp_length = c.parent.flow.u;
    write_canopy_file("restart-270_0-ccd.tuf", records);
    c.log.discard();
    read();
    EXPECT_EQ(c.log.kept(), "");
    records.gp_cf = records.gp_density = records.gp_length = Field3(3, 3, 3);
    write_canopy_file("restart-270_0-ccd.tuf", records);
    read();
    EXPECT_THAT(c.log.kept(), HasSubstr("not on the parent's mesh"));
}

}  // namespace
}  // namespace torvex
