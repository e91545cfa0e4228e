// Tables of fixed slots: bytes on disk, counts of damaged tables, the lock, failures of the system.

#include "results/view_table.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <functional>

#include "support/failures.hpp"
#include "support/file_descriptors.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::stop_of;
using ::testing::HasSubstr;
using Existing = ViewTable::Existing;

std::string slots(const std::vector<std::string>& rows) {
    std::string text;
    for (const std::string& row : rows) {
        text += row + std::string(119 - row.size(), ' ') + "\n";
    }
    return text;
}

class ViewTableTest : public ::testing::Test {
 protected:
    std::string bytes() const { return directory.read("table.dat"); }
    void write(const std::string& text) const { directory.write("table.dat", text); }
    void open(Existing existing = Existing::keep) { table.open(path, existing); }

    test::TemporaryDirectory directory;
    std::string path = directory.file("table.dat");
    ViewTable table;
};

TEST_F(ViewTableTest, NewOneHoldsOneInItsFirstSlot) {
    open();
    EXPECT_EQ(bytes(), slots({"       1"}));
    EXPECT_EQ(table.count(), 1);
}

TEST_F(ViewTableTest, RowsAreSlotsOf120BytesWithALineFeed) {
    open();
    table.append(" 22.5 0");
    table.append(" 45.0 0");
    EXPECT_EQ(bytes(), slots({"       3", " 22.5 0", " 45.0 0"}));
    EXPECT_EQ(table.count(), 3);
    EXPECT_EQ(table.slot(2), " 22.5 0");
}

TEST_F(ViewTableTest, LastRowIsRewrittenInPlace) {
    open();
    table.append(" 22.5 0, and more text");
    table.write_last(" 22.5 1");
    EXPECT_EQ(bytes(), slots({"       2", " 22.5 1"}));
}

TEST_F(ViewTableTest, LongRowsAreCutBeforeTheLineFeed) {
    open();
    table.append(std::string(200, 'x'));
    EXPECT_EQ(bytes(), slots({"       2", std::string(119, 'x')}));
}

TEST_F(ViewTableTest, KeptOneGoesOn) {
    write(slots({"       2", "row"}));
    open();
    table.append("next");
    EXPECT_EQ(bytes(), slots({"       3", "row", "next"}));
}

TEST_F(ViewTableTest, DiscardedOneBeginsEmpty) {
    write(slots({"       2", "row"}));
    open(Existing::discard);
    EXPECT_EQ(bytes(), slots({"       1"}));
}

TEST_F(ViewTableTest, ClearingBlanksTheUsedSlots) {
    write(slots({"       3", "row 1", "row 2"}));
    open();
    clear_view_log(table);
    EXPECT_EQ(bytes(), slots({"       1", "", ""}));
    table.append("new");
    EXPECT_EQ(bytes(), slots({"       2", "new", ""}));
}

TEST_F(ViewTableTest, DamagedCountIsThatOfTheSlotsPresent) {
    struct Damaged {
        std::string first;
        int count;
    };
    for (const Damaged& c : {Damaged{"       9", 3},
                             {"garbage", 3},
                             {"", 3},
                             {"       0", 3},
                             {"      -5", 3},
                             {"99999999999", 3},
                             {"       2", 2},
                             {"       1", 1},
                             {"********", 3}}) {
        write(slots({c.first, "row 1", "row 2"}));
        open();
        EXPECT_EQ(table.count(), c.count) << c.first;
        table.close();
    }
}

TEST_F(ViewTableTest, TableCutOffByAKillGoesOnBehindItsWholeSlots) {
    write(slots({"       3", "row 1", "row 2"}).substr(0, 300));
    open();
    EXPECT_EQ(table.count(), 2);
    table.append("next");
    EXPECT_EQ(bytes(), slots({"       3", "row 1", "next"}));
}

TEST_F(ViewTableTest, TableWithoutAWholeSlotIsNew) {
    for (const char* text : {"", "       2", "x"}) {
        write(text);
        open();
        EXPECT_EQ(table.count(), 1);
        EXPECT_EQ(bytes(), slots({"       1"}));
        table.close();
    }
}

TEST_F(ViewTableTest, LineFeedsOfTheOtherKindAreNoTrouble) {
    write(std::string("       2") + std::string(112, ' ') + "row" + std::string(117, ' '));
    open();
    EXPECT_EQ(table.count(), 2);
    EXPECT_EQ(table.slot(2), "row");
}

TEST_F(ViewTableTest, SecondWriterIsDeniedAndChangesNothing) {
    open();
    table.append("row");
    const std::string before = bytes();
    for (const Existing existing : {Existing::keep, Existing::discard}) {
        ViewTable second;
        const auto stopped = stop_of([&] { second.open(path, existing); });
        ASSERT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_EQ(stopped->reason(), "another run is using this directory");
        EXPECT_THAT(stopped->what(), HasSubstr("table.dat"));
        EXPECT_EQ(bytes(), before);
    }
    table.append("and on");
    table.close();
    ViewTable second;
    second.open(path, Existing::keep);
    EXPECT_EQ(second.count(), 3);
}

TEST_F(ViewTableTest, LockOutlivesTheDiscarding) {
    open(Existing::discard);
    const int other = ::open(path.c_str(), O_RDWR);
    ASSERT_GE(other, 0);
    EXPECT_NE(flock(other, LOCK_EX | LOCK_NB), 0);
    table.close();
    EXPECT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    ::close(other);
}

TEST_F(ViewTableTest, ReaderIsNotDenied) {
    open();
    table.append("row");
    EXPECT_EQ(bytes().size(), 240U);
}

