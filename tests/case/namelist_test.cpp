// The notation of the groups: what opens and closes one, names, values of every type, lists,
// comments, and what ends the run.

#include "case/namelist.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case/case_reading.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::ReadGroup;
using test::stop_of;
using ::testing::HasSubstr;

ReadGroup read(const std::string& group, const std::string& text) {
    return {group, text};
}

CaseSettings settings_of(const std::string& group, const std::string& items) {
    return read(group, "&" + group + "\n" + items + "\n/\n").settings;
}

// The message of the stop that a text ends in, blank without one.
std::string message_of(const std::string& group, const std::string& text) {
    const auto stopped = stop_of([&] { ReadGroup(group, text); });
    if (!stopped) {
        return {};
    }
    EXPECT_EQ(stopped->code(), 1);
    return stopped->what();
}

std::string message_of_items(const std::string& group, const std::string& items) {
    return message_of(group, "&" + group + "\n" + items + "\n/\n");
}

// How groups open and close

TEST(NamelistGroup, OpensWithAmpersandOrDollarBehindBlanks) {
    EXPECT_EQ(read("NML_RUN", "&NML_RUN DEBUG_MODE=7 /").settings.DEBUG_MODE, 7);
    EXPECT_EQ(read("NML_RUN", "$NML_RUN DEBUG_MODE=7 /").settings.DEBUG_MODE, 7);
    EXPECT_EQ(read("NML_RUN", "  \t &NML_RUN\n DEBUG_MODE=7 /").settings.DEBUG_MODE, 7);
    EXPECT_EQ(read("NML_RUN", "text\n\n &NML_RUN\n DEBUG_MODE=7\n/\n").settings.DEBUG_MODE, 7);
}

TEST(NamelistGroup, ClosesWithSlashOrEnd) {
    for (const char* end : {"/", "&END", "$END", "&end", "$End"}) {
        const std::string text = "&NML_RUN\n DEBUG_MODE=7\n" + std::string(end) + "\nDEBUG_MODE=9";
        EXPECT_EQ(read("NML_RUN", text).settings.DEBUG_MODE, 7) << end;
    }
}

TEST(NamelistGroup, EmptyIsEnough) {
    for (const char* text : {"&NML_RUN /", "&NML_RUN/", "&NML_RUN\n/", "&NML_RUN\n&END",
                             "&NML_RUN ! nothing\n\n/", "&NML_RUN , , /"}) {
        EXPECT_EQ(message_of("NML_RUN", text), "") << text;
    }
}

TEST(NamelistGroup, NameComparesWholeAndWithoutCase) {
    EXPECT_EQ(read("NML_RUN", "&nml_Run DEBUG_MODE=7 /").settings.DEBUG_MODE, 7);
    EXPECT_EQ(
        read("NML_RUN", "&NML_RUN2 DEBUG_MODE=1 /\n&NML_RUN DEBUG_MODE=7 /").settings.DEBUG_MODE,
        7);
    EXPECT_EQ(read("NML_ER", "&NML_E INFLOW_ELEVATION=1 /\n&NML_ER INFLOW_ELEVATION=7 /\n")
                  .settings.INFLOW_ELEVATION,
              7.0F);
    EXPECT_THAT(message_of("NML_RUN", "& NML_RUN /"), HasSubstr("group &NML_RUN is missing"));
    EXPECT_THAT(message_of("NML_RUN", "x &NML_RUN /"), HasSubstr("group &NML_RUN is missing"));
}

TEST(NamelistGroup, FirstOfTwoCounts) {
    const std::string text = "&NML_RUN DEBUG_MODE=7 /\n&NML_RUN DEBUG_MODE=8 /\n";
    EXPECT_EQ(read("NML_RUN", text).settings.DEBUG_MODE, 7);
}

