#include "canopy/canopy_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "support/failures.hpp"
#include "support/memory_file.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

constexpr int ni = 3;
constexpr int nj = 4;
constexpr int nk = 2;
constexpr int cells = ni * nj * nk;
constexpr int columns = ni * nj;

template <class T>
std::string bytes_of(const std::vector<T>& values) {
    std::string bytes(values.size() * sizeof(T), '\0');
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

// Framed by hand: the length, the data, the length.
std::string record(const std::string& data) {
    const std::string length = bytes_of<std::int32_t>({static_cast<std::int32_t>(data.size())});
    return length + data + length;
}

// Values 1, 2, ... in the order of the file, times a step.
std::vector<float> rising(int count, float step) {
    std::vector<float> values;
    for (int n = 1; n <= count; ++n) {
        values.push_back(step * static_cast<float>(n));
    }
    return values;
}

// What a good file holds; a test spoils some of it.
struct Content {
    std::vector<std::int32_t> id{104};
    std::vector<std::int32_t> counts{ni, nj, nk};
    std::vector<float> cf = rising(cells, 0.01F);
    std::vector<float> density = rising(cells, 0.04F);
    std::vector<float> length = rising(cells, 0.5F);
    std::vector<float> z0 = rising(columns, 0.1F);

    std::string head() const { return record(bytes_of(id)) + record(bytes_of(counts)); }
    std::string five() const {
        return head() + record(bytes_of(cf)) + record(bytes_of(density)) + record(bytes_of(length));
    }
    std::string six() const { return five() + record(bytes_of(z0)); }
};

class CanopyFile : public testing::Test {
 protected:
    void read(const std::string& bytes) {
        directory.write("ccd.tuf", bytes);
        read_file(directory.file("ccd.tuf"));
    }
    // The same beside the disk, for hundreds of files.
    void read_in_memory(const std::string& bytes) {
        memory.set(bytes);
        read_file(memory.path());
    }
    void read_file(const std::string& path) {
        first_line = "Reading canopy parameter file " + path + "\n";
        testing::internal::CaptureStdout();
        stopped = test::stop_of([&] {
            read_canopy_file(path, parameters, records,
                             {.ni = mesh_ni,
                              .nj = nj,
                              .nk = nk,
                              .gp_d = gp_d,
                              .gp_k = gp_k,
                              .gp_e = gp_e,
                              .z0_out = &z0});
        });
        out = testing::internal::GetCapturedStdout();
    }
    void expect_stop(const std::string& text) {
        ASSERT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_EQ(stopped->reason(), text);
        EXPECT_EQ(out, first_line + text + "\n");
    }
    void expect_read() {
        EXPECT_FALSE(stopped) << stopped->what();
        EXPECT_EQ(out, first_line) << "no other message";
        EXPECT_EQ(gp_d.size(), static_cast<std::size_t>(cells));
        EXPECT_EQ(records.gp_length(ni, nj, nk), 0.5F * cells);
    }

    test::TemporaryDirectory directory;
    int mesh_ni = ni;
    CanopyParameters parameters;
    CanopyRecords records;
    Field3 gp_d, gp_k, gp_e;
    Field2 z0{ni, nj, 0.0002F};
    test::MemoryFile memory;
    std::string first_line;
    std::optional<Stop> stopped;
    std::string out;
};

TEST_F(CanopyFile, RecordsRunOverITheFastest) {
    gp_d.allocate(7, 7, 7, 9.0F);  // of an earlier direction
    read(Content{}.six());
    expect_read();
    ASSERT_EQ(gp_d.ni(), ni);
    ASSERT_EQ(gp_e.nj(), nj);
    ASSERT_EQ(gp_k.nk(), nk);
    // Cell (2, 3, 1) is the 8th of its record, (1, 2, 2) the 16th.
    EXPECT_EQ(records.gp_cf(2, 3, 1), 0.01F * 8);
    EXPECT_EQ(records.gp_density(1, 2, 2), 0.04F * 16);
    EXPECT_EQ(records.gp_length(3, 1, 2), 0.5F * 15);
    EXPECT_EQ(records.gp_z0(2, 3), 0.1F * 8);
    // 0.5 Cf phi/L = 0.5 * 0.01 n * 0.04 n / (0.5 n)
    EXPECT_FLOAT_EQ(gp_d(2, 3, 1), 0.0004F * 8);
    EXPECT_FLOAT_EQ(gp_d(1, 2, 2), 0.0004F * 16);
    EXPECT_EQ(z0(2, 3), 0.1F * 8);
    EXPECT_EQ(z0(1, 1), 0.1F) << "ghosts too";
}

TEST_F(CanopyFile, FactorsFollowTheDensityOfEachCell) {
    parameters.src_included_model = true;
    parameters.alphak2 = 1.0F;
    parameters.alphae1 = 1.0F;
    parameters.alphae2 = 0.5F;
    parameters.r1max = 0.6F;
    read(Content{}.six());
    // phi = 0.04 (1, 1, 1), 0.48 (3, 4, 1), 0.64 (1, 2, 2)
    EXPECT_EQ(gp_k(1, 1, 1), 5.1F);
    EXPECT_FLOAT_EQ(gp_e(1, 1, 1), 0.54F * 5.1F);
    EXPECT_NEAR(gp_k(3, 4, 1), 2.954511F, 1.0e-5F);  // exp(0.52/0.48)
    EXPECT_NEAR(gp_e(3, 4, 1), 0.98F * 2.954511F, 1.0e-5F);
    EXPECT_NEAR(gp_k(1, 2, 2), 1.755055F, 1.0e-5F);  // exp(0.36/0.64)
    EXPECT_NEAR(gp_e(1, 2, 2), 0.9F * 1.755055F, 1.0e-5F);
}

TEST_F(CanopyFile, CellOfNothingHasNoDrag) {
    Content content;
    content.density[7] = content.length[7] = 0.0F;
    read(content.six());
    EXPECT_EQ(gp_d(2, 3, 1), 0.0F);
    EXPECT_EQ(gp_k(2, 3, 1), 5.1F);
}

// --- the roughness, which may be left out ---

TEST_F(CanopyFile, OfFiveRecordsLeavesTheRoughness) {
    read(Content{}.five());
    expect_read();
    EXPECT_EQ(z0(2, 3), 0.0002F);
    EXPECT_EQ(records.gp_z0.size(), 0U);
}

TEST_F(CanopyFile, OfFiveRecordsKeepsTheRoughnessThatWasHeld) {
    read(Content{}.six());
    z0.fill(0.0002F);
    read(Content{}.five());
    expect_read();
    EXPECT_EQ(z0(2, 3), 0.1F * 8);
    // But not that of another mesh.
    records.gp_z0.allocate(5, 5, 1.0F);
    z0.fill(0.0002F);
    read(Content{}.five());
    EXPECT_EQ(records.gp_z0.size(), 0U);
    EXPECT_EQ(z0(2, 3), 0.0002F);
}

TEST_F(CanopyFile, MayEndAnywhereWithinTheRoughness) {
    const Content content;
    const std::string whole = content.six();
    for (std::size_t end = content.five().size(); end < whole.size(); ++end) {
        read_in_memory(whole.substr(0, end));
        expect_read();
        EXPECT_EQ(z0(2, 3), 0.0002F) << end;
    }
}

TEST_F(CanopyFile, ShortRoughnessRecordIsLeftAlone) {
    Content content;
    content.z0.pop_back();
    read(content.six());
    expect_read();
    EXPECT_EQ(z0(2, 3), 0.0002F);
}

TEST_F(CanopyFile, RoughnessRecordOfWrongFramingOrTooLongIsRefused) {
    Content content;
    std::string whole = content.six();
    whole.back() = 1;
    read(whole);
    expect_stop("Error: File Inconsistency.");
    EXPECT_THAT(stopped->where(), HasSubstr("record 6 is damaged"));
    content.z0.push_back(1.0F);
    read(content.six());
    expect_stop("Error: File Inconsistency.");
    EXPECT_THAT(stopped->where(), HasSubstr("record 6 has 52 bytes, expected 48"));
    EXPECT_EQ(z0(2, 3), 0.0002F);
}

TEST_F(CanopyFile, RoughnessIsNotAskedFor) {
    directory.write("ccd.tuf", Content{}.six());
    testing::internal::CaptureStdout();
    read_canopy_file(directory.file("ccd.tuf"), parameters, records,
                     {.ni = ni, .nj = nj, .nk = nk, .gp_d = gp_d, .gp_k = gp_k, .gp_e = gp_e});
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(records.gp_z0(2, 3), 0.1F * 8);
    EXPECT_EQ(z0(2, 3), 0.0002F);
}

// --- failures ---

TEST_F(CanopyFile, ThatIsMissingIsNamed) {
    gp_d.allocate(ni, nj, nk, 9.0F);
    read_file(directory.file("restart-000_0-ccd.tuf"));
    ASSERT_TRUE(stopped);
    const std::string text = directory.file("restart-000_0-ccd.tuf") + " not found.";
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_EQ(stopped->reason(), text);
    EXPECT_EQ(out, first_line + text + "\n");
    EXPECT_EQ(gp_d.size(), 0U) << "released first";
}

TEST_F(CanopyFile, NameIsTrimmedWhereItIsNotFound) {
    read_file(directory.file("none.tuf   "));
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->reason(), directory.file("none.tuf") + " not found.");
}

