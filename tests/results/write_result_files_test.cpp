#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "base/record_file.hpp"
#include "base/text_file.hpp"
#include "results/result_files.hpp"
#include "results/sample_flow.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::blank_flow;
using test::filled_flow;
using test::record_sizes;
using test::same;
using test::sample;
using test::stop_code_of;
using test::stop_of;
using test::TemporaryDirectory;

TEST(ResultNames, HaveFiveDigits) {
    EXPECT_EQ(result_name(0), "vpkeout_00000.tuf");
    EXPECT_EQ(result_name(480), "vpkeout_00480.tuf");
    EXPECT_EQ(result_name(99999), "vpkeout_99999.tuf");
    EXPECT_EQ(result_name(100000), "vpkeout_*****.tuf");
}

TEST(ResultNames, CorrectedResultIsPreferred) {
    const TemporaryDirectory dir;
    const std::string stem = dir.file("restart-022_5-");
    EXPECT_EQ(newest_result_path(stem, 480), stem + "vpkeout_00480.tuf");
    dir.write("restart-022_5-vpkeout_00480.tuf", "");
    dir.write("restart-022_5-vpkeout_00490_r.tuf", "");
    EXPECT_EQ(newest_result_path(stem, 480), stem + "vpkeout_00480.tuf");
    dir.write("restart-022_5-vpkeout_00480_r.tuf", "");
    EXPECT_EQ(newest_result_path(stem, 480), stem + "vpkeout_00480_r.tuf");
    EXPECT_EQ(newest_result_path(stem, 490), stem + "vpkeout_00490_r.tuf");
}

TEST(ResultId, FollowsTheFamilyOfTheModel) {
    EXPECT_EQ(result_id(1), 112);
    EXPECT_EQ(result_id(2), 122);
    EXPECT_EQ(result_id(3), 112);
    EXPECT_EQ(result_id(4), 132);
}

TEST(ResultId, AnyOtherModelStops) {
    const TemporaryDirectory dir;
    for (const int model : {0, 5, -1}) {
        const std::optional<Stop> s =
            stop_of([&] { write_vpkeout(dir.file(""), 1, 0.0F, model, filled_flow()); });
        ASSERT_TRUE(s);
        EXPECT_EQ(s->code(), 1);
        EXPECT_EQ(s->reason(), "Turbulence Model Error");
    }
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(WriteXyz, HasIdExtentsAndThreeArrays) {
    const TemporaryDirectory dir;
    write_xyz(dir.file("restart-000_0-"), sample(1), sample(2), sample(3));
    const std::string path = dir.file("restart-000_0-xyz.tuf");
    EXPECT_THAT(record_sizes(path), testing::ElementsAre(4, 12, 48, 48, 48));
    RecordReader reader;
    ASSERT_TRUE(reader.open(path));
    std::int32_t id = 0;
    std::array<std::int32_t, 3> extents{};
    ASSERT_TRUE(reader.read(id));
    ASSERT_TRUE(reader.read(std::span(extents)));
    EXPECT_EQ(id, 101);
    EXPECT_THAT(extents, testing::ElementsAre(3, 2, 2));
}

TEST(WriteXyzc, HasIdExtentsAndThreeArrays) {
    const TemporaryDirectory dir;
    write_xyzc(dir.file(""), sample(1), sample(2), sample(3));
    RecordReader reader;
    ASSERT_TRUE(reader.open(dir.file("xyzc.tuf")));
    std::int32_t id = 0;
    std::array<std::int32_t, 3> extents{};
    ASSERT_TRUE(reader.read(id));
    ASSERT_TRUE(reader.read(std::span(extents)));
    EXPECT_EQ(id, 103);
    EXPECT_THAT(extents, testing::ElementsAre(3, 2, 2));
    for (int n = 1; n <= 3; ++n) {
        Field3 field(3, 2, 2);
        ASSERT_TRUE(reader.read(field));
        EXPECT_TRUE(same(field, sample(n))) << n;
    }
    EXPECT_TRUE(reader.at_end()) << "no closing record";
}

TEST(WriteVpkeout, WritesTheBytesOfFortran) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 480, 0.125F, 4, filled_flow());
    EXPECT_EQ(read_text_file(dir.file("vpkeout_00480.tuf")),
              read_text_file(std::string(TORVEX_TEST_DATA) + "/vpkeout_00480.tuf"));
}

TEST(WriteVpkeout, HasTheRecordsOfItsFamily) {
    const TemporaryDirectory dir;
    std::vector<std::int64_t> expected{4, 12};
    expected.insert(expected.end(), 11, 48);
    expected.insert(expected.end(), 2, 4);
    const auto sizes_of = [&](int model) {
        write_vpkeout(dir.file(""), model, 0.0F, model, filled_flow());
        return record_sizes(dir.file(result_name(model)));
    };
    EXPECT_EQ(sizes_of(1), expected);
    EXPECT_EQ(sizes_of(3), expected);
    expected.push_back(48);
    EXPECT_EQ(sizes_of(2), expected);
    expected.insert(expected.end(), 2, 48);
    EXPECT_EQ(sizes_of(4), expected);
}

TEST(WriteVpkeout, NeedsNoArraysOfOtherFamilies) {
    const TemporaryDirectory dir;
    FlowState flow = filled_flow();
    for (const FlowField& field : length_fields) {
        (flow.*field.member).release();
    }
    write_vpkeout(dir.file(""), 1, 0.0F, 3, flow);
    EXPECT_TRUE(dir.has("vpkeout_00001.tuf"));
}

TEST(Writers, FullDiskStopsEachOfThemAndKeepsTheEarlierFile) {
    const TemporaryDirectory dir;
    const Field3 large(40, 40, 40, 1.0F);
    const FlowState flow = blank_flow(40, 40, 40);
    const std::string stem = dir.file("restart-");
    const Field2 ground(400, 400);
    const std::vector<std::pair<std::string, std::function<void()>>> writers{
        {"restart-xyz.tuf", [&] { write_xyz(stem, large, large, large); }},
        {"restart-z0.tuf", [&] { write_z0(stem, ground); }},
        {"restart-xyzc.tuf", [&] { write_xyzc(stem, large, large, large); }},
        {"restart-vpkeinp.tuf", [&] { write_vpkeinp(stem, flow); }},
        {"restart-vpkeout_00007.tuf", [&] { write_vpkeout(stem, 7, 0.0F, 1, flow); }},
    };
    for (const auto& [name, write] : writers) {
        dir.write(name, "earlier");
        const test::FileSizeLimit limit(100000);
        const std::optional<Stop> s = stop_of(write);
        ASSERT_TRUE(s) << name;
        EXPECT_EQ(s->code(), 1);
        EXPECT_EQ(s->where(), dir.file(name));
        EXPECT_EQ(dir.read(name), "earlier");
        EXPECT_FALSE(dir.has(name + ".tmp"));
    }
}

TEST(Writers, MissingDirectoryStops) {
    const TemporaryDirectory dir;
    const std::string stem = dir.file("none/restart-");
    EXPECT_EQ(stop_code_of([&] { write_z0(stem, Field2(3, 2)); }), 1);
    EXPECT_EQ(stop_code_of([&] { write_vpkeinp(stem, filled_flow()); }), 1);
}

}  // namespace
}  // namespace torvex