TEST(NamelistGroup, TextAroundIsHarmless) {
    const std::string text =
        "A title with 'an open quote, a / and DEBUG_MODE = 1\n"
        "&nest_points\nnest_mode = 0\n/\n"
        "&NML_RUN\n  DEBUG_MODE = 7\n/ text behind the slash, DEBUG_MODE = 3\n"
        "&UNKNOWN_GROUP X = 1 /\n";
    EXPECT_EQ(read("NML_RUN", text).settings.DEBUG_MODE, 7);
}

TEST(NamelistGroup, MissingOneIsNamedWithItsNearest) {
    EXPECT_THAT(message_of("NML_SITE", "&NML_RUN /\n&NML_SITES /\n"),
                HasSubstr("group &NML_SITE is missing; did you mean NML_SITES?\n  in case.tin"));
    EXPECT_THAT(message_of("NML_SITE", ""), HasSubstr("group &NML_SITE is missing\n"));
}

TEST(NamelistGroup, UnclosedOneTellsWhereItOpened) {
    EXPECT_THAT(message_of("NML_RUN", "\n\n&NML_RUN\n DEBUG_MODE = 1\n"),
                HasSubstr("group &NML_RUN: opened here, is never closed by /\n  in case.tin, "
                          "line 3"));
    EXPECT_THAT(message_of("NML_RUN", "&NML_RUN\n DEBUG_MODE = 1\n&NML_SITE /\n"),
                HasSubstr("line 3"));
}

// Items

TEST(NamelistItem, StandInAnyOrderWithCommasBlanksOrLineEnds) {
    const CaseSettings s =
        settings_of("NML_RUN", "DEBUG_MODE=3,ATLAS_FLAG = 1 RESTART_FLAG=2\n,TORVEX_MODE\t=\t4,");
    EXPECT_EQ(s.DEBUG_MODE, 3);
    EXPECT_EQ(s.ATLAS_FLAG, 1);
    EXPECT_EQ(s.RESTART_FLAG, 2);
    EXPECT_EQ(s.TORVEX_MODE, 4);
    EXPECT_EQ(s.TERRAIN_MODE, "normal");
}

TEST(NamelistItem, KeyComparesWithoutCase) {
    EXPECT_EQ(settings_of("NML_RUN", "debug_Mode = 3").DEBUG_MODE, 3);
}

TEST(NamelistItem, LastOfARepeatedKeyCounts) {
    EXPECT_EQ(settings_of("NML_RUN", "DEBUG_MODE=3\nATLAS_FLAG=1\nDEBUG_MODE=4").DEBUG_MODE, 4);
}

TEST(NamelistItem, ValueMayStandOnTheNextLine) {
    EXPECT_EQ(settings_of("NML_RUN", "DEBUG_MODE =\n\n  ! here:\n 12").DEBUG_MODE, 12);
}

TEST(NamelistItem, WithoutAValueKeepsItsDefault) {
    const CaseSettings s = settings_of("NML_RUN", "TERRAIN_MODE =\nDEBUG_MODE = , ATLAS_FLAG = 1");
    EXPECT_EQ(s.TERRAIN_MODE, "normal");
    EXPECT_EQ(s.DEBUG_MODE, 0);
    EXPECT_EQ(s.ATLAS_FLAG, 1);
}

TEST(NamelistItem, CommasTooManyAreHarmless) {
    const CaseSettings s =
        settings_of("NML_RUN", ", DEBUG_MODE = 3,, ,ATLAS_FLAG = 1,\n,TORVEX_MODE = 2,,");
    EXPECT_EQ(s.DEBUG_MODE, 3);
    EXPECT_EQ(s.ATLAS_FLAG, 1);
    EXPECT_EQ(s.TORVEX_MODE, 2);
    EXPECT_NE(message_of_items("NML_RUN", "DEBUG_MODE = 3,, 4"), "");
    EXPECT_NE(message_of_items("NML_RUN", "DEBUG_MODE = 2147483647*"), "");
}