TEST_F(CanopyFile, ThatIsADirectoryIsNotFoundEither) {
    std::filesystem::create_directory(directory.path() / "sub");
    read_file(directory.file("sub"));
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->reason(), directory.file("sub") + " not found.");
    EXPECT_THAT(stopped->fix(), HasSubstr("no regular file"));
}

TEST_F(CanopyFile, OfAnotherIdIsRefused) {
    Content content;
    content.id = {103};
    read(content.six());
    expect_stop("Error: File Inconsistency.");
    EXPECT_THAT(stopped->where(), EndsWith("ccd.tuf: the id is 103, expected 104"));
}

TEST_F(CanopyFile, OfOtherCountsIsRefused) {
    for (const std::vector<std::int32_t>& counts :
         std::vector<std::vector<std::int32_t>>{{nj, ni, nk},
                                                {ni + 1, nj, nk},
                                                {ni, nj - 1, nk},
                                                {ni, nj, nk + 1},
                                                {0, 0, 0},
                                                {-3, -4, 2},
                                                {2147483647, 2147483647, 2147483647},
                                                {ni, nj},
                                                {ni, nj, nk, 1}}) {
        Content content;
        content.counts = counts;
        read(content.six());
        expect_stop("Error: File Inconsistency.");
    }
    Content exchanged;
    exchanged.counts = {nj, ni, nk};
    read(exchanged.six());
    EXPECT_THAT(stopped->where(),
                EndsWith("the counts are 4 x 3 x 2, those of the mesh are 3 x 4 x 2"));
}

