#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "base/record_file.hpp"
#include "results/result_files.hpp"
#include "results/sample_flow.hpp"
#include "support/failures.hpp"
#include "support/memory_file.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::blank_flow;
using test::expect_filled_up_to;
using test::filled_flow;
using test::MemoryFile;
using test::record_sizes;
using test::same;
using test::sample;
using test::stop_code_of;
using test::stop_of;
using test::TemporaryDirectory;
using testing::HasSubstr;

// A file of the named id and extents alone.
void write_header_only(const std::string& path, std::int32_t id,
                       const std::vector<std::int32_t>& extents) {
    RecordWriter writer(path);
    writer.record(id);
    writer.record(std::span(extents));
    writer.commit();
}

TEST(CheckXyz, StopsAsTheReaderWouldWithoutAnArray) {
    const TemporaryDirectory dir;
    const auto stop_for = [&](const std::string& name, const Extents& nodes) {
        testing::internal::CaptureStdout();
        const auto stop = stop_of([&] { check_xyz(dir.file(name), nodes); });
        const std::string shown = testing::internal::GetCapturedStdout();
        return std::pair{stop ? stop->code() : 0, shown};
    };
    const Field3 x(4, 3, 2);
    write_xyz(dir.file(""), x, x, x);
    EXPECT_EQ(stop_for("xyz.tuf", {4, 3, 2}), std::pair(0, std::string()));
    EXPECT_EQ(stop_for("none.tuf", {4, 3, 2}).first, 210);
    const auto [code, shown] = stop_for("xyz.tuf", {4, 3, 5});
    EXPECT_EQ(code, 212);
    EXPECT_THAT(shown, testing::MatchesRegex(" *4 *3 *2 *4 *3 *5 *\n"));

    write_header_only(dir.file("z0.tuf"), 102, {4, 3});
    EXPECT_EQ(stop_for("z0.tuf", {4, 3, 2}).first, 211);
    // Large extents that the file agrees with, and nothing behind them.
    write_header_only(dir.file("head.tuf"), 101, {1000, 1000, 1000});
    EXPECT_EQ(stop_for("head.tuf", {1000, 1000, 1000}), std::pair(212, std::string()));
    // Arrays of another length.
    RecordWriter writer(dir.file("short.tuf"));
    writer.record(std::int32_t{101});
    writer.record(std::int32_t{4}, std::int32_t{3}, std::int32_t{2});
    for (const int nk : {2, 2, 1}) {
        writer.record(Field3(4, 3, nk));
    }
    writer.commit();
    const auto stop = stop_of([&] { check_xyz(dir.file("short.tuf"), {4, 3, 2}); });
    ASSERT_TRUE(stop);
    EXPECT_EQ(stop->code(), 212);
    EXPECT_THAT(stop->reason(), HasSubstr("the array z has 48 bytes, expected 96"));
}

TEST(CheckXyz, StopsAtEveryCutOfAFile) {
    const TemporaryDirectory dir;
    const Field3 x(3, 2, 2);
    write_xyz(dir.file(""), x, x, x);
    const std::string whole = dir.read("xyz.tuf");
    const MemoryFile file;
    for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
        file.set(std::string_view(whole).substr(0, bytes));
        const int code = stop_code_of([&] { check_xyz(file.path(), {3, 2, 2}); });
        ASSERT_EQ(code, bytes < 12 ? 211 : 212) << bytes;
    }
}

TEST(ReadCodes, NameTheWayOutOfTheirCaller) {
    const TemporaryDirectory dir;
    const ReadCodes codes{.open = 7, .id = 8, .extents = 9, .fix = "look elsewhere"};
    const auto stop = stop_of([&] { check_xyz(dir.file("none"), {3, 2, 2}, codes); });
    ASSERT_TRUE(stop);
    EXPECT_EQ(stop->code(), 7);
    EXPECT_EQ(stop->fix(), "look elsewhere");
}

TEST(ReadVpkeout, ReadsWhatFortranWrote) {
    FlowState flow = blank_flow();
    const StoredResult result =
        read_vpkeout(std::string(TORVEX_TEST_DATA) + "/vpkeout_00480.tuf", 4, flow);
    EXPECT_EQ(result.id, 132);
    EXPECT_EQ(result.outer_count, 480);
    EXPECT_EQ(result.max_resid_m, 0.125F);
    expect_filled_up_to(14, flow);
}