TEST_F(ViewTableTest, DirectoryOrMissingPlaceIsNamed) {
    for (const std::string& place : {directory.path().string(), directory.file("no/table.dat")}) {
        const auto stopped = stop_of([&] { table.open(place, Existing::keep); });
        ASSERT_TRUE(stopped) << place;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("cannot open the monitor file"));
        EXPECT_THAT(stopped->what(), HasSubstr(place));
    }
}

TEST_F(ViewTableTest, FullDiskStopsWithTheSystemsReason) {
    open();
    const test::FileSizeLimit limit(300);
    table.append("fits");
    const auto stopped = stop_of([&] { table.append("does not"); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(stopped->what(), HasSubstr("cannot write the monitor file"));
    EXPECT_THAT(stopped->what(), HasSubstr("table.dat"));
}

TEST_F(ViewTableTest, FailedCloseIsTold) {
    open();
    test::close_descriptor_of(path);
    EXPECT_FALSE(table.close());
    EXPECT_FALSE(table.is_open());
    EXPECT_TRUE(table.close()) << "a closed table closes well";
}

// A table of a terabyte takes no room on the disk until somebody blanks or copies it.
TEST_F(ViewTableTest, OneLargerThanAnyIsRefusedAndLeftAlone) {
    constexpr std::uintmax_t bytes_of_one = std::uintmax_t{1} << 40;
    write("");
    std::filesystem::resize_file(path, bytes_of_one);
    for (const auto& call :
         {std::function<void()>([&] { table.open(path, Existing::keep); }),
          std::function<void()>([&] { copy_view_log(path, directory.file("copy.dat")); })}) {
        const auto stopped = stop_of(call);
        ASSERT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->reason(), HasSubstr("has 1099511627776 bytes"));
        EXPECT_EQ(stopped->where(), path);
        EXPECT_EQ(std::filesystem::file_size(path), bytes_of_one);
        EXPECT_FALSE(directory.has("copy.dat"));
    }
}

TEST_F(ViewTableTest, IsHeldForAsLongAsItIsOpen) {
    EXPECT_FALSE(table_is_held(path));
    EXPECT_FALSE(directory.has("table.dat"));
    open();
    EXPECT_TRUE(table_is_held(path));
    table.close();
    EXPECT_FALSE(table_is_held(path));
    EXPECT_FALSE(table_is_held(directory.path().string()));
}

TEST_F(ViewTableTest, CopyTakesTheWholeFile) {
    write(slots({"       2", "row"}));
    const std::string copy = directory.file("copy.dat");
    EXPECT_TRUE(copy_view_log(path, copy));
    EXPECT_EQ(directory.read("copy.dat"), bytes());
    directory.write("copy.dat", std::string(5000, 'x'));
    EXPECT_TRUE(copy_view_log(path, copy));
    EXPECT_EQ(directory.read("copy.dat"), bytes());
    EXPECT_FALSE(copy_view_log(directory.file("none.dat"), copy));
    EXPECT_EQ(directory.read("copy.dat"), bytes());
}

TEST_F(ViewTableTest, CopyKeepsItsPlaceOnDisk) {
    write(slots({"       2", "row"}));
    directory.write("copy.dat", slots({"       1"}));
    const int viewer = ::open(directory.file("copy.dat").c_str(), O_RDONLY);
    ASSERT_GE(viewer, 0);
    EXPECT_TRUE(copy_view_log(path, directory.file("copy.dat")));
    EXPECT_EQ(lseek(viewer, 0, SEEK_END), 240);
    ::close(viewer);
}

TEST_F(ViewTableTest, CopyMayBeWrittenOverTheFileOfAnotherUser) {
    write(slots({"       2", "row"}));
    directory.write("copy.dat", "of another user");
    namespace fs = std::filesystem;
    fs::permissions(directory.path(), fs::perms::all);
    fs::permissions(directory.file("copy.dat"), fs::perms(0666));
    {
        const test::OrdinaryUser user;
        EXPECT_TRUE(copy_view_log(path, directory.file("copy.dat")));
    }
    EXPECT_EQ(directory.read("copy.dat"), bytes());
}

TEST_F(ViewTableTest, CopyOfWhatIsNoRegularFileIsRefused) {
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const auto stopped = stop_of([&] { copy_view_log(path, directory.file("copy.dat")); });
    ASSERT_TRUE(stopped);
    EXPECT_THAT(stopped->what(), HasSubstr("table.dat"));
    EXPECT_FALSE(directory.has("copy.dat"));
}

// One byte more than four million rows of 120 bytes.
TEST_F(ViewTableTest, CopyOfWhatNoRunWritesIsRefused) {
    write(slots({"       2", "row"}));
    std::filesystem::resize_file(path, 480'000'001);
    const auto stopped = stop_of([&] { copy_view_log(path, directory.file("copy.dat")); });
    ASSERT_TRUE(stopped);
    EXPECT_THAT(stopped->reason(), HasSubstr("480000001 bytes, expected 480000000 at most"));
}

TEST_F(ViewTableTest, CopyThatFindsNoRoomIsNamed) {
    write(slots({"       2", "row"}));
    const test::FileSizeLimit limit(200);
    const auto stopped = stop_of([&] { copy_view_log(path, directory.file("copy.dat")); });
    ASSERT_TRUE(stopped);
    EXPECT_THAT(stopped->reason(), HasSubstr("File too large"));
    EXPECT_EQ(stopped->where(), directory.file("copy.dat"));
}

TEST_F(ViewTableTest, CopyThatCannotBeMadeIsNamed) {
    write(slots({"       2", "row"}));
    const auto stopped = stop_of([&] { copy_view_log(path, directory.file("no/such/copy.dat")); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(stopped->what(), HasSubstr("cannot copy the monitor file"));
}

}  // namespace
}  // namespace torvex