TEST(NamelistItem, CommentsRunToTheLineEnd) {
    const CaseSettings s = settings_of(
        "NML_RUN", "! DEBUG_MODE = 9 /\nDEBUG_MODE = 3 ! = 4 / &END\nATLAS_FLAG=1!, 2\n!");
    EXPECT_EQ(s.DEBUG_MODE, 3);
    EXPECT_EQ(s.ATLAS_FLAG, 1);
}

TEST(NamelistItem, CarriageReturnsAtLineEndsAreDropped) {
    const ReadGroup g = read("NML_RUN",
                             "&NML_RUN\r\n TERRAIN_MODE = 'flat'\r\n DEBUG_MODE = 3\r\n"
                             " MESO_DWS_MODE = T\r\n/\r\n");
    EXPECT_EQ(g.settings.TERRAIN_MODE, "flat");
    EXPECT_EQ(g.settings.DEBUG_MODE, 3);
    EXPECT_TRUE(g.settings.MESO_DWS_MODE);
}

TEST(NamelistItem, LineOfTheLastAssignmentIsKept) {
    const ReadGroup g = read("NML_RUN", "&NML_RUN\n DEBUG_MODE = 3\n\n DEBUG_MODE = 4\n/\n");
    EXPECT_EQ(g.lines.where(g.file, "DEBUG_MODE"), "case.tin, line 4");
    EXPECT_EQ(g.lines.where(g.file, "ATLAS_FLAG"), "case.tin");
}

// Values

TEST(NamelistValue, Integers) {
    EXPECT_EQ(settings_of("NML_RUN", "DEBUG_MODE = +12").DEBUG_MODE, 12);
    EXPECT_EQ(settings_of("NML_RUN", "DEBUG_MODE = -12").DEBUG_MODE, -12);
    EXPECT_EQ(settings_of("NML_RUN", "DEBUG_MODE = 0007").DEBUG_MODE, 7);
    EXPECT_EQ(settings_of("NML_RUN", "DEBUG_MODE = 2147483647").DEBUG_MODE, 2147483647);
    EXPECT_EQ(settings_of("NML_RUN", "DEBUG_MODE = -2147483648").DEBUG_MODE, -2147483647 - 1);
    for (const char* bad :
         {"2147483648", "1.5", "1e3", "x", "12x", "'12'", "T", "--1", "+", "1=2"}) {
        EXPECT_THAT(message_of_items("NML_RUN", "DEBUG_MODE = " + std::string(bad)),
                    HasSubstr("expected"))
            << bad;
    }
}

TEST(NamelistValue, Reals) {
    const auto value = [](const std::string& text) {
        return settings_of("NML_CASEFILE", "WE_LENGTH = " + text).WE_LENGTH;
    };
    EXPECT_EQ(value("1500"), 1500.0F);
    EXPECT_EQ(value("1.5"), 1.5F);
    EXPECT_EQ(value(".5"), 0.5F);
    EXPECT_EQ(value("5."), 5.0F);
    EXPECT_EQ(value("-0.25"), -0.25F);
    EXPECT_EQ(value("+2"), 2.0F);
    EXPECT_EQ(value("1.5E2"), 150.0F);
    EXPECT_EQ(value("1.5e+2"), 150.0F);
    EXPECT_EQ(value("1.5D2"), 150.0F);
    EXPECT_EQ(value("25d-2"), 0.25F);
    EXPECT_EQ(value("0.1"), 0.1F);
    EXPECT_EQ(value("1e-60"), 0.0F);
    for (const char* bad : {"1.2.3", "1e", "abc", "nan", "inf", "-Infinity", "1e39", "0x10", "'1'",
                            "1,5", ".true.", "1 2"}) {
        EXPECT_THAT(message_of_items("NML_CASEFILE", "WE_LENGTH = " + std::string(bad)),
                    HasSubstr("expected"))
            << bad;
    }
}