// How many arrays a reader with one model takes from the file of another.
TEST(ReadVpkeout, TakesFurtherArraysOnlyWhereFileAndModelAgree) {
    const TemporaryDirectory dir;
    const auto filled_up_to = [](int file, int model) -> std::size_t {
        if (file == 2 && model == 2) {
            return 12;
        }
        return file == 4 && model == 4 ? 14 : 11;
    };
    for (const int file : {1, 2, 3, 4}) {
        write_vpkeout(dir.file(""), 25, 0.5F, file, filled_flow());
        for (const int model : {1, 2, 3, 4}) {
            SCOPED_TRACE("file " + std::to_string(file) + ", model " + std::to_string(model));
            FlowState flow = blank_flow();
            const StoredResult result = read_vpkeout(dir.file("vpkeout_00025.tuf"), model, flow);
            EXPECT_EQ(result.id, result_id(file));
            EXPECT_EQ(result.outer_count, 25);
            EXPECT_EQ(result.max_resid_m, 0.5F);
            expect_filled_up_to(filled_up_to(file, model), flow);
        }
    }
}

TEST(ReadVpkeout, ReadsOverFieldsWithoutRoom) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 1, 0.0F, 4, filled_flow());
    FlowState flow;
    allocate(flow, start_fields, 3, 2, 2);
    flow.viskl.allocate(3, 2, 2);
    read_vpkeout(dir.file("vpkeout_00001.tuf"), 4, flow);
    const FlowState expected = filled_flow();
    for (const FlowField& field : kept_fields) {
        const Field3& found = flow.*field.member;
        if (field.kept == Kept::start || field.name == "viskl") {
            EXPECT_TRUE(same(found, expected.*field.member)) << field.name;
        } else {
            EXPECT_EQ(found.size(), 0U) << field.name;
        }
    }
}

TEST(ReadVpkeout, DamageOfWhatIsReadOverShows) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 1, 0.0F, 1, filled_flow());
    const std::string whole = dir.read("vpkeout_00001.tuf");
    // Behind the records of id and extents: the seventh array, which has its two lengths round it.
    std::string bytes = whole;
    bytes.at(12 + 20 + 6 * 56) = '\x2c';
    dir.write("vpkeout_00001.tuf", bytes);
    FlowState flow;
    allocate(flow, start_fields, 3, 2, 2);
    EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, flow); }), 232);
}

TEST(ReadVpkeout, KeepsEveryBitOfAValue) {
    const TemporaryDirectory dir;
    FlowState flow = filled_flow();
    flow.u(1, 1, 1) = std::numeric_limits<float>::quiet_NaN();
    flow.u(2, 1, 1) = -0.0F;
    flow.u(3, 1, 1) = std::numeric_limits<float>::denorm_min();
    flow.u(1, 2, 1) = -std::numeric_limits<float>::infinity();
    write_vpkeout(dir.file(""), 1, 0.0F, 1, flow);
    FlowState read = blank_flow();
    read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, read);
    EXPECT_TRUE(same(read.u, flow.u));
}

TEST(ReadVpkeout, TheCountIsThatOfTheFileAndNotOfItsName) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 100, 0.0F, 1, filled_flow());
    std::filesystem::rename(dir.file("vpkeout_00100.tuf"), dir.file("vpkeout_00480_r.tuf"));
    FlowState flow = blank_flow();
    EXPECT_EQ(read_vpkeout(newest_result_path(dir.file(""), 480), 1, flow).outer_count, 100);
}

TEST(ReadVpkeout, NegativeCountIs232) {
    const TemporaryDirectory dir;
    for (const std::int32_t count : {-1, std::numeric_limits<std::int32_t>::min()}) {
        write_vpkeout(dir.file(""), count, 0.5F, 1, filled_flow());
        FlowState flow = blank_flow();
        const auto s = stop_of([&] { read_vpkeout(dir.file("vpkeout_*****.tuf"), 1, flow); });
        ASSERT_TRUE(s) << count;
        EXPECT_EQ(s->code(), 232);
        EXPECT_THAT(s->reason(), HasSubstr("the iteration is " + std::to_string(count)));
    }
}

TEST(ReadVpkeout, MissingFileIs231) {
    const TemporaryDirectory dir;
    FlowState flow = blank_flow();
    const std::optional<Stop> s =
        stop_of([&] { read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, flow); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 231);
    EXPECT_THAT(s->reason(), HasSubstr("No such file"));
    EXPECT_EQ(s->where(), dir.file("vpkeout_00001.tuf"));
}

TEST(ReadVpkeout, WrongIdIs231) {
    const TemporaryDirectory dir;
    FlowState flow = blank_flow();
    for (const std::int32_t id : {111, 113, 101, 0, -112}) {
        write_header_only(dir.file("a"), id, {3, 2, 2});
        const std::optional<Stop> s = stop_of([&] { read_vpkeout(dir.file("a"), 1, flow); });
        ASSERT_TRUE(s) << id;
        EXPECT_EQ(s->code(), 231);
        EXPECT_THAT(s->reason(),
                    HasSubstr("has the id " + std::to_string(id) + ", expected 112, 122 or 132"));
    }
}

