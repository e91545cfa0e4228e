// The list of fields of the Python readers stands in the tree as the table makes it now.

#include "results/field_list.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/text_file.hpp"
#include "solver/flow_fields.hpp"

namespace torvex {
namespace {

TEST(FieldList, IsUpToDate) {
    EXPECT_EQ(read_text_file(TORVEX_FIELDS_PY).value_or("no such file"), python_field_list())
        << "run: cmake --build build --target reference";
}

TEST(FieldList, TellsUnitLongNameAndFiles) {
    const std::string list = python_field_list();
    for (const char* row :
         {R"~(Field("tke", "m2/s2", "turbulence energy", (111, 112, 122, 132)),)~",
          R"~(Field("pp", "Pa", "pressure correction", (112, 122, 132)),)~",
          R"~(Field("lm", "m", "mixing length", (122, 132)),)~",
          R"~(Field("viskl", "kg/(m s)", "viscosity of the k-l part", (132,)),)~"}) {
        EXPECT_THAT(list, testing::HasSubstr("\n    " + std::string(row) + "\n"));
    }
    EXPECT_THAT(list, testing::Not(testing::HasSubstr("coefXi"))) << "a field that no file keeps";
}

}  // namespace
}  // namespace torvex