TEST(NamelistValue, Logicals) {
    for (const char* text : {".true.", ".TRUE.", "T", "t", ".T.", "true", "TRUE", ".t", "Tool"}) {
        EXPECT_TRUE(settings_of("NML_RUN", "MESO_DWS_MODE = " + std::string(text)).MESO_DWS_MODE)
            << text;
    }
    for (const char* text : {".false.", ".False.", "F", "f", ".F.", "false", "FALSE"}) {
        EXPECT_FALSE(
            settings_of("NML_RUN", "MESO_DWS_MODE = T, MESO_DWS_MODE = " + std::string(text))
                .MESO_DWS_MODE)
            << text;
    }
    for (const char* bad : {"1", "0", "-1", "yes", ".", "'T'", "on"}) {
        EXPECT_THAT(message_of_items("NML_RUN", "MESO_DWS_MODE = " + std::string(bad)),
                    HasSubstr("expected a logical"))
            << bad;
    }
}

TEST(NamelistValue, Texts) {
    const auto value = [](const std::string& text) {
        return settings_of("NML_CASEFILE", "PROJECT_NAME = " + text).PROJECT_NAME;
    };
    EXPECT_EQ(value("'abc'"), "abc");
    EXPECT_EQ(value("\"abc\""), "abc");
    EXPECT_EQ(value("'it''s'"), "it's");
    EXPECT_EQ(value("\"say \"\"so\"\"\""), "say \"so\"");
    EXPECT_EQ(value("\"it's\""), "it's");
    EXPECT_EQ(value("' a / b & c = 1 ! d'"), " a / b & c = 1 ! d");
    EXPECT_EQ(value("'abc   '"), "abc");
    EXPECT_EQ(value("''"), "");
    EXPECT_EQ(value("'   '"), "");
    EXPECT_EQ(value("'abc',"), "abc");
    EXPECT_EQ(value("'abcdefghijklmnopqrstuvwxyz'"), "abcdefghijklmnopqrst");
    for (const char* bad : {"abc", "12", "'abc", "\"abc'", "'a' 'b'", "'line\nend'"}) {
        EXPECT_THAT(message_of_items("NML_CASEFILE", "PROJECT_NAME = " + std::string(bad)),
                    HasSubstr("expected"))
            << bad;
    }
}

TEST(NamelistValue, CutTextLosesItsLastBlanks) {
    EXPECT_EQ(settings_of("NML_RUN", "TERRAIN_MODE = 'flat  x'").TERRAIN_MODE, "flat");
    EXPECT_EQ(settings_of("NML_RUN", "TERRAIN_MODE = 'normality'").TERRAIN_MODE, "normal");
}

// Lists

TEST(NamelistList, TakesFromItsFirstElementOn) {
    const CaseSettings s = settings_of("NML_CASEFILE", "WIND_DIRECTION_ANGLE = 1, 2 3\n 4,\n5");
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(1), 1.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(2), 2.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(3), 3.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(4), 4.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(5), 5.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(6), 0.0F);
}

TEST(NamelistList, FewerValuesLeaveTheRestAlone) {
    const CaseSettings s = settings_of("NML_CASEFILE", "ELEVATION_CORRECTION_FACTOR = 2, 3");
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(2), 3.0F);
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(3), 1.0F);
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(361), 1.0F);
}

TEST(NamelistList, RepeatCountGivesARunOfValues) {
    const CaseSettings s = settings_of("NML_CASEFILE", "WIND_DIRECTION_ANGLE = 3*0.5, 7 2*9");
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(1), 0.5F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(2), 0.5F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(3), 0.5F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(4), 7.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(5), 9.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(6), 9.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(7), 0.0F);
}

TEST(NamelistList, RepeatedTextAndNull) {
    EXPECT_EQ(settings_of("NML_CASEFILE", "PROJECT_NAME = 1*'abc'").PROJECT_NAME, "abc");
    const CaseSettings s = settings_of("NML_CASEFILE", "ELEVATION_CORRECTION_FACTOR = 5, 2*, 6");
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(1), 5.0F);
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(2), 1.0F);
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(3), 1.0F);
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(4), 6.0F);
}

