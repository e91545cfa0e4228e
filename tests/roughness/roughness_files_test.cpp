#include "roughness/roughness_files.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "base/upwind_roughness_log.hpp"
#include "roughness/roughness_cases.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class RoughnessFiles : public test::RoughnessTest {
 protected:
    int code_of(const std::string& text) {
        directory.write("upwind", text);
        return test::stop_code_of([] { read_upwind_roughness("upwind", "run it"); });
    }
    float value_of(const std::string& text) {
        directory.write("upwind", text);
        return read_upwind_roughness("upwind", "run it").value_or(-1.0F);
    }
};

TEST_F(RoughnessFiles, TableShowsCentimetresSeenFromAbove) {
    Field2 z0(3, 2);
    z0(1, 1) = 0.0001F;
    z0(2, 1) = 0.03F;
    z0(3, 1) = 1.25F;
    z0(1, 2) = 2.0F;
    z0(2, 2) = 9.999F;
    z0(3, 2) = 0.5F;
    write_roughness_table("table.tdt", z0);
    EXPECT_EQ(directory.read("table.tdt"),
              "   200.0000   999.9000    50.0000\n"
              "     0.0100     3.0000   125.0000\n");
}

TEST_F(RoughnessFiles, UpwindRoughnessIsOneFreeFormNumber) {
    write_upwind_roughness("upwind", 0.25F);
    std::istringstream in(directory.read("upwind"));
    double value = 0;
    std::string rest;
    in >> value;
    EXPECT_EQ(value, 0.25);
    EXPECT_FALSE(in >> rest);
    EXPECT_THAT(directory.read("upwind"), StartsWith("  "));
}

TEST_F(RoughnessFiles, UpwindRoughnessComesBackToTheLastBit) {
    for (float z_up = 1.0e-5F; z_up < 20.0F; z_up *= 1.2345F) {
        write_upwind_roughness("upwind", z_up);
        EXPECT_EQ(read_upwind_roughness("upwind", ""), z_up);
    }
}

TEST_F(RoughnessFiles, UpwindRoughnessIsReadInTheFreeNotation) {
    EXPECT_EQ(value_of("0.03"), 0.03F);
    EXPECT_EQ(value_of("\n\n  3.0D-2, and words\r\nmore"), 0.03F);
    EXPECT_EQ(value_of("1"), 1.0F);
}

TEST_F(RoughnessFiles, NothingComesOfAFileThatCannotBeOpened) {
    EXPECT_EQ(read_upwind_roughness("absent", "run it first"), std::nullopt);
    std::filesystem::create_directory("folder");
    EXPECT_EQ(read_upwind_roughness("folder", ""), std::nullopt);
}

TEST_F(RoughnessFiles, StopsWhereTheFileHoldsNoRoughnessLength) {
    for (const char* text : {"", "\n", "rough", "0.03x", "'0.03'", "/", ",0.03", "0", "-0.03",
                             "nan", "inf", "1e50", "*"}) {
        EXPECT_EQ(code_of(text), 1) << text;
    }
    EXPECT_EQ(code_of(std::string("\0\xff\x01", 3)), 1);
    directory.write("upwind", "\nrough\n");
    const auto stopped = test::stop_of([] { read_upwind_roughness("upwind", "run it"); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->where(), "upwind, line 2");
    EXPECT_THAT(stopped->reason(), HasSubstr("rough"));
}

}  // namespace
}  // namespace torvex
