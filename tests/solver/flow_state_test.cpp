// Room for the state of a direction, and the clearing pass.

#include "solver/flow_state.hpp"

#include <gtest/gtest.h>

#include "mesh/test_meshes.hpp"
#include "solver/clearing_pass.hpp"
#include "solver/fields.hpp"
#include "solver/flow_fields.hpp"

namespace torvex {
namespace {

using test::all_equal;

void expect_extents(const Field3& field, const GridGeometry& g) {
    EXPECT_EQ(field.ni(), g.ni);
    EXPECT_EQ(field.nj(), g.nj);
    EXPECT_EQ(field.nk(), g.nk);
}

template <class Visit>
void for_all_fields(FlowState& s, Visit visit) {
    for (const FlowField& field : flow_fields) {
        if (has_field(1, field)) {
            visit(s.*field.member);
        }
    }
    for (const auto field : system_fields) {
        visit(s.eq.*field);
    }
}

TEST(AllocateFields, ZeroesEverythingOnTheCells) {
    const GridGeometry g = uniform_mesh({5, 4, 6}, 1, 1, 1);
    FlowState s;
    for (int pass = 0; pass < 2; ++pass) {  // the second on what a direction left behind
        allocate_fields(s, g, 1);
        for_all_fields(s, [&g](Field3& field) {
            expect_extents(field, g);
            EXPECT_TRUE(all_equal(field, 0));
            field.fill(7);
        });
        EXPECT_EQ(s.eq.su.size(), s.u.size());
        EXPECT_EQ(s.eq.sp.size(), s.u.size());
        EXPECT_EQ(s.eq.su(5, 4, 6), 0.0);
        EXPECT_EQ(s.eq.sp(5, 4, 6), 0.0);
        s.eq.su.fill(7);
        s.eq.sp.fill(7);
    }
}

TEST(AllocateFields, GivesTheLengthModelItsArraysInModels2And4Only) {
    const GridGeometry g = uniform_mesh({5, 4, 6}, 1, 1, 1);
    FlowState s;
    for (const int model : {2, 1, 4, 3}) {
        allocate_fields(s, g, model);
        for (const auto field : {&FlowState::lm, &FlowState::tkl, &FlowState::viskl}) {
            if (model == 2 || model == 4) {
                expect_extents(s.*field, g);
                EXPECT_TRUE(all_equal(s.*field, 0));
            } else {
                EXPECT_EQ((s.*field).size(), 0U) << model;
            }
        }
    }
}

TEST(AllocateFields, LeavesRoughnessAndCanopyAlone) {
    const GridGeometry g = uniform_mesh({5, 4, 6}, 1, 1, 1);
    FlowState s;
    s.z0.allocate(g.ni, g.nj, 0.03F);
    s.gp_d.allocate(g.ni, g.nj, g.nk, 0.5F);
    allocate_fields(s, g, 4);
    EXPECT_EQ(s.z0(3, 2), 0.03F);
    EXPECT_EQ(s.gp_d(3, 2, 2), 0.5F);
}

TEST(Release, GivesEverythingBack) {
    const GridGeometry g = uniform_mesh({5, 4, 6}, 1, 1, 1);
    FlowState s;
    s.z0.allocate(g.ni, g.nj, 0.03F);
    s.gp_k.allocate(g.ni, g.nj, g.nk, 0.5F);
    allocate_fields(s, g, 4);
    s.flow_in = 3;
    s.scale_u = 3;
    s.canopy_source_factor = 1;
    release(s);
    for_all_fields(s, [](const Field3& field) { EXPECT_EQ(field.size(), 0U); });
    for (const FlowField& field : length_fields) {
        EXPECT_EQ((s.*field.member).size(), 0U);
    }
    EXPECT_EQ(s.z0.size(), 0U);
    EXPECT_EQ(s.gp_k.size(), 0U);
    EXPECT_EQ(s.eq.su.size(), 0U);
    EXPECT_EQ(s.flow_in, 0.0F);
    EXPECT_EQ(s.scale_u, 0.0F);
    EXPECT_EQ(s.canopy_source_factor, 0.0F);
}

TEST(ClearingPass, SetsTheArraysThatAreNoFields) {
    const GridGeometry g = uniform_mesh({5, 4, 6}, 1, 1, 1);
    CaseSettings settings;
    settings.DENSIT = 1.25F;
    FlowState s;
    allocate_fields(s, g, 4);
    for_all_fields(s, [](Field3& field) { field.fill(7); });
    for (const FlowField& field : length_fields) {
        (s.*field.member).fill(7);
    }
    s.eq.su.fill(7);
    s.eq.sp.fill(7);
    clearing_pass(settings, s);

    EXPECT_TRUE(all_equal(s.den, 1.25F));
    // A resumed direction has the kept ones from its files.
    for (const FlowField& field : flow_fields) {
        if (field.member != &FlowState::den) {
            EXPECT_TRUE(all_equal(s.*field.member, field.kept == Kept::no ? 0 : 7)) << field.name;
        }
    }
    for (const auto field : system_fields) {
        EXPECT_TRUE(all_equal(s.eq.*field, 0));
    }
    for (std::size_t n = 0; n < s.eq.su.size(); ++n) {
        EXPECT_EQ(s.eq.su.data()[n], 0.0);
        EXPECT_EQ(s.eq.sp.data()[n], 0.0);
    }
}

}  // namespace
}  // namespace torvex