TEST(ReadVpkeout, ExtentsOffByOneAre232AndNoReadError) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 1, 0.0F, 1, filled_flow());
    for (const Extents mesh : {Extents{4, 2, 2}, Extents{2, 2, 2}, Extents{3, 3, 2},
                               Extents{3, 1, 2}, Extents{3, 2, 3}, Extents{3, 2, 1}}) {
        FlowState flow = blank_flow(mesh.ni, mesh.nj, mesh.nk);
        const std::optional<Stop> s =
            stop_of([&] { read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, flow); });
        ASSERT_TRUE(s);
        EXPECT_EQ(s->code(), 232);
        EXPECT_THAT(s->reason(), HasSubstr("the file have 3 x 2 x 2"));
    }
    // The same number of elements in another order of extents.
    FlowState flow = blank_flow(2, 3, 2);
    EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, flow); }), 232);
}

TEST(ReadVpkeout, EveryPrefixStops) {
    const TemporaryDirectory dir;
    const MemoryFile file;
    for (const int model : {1, 2, 4}) {
        write_vpkeout(dir.file(""), model, 0.0F, model, filled_flow());
        const std::string whole = dir.read(result_name(model));
        for (std::size_t length = 0; length < whole.size(); ++length) {
            file.set(whole.substr(0, length));
            FlowState flow = blank_flow();
            const int code = stop_code_of([&] { read_vpkeout(file.path(), model, flow); });
            EXPECT_EQ(code, length < 12 ? 231 : 232) << "model " << model << ", bytes " << length;
        }
        file.set(whole + "what stands behind the last record is not looked at");
        FlowState flow = blank_flow();
        EXPECT_EQ(stop_code_of([&] { read_vpkeout(file.path(), model, flow); }), 0);
    }
}

TEST(ReadVpkeout, FurtherArraysMayBeMissingForAnotherModel) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 1, 0.0F, 4, filled_flow());
    const std::string whole = dir.read("vpkeout_00001.tuf");
    dir.write("a", whole.substr(0, whole.size() - 3 * 56));
    FlowState flow = blank_flow();
    EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("a"), 1, flow); }), 0);
    EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("a"), 4, flow); }), 232);
}

TEST(ReadVpkeout, ArrayOfDoublesIs232) {
    const TemporaryDirectory dir;
    const std::vector<float> twice(24);
    RecordWriter writer(dir.file("a"));
    writer.record(std::int32_t{112});
    writer.record(std::int32_t{3}, std::int32_t{2}, std::int32_t{2});
    writer.record(std::span(twice));
    writer.commit();
    FlowState flow = blank_flow();
    const std::optional<Stop> s = stop_of([&] { read_vpkeout(dir.file("a"), 1, flow); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 232);
    EXPECT_THAT(s->reason(), HasSubstr("record 3 has 96 bytes, expected 48"));
}

TEST(ReadVpkeout, CodesMayBeThoseOfTheCaller) {
    const TemporaryDirectory dir;
    FlowState flow = blank_flow();
    EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("none"), 1, flow, {184, 184, 184}); }), 184);
}

TEST(ReadXyz, ReadsWhatWasWritten) {
    const TemporaryDirectory dir;
    write_xyz(dir.file(""), sample(1), sample(2), sample(3));
    Field3 xn(3, 2, 2);
    Field3 yn(3, 2, 2);
    Field3 zn(3, 2, 2);
    read_xyz(dir.file("xyz.tuf"), xn, yn, zn);
    EXPECT_TRUE(same(xn, sample(1)));
    EXPECT_TRUE(same(yn, sample(2)));
    EXPECT_TRUE(same(zn, sample(3)));
}

TEST(ReadXyz, MissingFileIs210) {
    const TemporaryDirectory dir;
    Field3 xn(3, 2, 2);
    EXPECT_EQ(stop_code_of([&] { read_xyz(dir.file("xyz.tuf"), xn, xn, xn); }), 210);
}