TEST_F(CanopyFile, OfExchangedButEqualCountsCannotBeTold) {
    mesh_ni = nj;
    Content content;
    content.counts = {nj, nj, nk};
    content.cf = content.density = content.length = rising(nj * nj * nk, 0.5F);
    content.z0 = rising(nj * nj, 0.1F);
    z0.allocate(nj, nj);
    read(content.six());
    EXPECT_FALSE(stopped);
    EXPECT_EQ(gp_d.ni(), nj);
}

TEST_F(CanopyFile, ThatIsCutInFrontOfTheRoughnessIsRefused) {
    const std::string five = Content{}.five();
    for (std::size_t end = 0; end < five.size(); ++end) {
        read_in_memory(five.substr(0, end));
        expect_stop("Error: File Inconsistency.");
        EXPECT_THAT(stopped->where(), HasSubstr(": record "));
    }
}

TEST_F(CanopyFile, OfWrongFramingIsRefused) {
    const Content content;
    const std::string whole = content.six();
    // The lengths round the id, and those in front of and behind the first array.
    const std::size_t array = content.head().size();
    for (const std::size_t at : {std::size_t{0}, std::size_t{8}, array, array + 4 + 4 * cells}) {
        for (const std::int32_t length : {0, 3, -4, 2147483647, -2147483647 - 1}) {
            std::string bytes = whole;
            std::memcpy(bytes.data() + at, &length, 4);
            read_in_memory(bytes);
            expect_stop("Error: File Inconsistency.");
        }
    }
}

TEST_F(CanopyFile, ArrayOfOtherSizeIsRefused) {
    Content content;
    content.density.pop_back();
    read(content.six());
    expect_stop("Error: File Inconsistency.");
    EXPECT_THAT(stopped->where(), HasSubstr("record 4 has 92 bytes, expected 96"));
}

TEST_F(CanopyFile, ValueThatIsNoNumberIsNamed) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    const std::string text = "ERROR: NAN detacted in ccd.tuf file.";
    Content one;
    one.cf[7] = nan;
    read(one.six());
    expect_stop(text);
    EXPECT_THAT(stopped->where(), EndsWith("ccd.tuf: gp_cf of cell (2, 3, 1)"));
    Content two;
    two.density[0] = -nan;  // a ghost cell
    read(two.five());
    expect_stop(text);
    EXPECT_THAT(stopped->where(), EndsWith("gp_density of cell (1, 1, 1)"));
    Content three;
    three.length[23] = std::numeric_limits<float>::signaling_NaN();
    read(three.six());
    expect_stop(text);
    EXPECT_THAT(stopped->where(), EndsWith("gp_length of cell (3, 4, 2)"));
}

// --- writer ---

CanopyRecords sample_records() {
    const Content content;
    CanopyRecords r;
    for (const auto& [field, values] :
         {std::pair{&r.gp_cf, &content.cf}, std::pair{&r.gp_density, &content.density},
          std::pair{&r.gp_length, &content.length}}) {
        field->allocate(ni, nj, nk);
        std::memcpy(field->data(), values->data(), 4 * cells);
    }
    r.gp_z0.allocate(ni, nj);
    std::memcpy(r.gp_z0.data(), content.z0.data(), 4 * columns);
    return r;
}

TEST_F(CanopyFile, IsWrittenByteForByte) {
    CanopyRecords sample = sample_records();
    write_canopy_file(directory.file("a-ccd.tuf"), sample);
    EXPECT_EQ(directory.read("a-ccd.tuf"), Content{}.six());
    sample.gp_z0.release();
    write_canopy_file(directory.file("a-ccd.tuf"), sample);
    EXPECT_EQ(directory.read("a-ccd.tuf"), Content{}.five());
    EXPECT_FALSE(directory.has("a-ccd.tuf.tmp"));
}

TEST_F(CanopyFile, EarlierFileOutlivesAFullDisk) {
    directory.write("ccd.tuf", "earlier");
    {
        const test::FileSizeLimit limit(100);
        EXPECT_EQ(test::stop_code_of(
                      [&] { write_canopy_file(directory.file("ccd.tuf"), sample_records()); }),
                  1);
    }
    EXPECT_EQ(directory.read("ccd.tuf"), "earlier");
    EXPECT_FALSE(directory.has("ccd.tuf.tmp"));
}

}  // namespace
}  // namespace torvex
