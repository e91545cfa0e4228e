#include "results/result_files.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "base/text_file.hpp"
#include "results/record_file.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::stop_code_of;
using test::stop_of;
using test::TemporaryDirectory;
using testing::HasSubstr;

// Element (i,j,k) of array n is 1000 n + 100 i + 10 j + k.
Field3 sample(int n, int ni = 3, int nj = 2, int nk = 2) {
    Field3 field(ni, nj, nk);
    for (int k = 1; k <= nk; ++k) {
        for (int j = 1; j <= nj; ++j) {
            for (int i = 1; i <= ni; ++i) {
                field(i, j, k) = static_cast<float>(1000 * n + 100 * i + 10 * j + k);
            }
        }
    }
    return field;
}

bool same(const Field3& a, const Field3& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), 4 * a.size()) == 0;
}

// The fourteen arrays of a result in the order of the file.
struct Flow {
    std::array<Field3, 14> arrays;

    static Flow filled(int ni = 3, int nj = 2, int nk = 2) {
        Flow flow;
        for (int n = 1; n <= 14; ++n) {
            flow.arrays.at(static_cast<std::size_t>(n - 1)) = sample(n, ni, nj, nk);
        }
        return flow;
    }
    static Flow blank(int ni = 3, int nj = 2, int nk = 2) {
        Flow flow;
        flow.arrays.fill(Field3(ni, nj, nk, -7.0F));
        return flow;
    }

    template <class Field>
    FlowArrays<Field> fields() {
        auto& a = arrays;
        return {.u = &a[0],
                .v = &a[1],
                .w = &a[2],
                .p = &a[3],
                .tke = &a[4],
                .ted = &a[5],
                .flxU = &a[6],
                .flxV = &a[7],
                .flxW = &a[8],
                .vis = &a[9],
                .pp = &a[10],
                .lm = &a[11],
                .tkl = &a[12],
                .viskl = &a[13]};
    }
    ResultFields source() { return fields<const Field3>(); }
    ResultTargets target() { return fields<Field3>(); }

    // Arrays 1..n are those of filled(), the others as blank() made them.
    void expect_filled_up_to(int n) const {
        for (int m = 1; m <= 14; ++m) {
            const Field3& found = arrays.at(static_cast<std::size_t>(m - 1));
            EXPECT_TRUE(same(found, m <= n ? sample(m) : Field3(3, 2, 2, -7.0F))) << m;
        }
    }
};

std::vector<std::int64_t> record_sizes(const std::string& path) {
    std::vector<std::int64_t> sizes;
    RecordReader reader;
    EXPECT_TRUE(reader.open(path));
    while (!reader.at_end()) {
        const std::optional<std::int64_t> size = reader.next_size();
        if (!size) {
            ADD_FAILURE() << reader.fault();
            break;
        }
        sizes.push_back(*size);
        reader.skip();
    }
    return sizes;
}

// A file of the named id and extents alone.
void write_header_only(const std::string& path, std::int32_t id,
                       const std::vector<std::int32_t>& extents) {
    RecordWriter writer(path);
    writer.record(id);
    writer.record(std::span(extents));
    writer.commit();
}

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
            stop_of([&] { write_vpkeout(dir.file(""), 1, 0.0F, model, Flow::filled().source()); });
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
    write_vpkeout(dir.file(""), 480, 0.125F, 4, Flow::filled().source());
    EXPECT_EQ(read_text_file(dir.file("vpkeout_00480.tuf")),
              read_text_file(std::string(TORVEX_TEST_DATA) + "/vpkeout_00480.tuf"));
}