TEST(ReadXyz, WrongIdIs211) {
    const TemporaryDirectory dir;
    write_xyzc(dir.file(""), sample(1), sample(2), sample(3));
    Field3 xn(3, 2, 2);
    const std::optional<Stop> s = stop_of([&] { read_xyz(dir.file("xyzc.tuf"), xn, xn, xn); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 211);
    EXPECT_THAT(s->reason(), HasSubstr("has the id 103, expected 101"));
}

TEST(ReadXyz, WrongExtentsAre212AfterTheSixNumbers) {
    const TemporaryDirectory dir;
    write_xyz(dir.file(""), sample(1), sample(2), sample(3));
    Field3 xn(4, 5, 6);
    testing::internal::CaptureStdout();
    const int code = stop_code_of([&] { read_xyz(dir.file("xyz.tuf"), xn, xn, xn); });
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(code, 212);
    EXPECT_EQ(printed,
              "           3           2           2           4           5           6\n");
}

TEST(ReadXyz, EveryPrefixStops) {
    const TemporaryDirectory dir;
    const MemoryFile file;
    write_xyz(dir.file(""), sample(1), sample(2), sample(3));
    const std::string whole = dir.read("xyz.tuf");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        file.set(whole.substr(0, length));
        Field3 xn(3, 2, 2);
        EXPECT_EQ(stop_code_of([&] { read_xyz(file.path(), xn, xn, xn); }), length < 12 ? 211 : 212)
            << length;
    }
}

TEST(ReadZ0, ReadsWhatWasWritten) {
    const TemporaryDirectory dir;
    Field2 z0(3, 2, 0.03F);
    z0(2, 2) = 0.5F;
    write_z0(dir.file(""), z0);
    EXPECT_THAT(record_sizes(dir.file("z0.tuf")), testing::ElementsAre(4, 8, 24));
    Field2 read(3, 2);
    read_z0(dir.file("z0.tuf"), read);
    for (int j = 1; j <= 2; ++j) {
        for (int i = 1; i <= 3; ++i) {
            EXPECT_EQ(read(i, j), i == 2 && j == 2 ? 0.5F : 0.03F);
        }
    }
}

TEST(ReadZ0, MissingFileAndWrongIdAre221) {
    const TemporaryDirectory dir;
    Field2 z0(3, 2);
    EXPECT_EQ(stop_code_of([&] { read_z0(dir.file("z0.tuf"), z0); }), 221);
    write_header_only(dir.file("z0.tuf"), 101, {3, 2});
    EXPECT_EQ(stop_code_of([&] { read_z0(dir.file("z0.tuf"), z0); }), 221);
}

TEST(ReadZ0, WrongExtentsAre222) {
    const TemporaryDirectory dir;
    write_z0(dir.file(""), Field2(3, 2));
    for (const auto& [ni, nj] : {std::pair{4, 2}, {2, 2}, {3, 3}, {3, 1}, {2, 3}}) {
        Field2 z0(ni, nj);
        const std::optional<Stop> s = stop_of([&] { read_z0(dir.file("z0.tuf"), z0); });
        ASSERT_TRUE(s);
        EXPECT_EQ(s->code(), 222);
        EXPECT_THAT(s->reason(), HasSubstr("the file have 3 x 2 elements"));
    }
}

TEST(ReadZ0, EveryPrefixStops) {
    const TemporaryDirectory dir;
    const MemoryFile file;
    write_z0(dir.file(""), Field2(3, 2, 0.03F));
    const std::string whole = dir.read("z0.tuf");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        file.set(whole.substr(0, length));
        Field2 z0(3, 2);
        EXPECT_EQ(stop_code_of([&] { read_z0(file.path(), z0); }), length < 12 ? 221 : 222)
            << length;
    }
}

TEST(ReadVpkeinp, ReadsWhatWasWritten) {
    const TemporaryDirectory dir;
    write_vpkeinp(dir.file(""), filled_flow());
    EXPECT_THAT(record_sizes(dir.file("vpkeinp.tuf")),
                testing::ElementsAre(4, 12, 48, 48, 48, 48, 48, 48));
    FlowState flow = blank_flow();
    EXPECT_TRUE(read_vpkeinp(dir.file("vpkeinp.tuf"), flow));
    expect_filled_up_to(6, flow);
}

TEST(ReadVpkeinp, NeedsItsIdAndExtents) {
    const TemporaryDirectory dir;
    write_vpkeinp(dir.file(""), filled_flow());
    FlowState other = blank_flow(4, 2, 2);
    EXPECT_FALSE(read_vpkeinp(dir.file("vpkeinp.tuf"), other));
    FlowState flow = blank_flow();
    EXPECT_FALSE(read_vpkeinp(dir.file("none.tuf"), flow));
    write_vpkeout(dir.file(""), 1, 0.0F, 1, filled_flow());
    EXPECT_FALSE(read_vpkeinp(dir.file("vpkeout_00001.tuf"), flow));
    expect_filled_up_to(0, flow);
}

