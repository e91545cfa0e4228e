#include "maps/conversion/land_use_roughness.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "maps/conversion/conversion_fixture.hpp"

namespace torvex {
namespace {

using test::stop_of;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

class LandUseRoughness : public ::testing::Test {
 protected:
    void write_classes(const std::vector<std::pair<int, std::string>>& codes) const {
        std::string text = "id name code height rls pd cf z0\n";
        for (const auto& [id, code] : codes) {
            text +=
                std::to_string(id) + " 'class " + std::to_string(id) + "' " + code + " 0 0 0 0 0\n";
        }
        directory.write("cnpy_conv_table.tin", text);
    }
    void write_roughness(const std::string& values) const {
        directory.write("conv_table.tin", "&CONV_TABLE\n Z00 = " + values + "\n/\n");
    }
    static std::vector<float> convert(const std::vector<float>& codes) {
        return codes_to_roughness(read_land_use_tables(), "the map", codes);
    }
    static std::string failure(const std::vector<float>& codes) {
        const auto stopped = stop_of([&] { convert(codes); });
        EXPECT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        return stopped->what();
    }

    test::WorkingDirectory directory;
};

TEST_F(LandUseRoughness, CodesBecomeTheRoughnessOfTheirRow) {
    write_classes({{1, "100"}, {2, "300"}, {3, "200"}});
    write_roughness("0.1, 0.3, 0.2");
    EXPECT_THAT(convert({200, 100, 300, 100}), ElementsAre(0.2F, 0.1F, 0.3F, 0.1F));
}

// Row 1 has the code 5, row 2 the code 1: a 5 becomes 1 and then 2.
TEST_F(LandUseRoughness, RowsReplaceOneAfterTheOther) {
    write_classes({{1, "5"}, {2, "1"}});
    write_roughness("0.1, 0.2");
    EXPECT_THAT(convert({5, 1}), ElementsAre(0.2F, 0.2F));
}

// 2 is the number of a row but the code of none.
TEST_F(LandUseRoughness, CodesWithoutARowAreFoundBeforeTheReplacement) {
    write_classes({{1, "10"}, {2, "20"}});
    write_roughness("0.1, 0.2");
    const std::string told = failure({10, 2, 20, 99, 2});
    EXPECT_THAT(told, HasSubstr("without a row in the table: 2, 99\n"));
    EXPECT_THAT(told, HasSubstr("the map"));
}

TEST_F(LandUseRoughness, ARowInUseNeedsARoughness) {
    write_classes({{1, "10"}, {2, "20"}, {3, "30"}});
    write_roughness("0.1, 0, -1");
    EXPECT_THAT(convert({10}), ElementsAre(0.1F));  // the others do not matter
    EXPECT_THAT(failure({10, 20, 30}), HasSubstr("rows 2, 3"));
}

TEST_F(LandUseRoughness, ATableMayBeShortButNotLong) {
    write_roughness("15*0.1");
    std::vector<std::pair<int, std::string>> codes;
    for (int n = 1; n <= 14; ++n) {
        codes.emplace_back(n, std::to_string(n));
    }
    write_classes(codes);
    EXPECT_EQ(read_land_use_tables().rows, 14);
    codes.emplace_back(15, "15");
    write_classes(codes);
    EXPECT_EQ(read_land_use_tables().rows, 15);
    codes.emplace_back(16, "16");
    write_classes(codes);
    EXPECT_THAT(failure({1}), HasSubstr("more than 15 rows"));
}

TEST_F(LandUseRoughness, TheSeaIsRowTwelve) {
    write_roughness("15*0.1");
    std::vector<std::pair<int, std::string>> codes;
    for (int n = 1; n <= 11; ++n) {
        codes.emplace_back(n, std::to_string(100 * n));
    }
    write_classes(codes);
    EXPECT_EQ(test::stop_code_of([] { read_land_use_tables().sea_code(); }), 1);
    codes.emplace_back(12, "1500");
    write_classes(codes);
    EXPECT_EQ(read_land_use_tables().sea_code(), 1500.0F);
}

TEST_F(LandUseRoughness, AbsentTablesAreNamed) {
    CaptureStdout();
    EXPECT_THAT(failure({1}), HasSubstr("cnpy_conv_table.tin not found."));
    write_classes({{1, "1"}});
    EXPECT_THAT(failure({1}), HasSubstr("conv_table.tin not found."));
    GetCapturedStdout();
}

}  // namespace
}  // namespace torvex