TEST(NamelistList, EmptyPlaceLeavesItsElementAlone) {
    const CaseSettings s = settings_of("NML_CASEFILE", "ELEVATION_CORRECTION_FACTOR = 5, , 6");
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(1), 5.0F);
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(2), 1.0F);
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(3), 6.0F);
    const CaseSettings leading = settings_of("NML_CASEFILE", "ELEVATION_CORRECTION_FACTOR = , 6");
    EXPECT_EQ(leading.ELEVATION_CORRECTION_FACTOR(1), 1.0F);
    EXPECT_EQ(leading.ELEVATION_CORRECTION_FACTOR(2), 6.0F);
}

TEST(NamelistList, IndexSaysWhereToBegin) {
    const CaseSettings s = settings_of(
        "NML_CASEFILE", "WIND_DIRECTION_ANGLE(3) = 30, 40\nWIND_DIRECTION_ANGLE ( 361 ) = 9");
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(2), 0.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(3), 30.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(4), 40.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(5), 0.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(361), 9.0F);
}

TEST(NamelistList, BoundsAreKept) {
    EXPECT_EQ(message_of_items("NML_CASEFILE", "WIND_DIRECTION_ANGLE = 361*1"), "");
    EXPECT_EQ(message_of_items("NML_CASEFILE", "CENT_LON = 1, 2, 3"), "");
    EXPECT_EQ(message_of_items("NML_CASEFILE", "CENT_LON(3) = 3"), "");
    for (const char* bad :
         {"WIND_DIRECTION_ANGLE = 362*1", "WIND_DIRECTION_ANGLE = 2147483647*1",
          "WIND_DIRECTION_ANGLE = 99999999999999999999*1", "WIND_DIRECTION_ANGLE(361) = 1, 2",
          "WIND_DIRECTION_ANGLE(362) = 1", "WIND_DIRECTION_ANGLE(0) = 1",
          "WIND_DIRECTION_ANGLE(-1) = 1", "WIND_DIRECTION_ANGLE(4294967297) = 1",
          "WIND_DIRECTION_ANGLE(x) = 1", "WIND_DIRECTION_ANGLE(1 = 1", "WIND_DIRECTION_ANGLE() = 1",
          "WIND_DIRECTION_ANGLE(1,2) = 1", "CENT_LON = 1, 2, 3, 4", "WE_LENGTH = 1, 2",
          "WE_LENGTH(2) = 1"}) {
        EXPECT_NE(message_of_items("NML_CASEFILE", bad), "") << bad;
    }
}

TEST(NamelistList, IntegersTakeListsToo) {
    const CaseSettings s = settings_of("NML_ER", "DIRECTIONAL_ALPHA_APPLICABLE_WDS = 1, 3, 2*5");
    EXPECT_EQ(s.DIRECTIONAL_ALPHA_APPLICABLE_WDS(2), 3);
    EXPECT_EQ(s.DIRECTIONAL_ALPHA_APPLICABLE_WDS(4), 5);
    EXPECT_EQ(s.DIRECTIONAL_ALPHA_APPLICABLE_WDS(5), -1);
}

// Site records

TEST(NamelistSites, MembersAreWrittenOneByOne) {
    const CaseSettings s = settings_of("NML_SITE",
                                       "N_SITE = 2\n"
                                       "SITE(1)%LABEL = 'mast', SITE(1)%LON = 139, 45, 1.5\n"
                                       "site( 1000 ) % lat(2) = 30 site(3)%Label=\"x\"\n");
    EXPECT_EQ(s.N_SITE, 2);
    EXPECT_EQ(s.SITE[0].LABEL, "mast");
    EXPECT_EQ(s.SITE[0].LON, (Triple{139.0F, 45.0F, 1.5F}));
    EXPECT_EQ(s.SITE[0].LAT, Triple{});
    EXPECT_EQ(s.SITE[999].LAT, (Triple{0.0F, 30.0F, 0.0F}));
    EXPECT_EQ(s.SITE[2].LABEL, "x");
}

TEST(NamelistSites, LabelIsCutToTwentyCharacters) {
    EXPECT_EQ(settings_of("NML_SITE", "SITE(1)%LABEL = '123456789012345678901'").SITE[0].LABEL,
              "12345678901234567890");
}