TEST(WriteVpkeout, HasTheRecordsOfItsFamily) {
    const TemporaryDirectory dir;
    std::vector<std::int64_t> expected{4, 12};
    expected.insert(expected.end(), 11, 48);
    expected.insert(expected.end(), 2, 4);
    const auto sizes_of = [&](int model) {
        write_vpkeout(dir.file(""), model, 0.0F, model, Flow::filled().source());
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
    Flow flow = Flow::filled();
    ResultFields fields = flow.source();
    fields.lm = fields.tkl = fields.viskl = nullptr;
    write_vpkeout(dir.file(""), 1, 0.0F, 3, fields);
    EXPECT_TRUE(dir.has("vpkeout_00001.tuf"));
}

TEST(ReadVpkeout, ReadsWhatFortranWrote) {
    Flow flow = Flow::blank();
    const StoredResult result =
        read_vpkeout(std::string(TORVEX_TEST_DATA) + "/vpkeout_00480.tuf", 4, flow.target());
    EXPECT_EQ(result.id, 132);
    EXPECT_EQ(result.outer_count, 480);
    EXPECT_EQ(result.max_resid_m, 0.125F);
    flow.expect_filled_up_to(14);
}

// How many arrays a reader with one model takes from the file of another.
TEST(ReadVpkeout, TakesFurtherArraysOnlyWhereFileAndModelAgree) {
    const TemporaryDirectory dir;
    const auto filled_up_to = [](int file, int model) {
        if (file == 2 && model == 2) {
            return 12;
        }
        return file == 4 && model == 4 ? 14 : 11;
    };
    for (const int file : {1, 2, 3, 4}) {
        write_vpkeout(dir.file(""), 25, 0.5F, file, Flow::filled().source());
        for (const int model : {1, 2, 3, 4}) {
            SCOPED_TRACE("file " + std::to_string(file) + ", model " + std::to_string(model));
            Flow flow = Flow::blank();
            const StoredResult result =
                read_vpkeout(dir.file("vpkeout_00025.tuf"), model, flow.target());
            EXPECT_EQ(result.id, result_id(file));
            EXPECT_EQ(result.outer_count, 25);
            EXPECT_EQ(result.max_resid_m, 0.5F);
            flow.expect_filled_up_to(filled_up_to(file, model));
        }
    }
}

TEST(ReadVpkeout, KeepsEveryBitOfAValue) {
    const TemporaryDirectory dir;
    Flow flow = Flow::filled();
    flow.arrays[0](1, 1, 1) = std::numeric_limits<float>::quiet_NaN();
    flow.arrays[0](2, 1, 1) = -0.0F;
    flow.arrays[0](3, 1, 1) = std::numeric_limits<float>::denorm_min();
    flow.arrays[0](1, 2, 1) = -std::numeric_limits<float>::infinity();
    write_vpkeout(dir.file(""), 1, 0.0F, 1, flow.source());
    Flow read = Flow::blank();
    read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, read.target());
    EXPECT_TRUE(same(read.arrays[0], flow.arrays[0]));
}

TEST(ReadVpkeout, TheCountIsThatOfTheFileAndNotOfItsName) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 100, 0.0F, 1, Flow::filled().source());
    std::filesystem::rename(dir.file("vpkeout_00100.tuf"), dir.file("vpkeout_00480_r.tuf"));
    Flow flow = Flow::blank();
    EXPECT_EQ(read_vpkeout(newest_result_path(dir.file(""), 480), 1, flow.target()).outer_count,
              100);
}

TEST(ReadVpkeout, MissingFileIs231) {
    const TemporaryDirectory dir;
    Flow flow = Flow::blank();
    const std::optional<Stop> s =
        stop_of([&] { read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, flow.target()); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 231);
    EXPECT_THAT(s->reason(), HasSubstr("No such file"));
    EXPECT_EQ(s->where(), dir.file("vpkeout_00001.tuf"));
}

TEST(ReadVpkeout, WrongIdIs231) {
    const TemporaryDirectory dir;
    Flow flow = Flow::blank();
    for (const std::int32_t id : {111, 113, 101, 0, -112}) {
        write_header_only(dir.file("a"), id, {3, 2, 2});
        const std::optional<Stop> s =
            stop_of([&] { read_vpkeout(dir.file("a"), 1, flow.target()); });
        ASSERT_TRUE(s) << id;
        EXPECT_EQ(s->code(), 231);
        EXPECT_THAT(s->reason(),
                    HasSubstr("has the id " + std::to_string(id) + ", expected 112, 122 or 132"));
    }
}

