// The file that tells what a saved state was made from.

#include "run/fingerprint.hpp"

#include <gtest/gtest.h>

#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

const Fingerprint sample{{{"BASIC_H_FILE", "00ff00ff00ff00ff"},
                          {"CENT_LON", "0.8385000000000000E+04"},
                          {"TERRAIN_MODE", "a = b"},
                          {"MESO_DWS_MODE", ""},
                          {"restart-000_0-ccd.tuf", "0123456789abcdef"}}};

TEST(Fingerprint, StandsBesideTheSavedStateUnderAName) {
    EXPECT_EQ(fingerprint_path("atlas-restart-022_5-"), "atlas-restart-022_5-fingerprint.info");
}

TEST(Fingerprint, ComesBackFromItsFile) {
    const test::TemporaryDirectory directory;
    write_fingerprint(directory.file("f"), sample);
    const auto back = read_fingerprint(directory.file("f"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->entries, sample.entries);
    EXPECT_EQ(difference(*back, sample), "");
}

TEST(Fingerprint, IsReadPastWhatIsNoEntry) {
    const test::TemporaryDirectory directory;
    directory.write("f", "# a title\r\n\r\nGS = 0\r\nnonsense\nATLAS_FLAG = 1");
    const auto back = read_fingerprint(directory.file("f"));
    ASSERT_TRUE(back);
    const Fingerprint expected{{{"GS", "0"}, {"ATLAS_FLAG", "1"}}};
    EXPECT_EQ(back->entries, expected.entries);
}

TEST(Fingerprint, IsNothingWithoutAnEntry) {
    const test::TemporaryDirectory directory;
    EXPECT_FALSE(read_fingerprint(directory.file("absent")));
    for (const char* text : {"", "# a title\n", "\n\n", "GS=0\n"}) {
        directory.write("f", text);
        EXPECT_FALSE(read_fingerprint(directory.file("f"))) << text;
    }
}

TEST(Difference, NamesWhatChangedWhatCameAndWhatWent) {
    Fingerprint now = sample;
    now.entries[0].second = "00ff00ff00ff00fe";
    EXPECT_EQ(difference(sample, now), "BASIC_H_FILE");
    now.entries[3].second = "T";
    now.entries.emplace_back("INFLOW_ELEVATION", "0.1000E+02");
    EXPECT_EQ(difference(sample, now), "BASIC_H_FILE, MESO_DWS_MODE, INFLOW_ELEVATION");
    now = sample;
    now.entries.erase(now.entries.begin() + 1);
    EXPECT_EQ(difference(sample, now), "CENT_LON");
    EXPECT_EQ(difference({}, {}), "");
}

TEST(Difference, TakesNoHeedOfTheOrder) {
    Fingerprint turned = sample;
    std::swap(turned.entries[0], turned.entries[4]);
    EXPECT_EQ(difference(sample, turned), "");
}

}  // namespace
}  // namespace torvex
