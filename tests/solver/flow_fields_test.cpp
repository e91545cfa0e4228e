// The table of the flow's fields: what files and Python readers are made of.

#include "solver/flow_fields.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace torvex {
namespace {

using testing::ElementsAre;

std::vector<std::string> names_of(std::span<const FlowField> fields) {
    std::vector<std::string> names;
    for (const FlowField& field : fields) {
        names.emplace_back(field.name);
    }
    return names;
}

// The order of the records is the form of the files, which other programs read too.
TEST(FlowFields, StandInTheOrderOfTheRecords) {
    EXPECT_THAT(names_of(start_fields), ElementsAre("u", "v", "w", "p", "tke", "ted"));
    EXPECT_THAT(names_of(result_fields),
                ElementsAre("u", "v", "w", "p", "tke", "ted", "flxU", "flxV", "flxW", "vis", "pp"));
    EXPECT_THAT(names_of(length_fields), ElementsAre("lm", "tkl", "viskl"));
    EXPECT_EQ(kept_fields.size(), result_fields.size() + length_fields.size());
    EXPECT_EQ(fields_kept(Kept::no, Kept::no).size(), flow_fields.size() - kept_fields.size());
}

TEST(FlowFields, KeptNamesAreThoseOfTheirArrays) {
    using Name = std::pair<const char*, Field3 FlowState::*>;
    const std::vector<Name> arrays{
        {"u", &FlowState::u},       {"v", &FlowState::v},        {"w", &FlowState::w},
        {"p", &FlowState::p},       {"tke", &FlowState::tke},    {"ted", &FlowState::ted},
        {"flxU", &FlowState::flxU}, {"flxV", &FlowState::flxV},  {"flxW", &FlowState::flxW},
        {"vis", &FlowState::vis},   {"pp", &FlowState::pp},      {"lm", &FlowState::lm},
        {"tkl", &FlowState::tkl},   {"viskl", &FlowState::viskl}};
    ASSERT_EQ(arrays.size(), kept_fields.size());
    for (std::size_t n = 0; n < arrays.size(); ++n) {
        EXPECT_EQ(kept_fields[n].name, arrays[n].first);
        EXPECT_TRUE(kept_fields[n].member == arrays[n].second) << arrays[n].first;
    }
}

TEST(FlowFields, EachHasANameAndAnArrayOfItsOwnAUnitAndALongName) {
    std::set<std::string_view> names;
    FlowState s;
    int count = 0;
    for (const FlowField& field : flow_fields) {
        EXPECT_TRUE(names.insert(field.name).second) << field.name;
        EXPECT_FALSE(field.unit.empty()) << field.name;
        EXPECT_FALSE(field.long_name.empty()) << field.name;
        EXPECT_EQ((s.*field.member).size(), 0U) << field.name;
        (s.*field.member).allocate(++count, 1, 1);
    }
}

TEST(Allocate, GivesRoomToTheNamedFieldsAlone) {
    FlowState s;
    s.vis.allocate(1, 1, 1, 5.0F);
    allocate(s, start_fields, 4, 3, 2);
    for (const FlowField& field : start_fields) {
        const Field3& array = s.*field.member;
        EXPECT_EQ(array.ni(), 4) << field.name;
        EXPECT_EQ(array.nj(), 3) << field.name;
        EXPECT_EQ(array.nk(), 2) << field.name;
        EXPECT_EQ(array(4, 3, 2), 0.0F) << field.name;
    }
    EXPECT_EQ(s.vis(1, 1, 1), 5.0F);
    EXPECT_EQ(s.flxU.size(), 0U);
}

}  // namespace
}  // namespace torvex