TEST(ReadVpkeout, ExtentsOffByOneAre232AndNoReadError) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 1, 0.0F, 1, Flow::filled().source());
    for (const Extents mesh : {Extents{4, 2, 2}, Extents{2, 2, 2}, Extents{3, 3, 2},
                               Extents{3, 1, 2}, Extents{3, 2, 3}, Extents{3, 2, 1}}) {
        Flow flow = Flow::blank(mesh.ni, mesh.nj, mesh.nk);
        const std::optional<Stop> s =
            stop_of([&] { read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, flow.target()); });
        ASSERT_TRUE(s);
        EXPECT_EQ(s->code(), 232);
        EXPECT_THAT(s->reason(), HasSubstr("the file have 3 x 2 x 2"));
    }
    // The same number of elements in another order of extents.
    Flow flow = Flow::blank(2, 3, 2);
    EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("vpkeout_00001.tuf"), 1, flow.target()); }),
              232);
}

TEST(ReadVpkeout, EveryPrefixStops) {
    const TemporaryDirectory dir;
    for (const int model : {1, 2, 4}) {
        write_vpkeout(dir.file(""), model, 0.0F, model, Flow::filled().source());
        const std::string whole = dir.read(result_name(model));
        for (std::size_t length = 0; length < whole.size(); ++length) {
            dir.write("a", whole.substr(0, length));
            Flow flow = Flow::blank();
            const int code =
                stop_code_of([&] { read_vpkeout(dir.file("a"), model, flow.target()); });
            EXPECT_EQ(code, length < 12 ? 231 : 232) << "model " << model << ", bytes " << length;
        }
        dir.write("a", whole + "what stands behind the last record is not looked at");
        Flow flow = Flow::blank();
        EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("a"), model, flow.target()); }), 0);
    }
}

TEST(ReadVpkeout, FurtherArraysMayBeMissingForAnotherModel) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 1, 0.0F, 4, Flow::filled().source());
    const std::string whole = dir.read("vpkeout_00001.tuf");
    dir.write("a", whole.substr(0, whole.size() - 3 * 56));
    Flow flow = Flow::blank();
    EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("a"), 1, flow.target()); }), 0);
    EXPECT_EQ(stop_code_of([&] { read_vpkeout(dir.file("a"), 4, flow.target()); }), 232);
}

TEST(ReadVpkeout, ArrayOfDoublesIs232) {
    const TemporaryDirectory dir;
    const std::vector<float> twice(24);
    RecordWriter writer(dir.file("a"));
    writer.record(std::int32_t{112});
    writer.record(std::int32_t{3}, std::int32_t{2}, std::int32_t{2});
    writer.record(std::span(twice));
    writer.commit();
    Flow flow = Flow::blank();
    const std::optional<Stop> s = stop_of([&] { read_vpkeout(dir.file("a"), 1, flow.target()); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 232);
    EXPECT_THAT(s->reason(), HasSubstr("record 3 has 96 bytes, expected 48"));
}

TEST(ReadVpkeout, CodesMayBeThoseOfTheCaller) {
    const TemporaryDirectory dir;
    Flow flow = Flow::blank();
    EXPECT_EQ(stop_code_of([&] {
                  read_vpkeout(dir.file("none"), 1, flow.target(), {184, 184, 184});
              }),
              184);
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
    write_xyz(dir.file(""), sample(1), sample(2), sample(3));
    const std::string whole = dir.read("xyz.tuf");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        dir.write("a", whole.substr(0, length));
        Field3 xn(3, 2, 2);
        EXPECT_EQ(stop_code_of([&] { read_xyz(dir.file("a"), xn, xn, xn); }),
                  length < 12 ? 211 : 212)
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
    write_z0(dir.file(""), Field2(3, 2, 0.03F));
    const std::string whole = dir.read("z0.tuf");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        dir.write("a", whole.substr(0, length));
        Field2 z0(3, 2);
        EXPECT_EQ(stop_code_of([&] { read_z0(dir.file("a"), z0); }), length < 12 ? 221 : 222)
            << length;
    }
}

TEST(ReadVpkeinp, ReadsWhatWasWritten) {
    const TemporaryDirectory dir;
    write_vpkeinp(dir.file(""), Flow::filled().source());
    EXPECT_THAT(record_sizes(dir.file("vpkeinp.tuf")),
                testing::ElementsAre(4, 12, 48, 48, 48, 48, 48, 48));
    Flow flow = Flow::blank();
    EXPECT_TRUE(read_vpkeinp(dir.file("vpkeinp.tuf"), flow.target()));
    flow.expect_filled_up_to(6);
}