TEST(ReadVpkeinp, NoPrefixTouchesTheFields) {
    const TemporaryDirectory dir;
    const MemoryFile file;
    write_vpkeinp(dir.file(""), filled_flow());
    const std::string whole = dir.read("vpkeinp.tuf");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        file.set(whole.substr(0, length));
        FlowState flow = blank_flow();
        EXPECT_FALSE(read_vpkeinp(file.path(), flow)) << length;
        expect_filled_up_to(0, flow);
    }
}

TEST(ReadExtents, TellsThoseOfTheFile) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 1, 0.0F, 2, filled_flow(3, 4, 5));
    EXPECT_EQ(read_extents(dir.file("vpkeout_00001.tuf"), result_codes), (Extents{3, 4, 5}));
}

TEST(ReadExtents, PromisesOnlyWhatTheFileHolds) {
    const TemporaryDirectory dir;
    const std::string path = dir.file("a");
    EXPECT_EQ(stop_code_of([&] { read_extents(path, xyz_codes); }), 210);
    const auto reason_for = [&](const std::vector<std::int32_t>& extents) {
        write_header_only(path, 101, extents);
        const std::optional<Stop> s = stop_of([&] { read_extents(path, xyz_codes); });
        EXPECT_EQ(s ? s->code() : 0, 212);
        return s ? s->reason() : "";
    };
    constexpr std::int32_t huge = 2147483647;
    for (const auto& extents : {std::vector<std::int32_t>{0, 4, 5},
                                {3, -4, 5},
                                {huge, huge, huge},
                                {65536, 65536, 1},
                                {1, 2, huge}}) {
        EXPECT_THAT(reason_for(extents), HasSubstr("cannot be those of a mesh"));
    }
    EXPECT_THAT(reason_for({huge, 1, 1}), HasSubstr("record 3 is missing"));
    EXPECT_THAT(reason_for({3, 4}), HasSubstr("record 2 has 8 bytes, expected 12"));
    RecordWriter writer(path);
    writer.record(std::int32_t{101});
    writer.record(std::int32_t{3}, std::int32_t{2}, std::int32_t{3});
    writer.record(sample(1));
    writer.commit();
    const std::optional<Stop> s = stop_of([&] { read_extents(path, xyz_codes); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 212);
    EXPECT_THAT(s->reason(), HasSubstr("has 48 bytes, which are not 3 x 2 x 3 reals"));
}

// Whatever a few changed bytes make of a file, it is read or refused with a code of its own.
TEST(AnyBytes, AreReadOrRefused) {
    const TemporaryDirectory dir;
    const MemoryFile file;
    write_xyz(dir.file(""), sample(1), sample(2), sample(3));
    write_z0(dir.file(""), Field2(3, 2));
    write_vpkeinp(dir.file(""), filled_flow());
    write_vpkeout(dir.file(""), 1, 0.0F, 4, filled_flow());

    struct Case {
        std::string name;
        std::function<void()> read;
        std::vector<int> codes;
    };
    Field3 xn(3, 2, 2);
    Field2 z0(3, 2);
    FlowState flow = blank_flow();
    const std::string path = file.path();
    const std::vector<Case> cases{
        {"xyz.tuf", [&] { read_xyz(path, xn, xn, xn); }, {0, 211, 212}},
        {"z0.tuf", [&] { read_z0(path, z0); }, {0, 221, 222}},
        {"vpkeinp.tuf", [&] { read_vpkeinp(path, flow); }, {0}},
        {"vpkeout_00001.tuf", [&] { read_vpkeout(path, 4, flow); }, {0, 231, 232}},
        {"xyz.tuf", [&] { read_extents(path, xyz_codes); }, {0, 211, 212}},
    };
    std::mt19937 random(7);
    testing::internal::CaptureStdout();
    for (const Case& c : cases) {
        const std::string whole = dir.read(c.name);
        int refused = 0;
        for (int round = 0; round < 1000; ++round) {
            std::string bytes = whole;
            // Half of the changes hit the two header records, where the counts are.
            const std::size_t reach = round % 2 == 0 ? 40 : bytes.size();
            for (int n = 0; n <= round % 3; ++n) {
                bytes[random() % reach] = static_cast<char>(random());
            }
            file.set(bytes);
            const int code = stop_code_of(c.read);
            EXPECT_THAT(c.codes, testing::Contains(code)) << c.name;
            refused += code != 0 ? 1 : 0;
        }
        EXPECT_TRUE(refused > 300 || c.codes.size() == 1) << c.name;
    }
    testing::internal::GetCapturedStdout();
}

}  // namespace
}  // namespace torvex