TEST(NamelistSites, EverythingElseIsRefused) {
    for (const char* bad : {"SITE = 'a'", "SITE(1) = 'a'", "SITE%LABEL = 'a'",
                            "SITE(0)%LABEL = 'a'", "SITE(1001)%LABEL = 'a'", "SITE(1)%NAME = 'a'",
                            "SITE(1)% = 'a'", "SITE(1)%LON = 1, 2, 3, 4", "SITE(1)%LON(4) = 1",
                            "SITE(1)%LABEL = a", "SITE", "SITE(1)", "SITE(1)%LON"}) {
        EXPECT_NE(message_of_items("NML_SITE", bad), "") << bad;
    }
    EXPECT_THAT(message_of_items("NML_SITE", "SITE(1)%LABLE = 'a'"),
                HasSubstr("did you mean LABEL?"));
}

// Messages

TEST(NamelistMessage, UnknownKeyNamesItsNearestOrItsGroup) {
    EXPECT_THAT(message_of_items("NML_CASEFILE", "\nMIN_DYX = 5"),
                HasSubstr("group &NML_CASEFILE: unknown key \"MIN_DYX\"; did you mean MIN_DXY?\n"
                          "  in case.tin, line 3"));
    EXPECT_THAT(message_of_items("NML_RUN", "MIN_DXY = 5"),
                HasSubstr("unknown key \"MIN_DXY\"\n  in case.tin, line 2\n"
                          "  it is a key of &NML_CASEFILE"));
}

TEST(NamelistMessage, UnreadableValueNamesFileLineKeyAndWhatWasExpected) {
    EXPECT_EQ(message_of("NML_CASEFILE", "&NML_CASEFILE\n WE_LENGTH = 1.2.3\n/\n"),
              "group &NML_CASEFILE: key WE_LENGTH: cannot read \"1.2.3\", expected a real number\n"
              "  in case.tin, line 2");
    EXPECT_EQ(message_of("NML_CASEFILE", "&NML_CASEFILE\n CENT_LON = 139,\n 45,\n x\n/\n"),
              "group &NML_CASEFILE: key CENT_LON: cannot read \"x\", expected a real number\n"
              "  in case.tin, line 4");
    EXPECT_EQ(message_of("NML_SITE", "&NML_SITE\n SITE(7)%LON = 139, T\n/\n"),
              "group &NML_SITE: key SITE(7)%LON: cannot read \"T\", expected a real number\n"
              "  in case.tin, line 2");
}

TEST(NamelistMessage, MissingEqualsSignIsTold) {
    EXPECT_THAT(message_of_items("NML_RUN", "DEBUG_MODE 3"),
                HasSubstr("key DEBUG_MODE: cannot read \"3\", expected ="));
    EXPECT_THAT(message_of_items("NML_RUN", "= 3"), HasSubstr("expected a key or /"));
    EXPECT_THAT(message_of_items("NML_RUN", "3 = 3"), HasSubstr("expected a key or /"));
}

TEST(NamelistMessage, HoldsNoControlBytesAndNoEndlessText) {
    const std::string message =
        message_of_items("NML_RUN", "DEBUG_MODE = \x01\x1b[2J" + std::string(5000, 'x'));
    EXPECT_LT(message.size(), 400U);
    EXPECT_EQ(message.find('\x1b'), std::string::npos);
    EXPECT_EQ(message.find('\x01'), std::string::npos);
}

TEST(Namelist, NulBytesAreText) {
    using namespace std::string_literals;
    EXPECT_NE(message_of_items("NML_RUN", "DEBUG_MODE = 3\0"s), "");
    EXPECT_NE(message_of_items("NML_RUN", "DEBUG\0MODE = 3"s), "");
    EXPECT_EQ(message_of("NML_RUN", "\0\0\n&NML_RUN /"s), "");
}

}  // namespace
}  // namespace torvex