TEST(ReadVpkeinp, NeedsItsIdAndExtents) {
    const TemporaryDirectory dir;
    write_vpkeinp(dir.file(""), Flow::filled().source());
    Flow other = Flow::blank(4, 2, 2);
    EXPECT_FALSE(read_vpkeinp(dir.file("vpkeinp.tuf"), other.target()));
    Flow flow = Flow::blank();
    EXPECT_FALSE(read_vpkeinp(dir.file("none.tuf"), flow.target()));
    write_vpkeout(dir.file(""), 1, 0.0F, 1, Flow::filled().source());
    EXPECT_FALSE(read_vpkeinp(dir.file("vpkeout_00001.tuf"), flow.target()));
    flow.expect_filled_up_to(0);
}

TEST(ReadVpkeinp, NoPrefixTouchesTheFields) {
    const TemporaryDirectory dir;
    write_vpkeinp(dir.file(""), Flow::filled().source());
    const std::string whole = dir.read("vpkeinp.tuf");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        dir.write("a", whole.substr(0, length));
        Flow flow = Flow::blank();
        EXPECT_FALSE(read_vpkeinp(dir.file("a"), flow.target())) << length;
        flow.expect_filled_up_to(0);
    }
}

TEST(ReadExtents, TellsThoseOfTheFile) {
    const TemporaryDirectory dir;
    write_vpkeout(dir.file(""), 1, 0.0F, 2, Flow::filled(3, 4, 5).source());
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
    write_xyz(dir.file(""), sample(1), sample(2), sample(3));
    write_z0(dir.file(""), Field2(3, 2));
    write_vpkeinp(dir.file(""), Flow::filled().source());
    write_vpkeout(dir.file(""), 1, 0.0F, 4, Flow::filled().source());

    struct Case {
        std::string name;
        std::function<void()> read;
        std::vector<int> codes;
    };
    Field3 xn(3, 2, 2);
    Field2 z0(3, 2);
    Flow flow = Flow::blank();
    const std::string path = dir.file("a");
    const std::vector<Case> cases{
        {"xyz.tuf", [&] { read_xyz(path, xn, xn, xn); }, {0, 211, 212}},
        {"z0.tuf", [&] { read_z0(path, z0); }, {0, 221, 222}},
        {"vpkeinp.tuf", [&] { read_vpkeinp(path, flow.target()); }, {0}},
        {"vpkeout_00001.tuf", [&] { read_vpkeout(path, 4, flow.target()); }, {0, 231, 232}},
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
            dir.write("a", bytes);
            const int code = stop_code_of(c.read);
            EXPECT_THAT(c.codes, testing::Contains(code)) << c.name;
            refused += code != 0 ? 1 : 0;
        }
        EXPECT_TRUE(refused > 300 || c.codes.size() == 1) << c.name;
    }
    testing::internal::GetCapturedStdout();
}

TEST(Writers, FullDiskStopsEachOfThemAndKeepsTheEarlierFile) {
    const TemporaryDirectory dir;
    const Field3 large(40, 40, 40, 1.0F);
    Flow flow = Flow::blank(40, 40, 40);
    const ResultFields fields = flow.source();
    const std::string stem = dir.file("restart-");
    const Field2 ground(400, 400);
    const std::vector<std::pair<std::string, std::function<void()>>> writers{
        {"restart-xyz.tuf", [&] { write_xyz(stem, large, large, large); }},
        {"restart-z0.tuf", [&] { write_z0(stem, ground); }},
        {"restart-xyzc.tuf", [&] { write_xyzc(stem, large, large, large); }},
        {"restart-vpkeinp.tuf", [&] { write_vpkeinp(stem, fields); }},
        {"restart-vpkeout_00007.tuf", [&] { write_vpkeout(stem, 7, 0.0F, 1, fields); }},
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
    EXPECT_EQ(stop_code_of([&] { write_vpkeinp(stem, Flow::filled().source()); }), 1);
}

}  // namespace
}  // namespace torvex
