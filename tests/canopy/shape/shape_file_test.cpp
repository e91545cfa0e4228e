#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>

#include "canopy/shape/read_shape_file.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

// The files of data/ were written by GDAL, see make_shapes.py.
namespace torvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

const std::string data = TORVEX_SHAPES_DIR;

ShapeSet houses() {
    ShapeSet set;
    set.name = "sf_build";
    set.filename = data + "/houses.shp";
    set.dbf_h = "HEIGHT";
    return set;
}

ShapeSet one_polygon(const std::string& name) {
    ShapeSet set;
    set.name = "sf_tree";
    set.filename = data + "/" + name;
    set.dbf_h = "H";
    return set;
}

class ShapeFile : public testing::Test {
 protected:
    ShapeLayer read(const ShapeSet& set) {
        CaptureStdout();
        std::optional<ShapeLayer> layer;
        stopped = test::stop_of([&] { layer = read_shape_file(set); });
        told = GetCapturedStdout();
        return layer.value_or(ShapeLayer{});
    }

    std::optional<Stop> stopped;
    std::string told;
};

TEST_F(ShapeFile, RingsOfOneEntity) {
    const ShapeLayer layer = read(houses());
    ASSERT_FALSE(stopped) << stopped->what();
    EXPECT_EQ(layer.count, 6);
    EXPECT_EQ(layer.null_shapes, 1);
    EXPECT_EQ(layer.deleted_rows, 1);
    ASSERT_EQ(layer.entities.size(), 4U);
    const ShapeEntity& square = layer.entities[0];
    EXPECT_THAT(square.x, ElementsAre(0, 0, 20, 20, 0));
    EXPECT_THAT(square.y, ElementsAre(0, 20, 20, 0, 0));
    const ShapeEntity& court = layer.entities[2];
    EXPECT_THAT(court.part_start, ElementsAre(0, 5));
    EXPECT_EQ(court.first(1), 5U);
    EXPECT_EQ(court.end(1), 10U);
    EXPECT_EQ(court.box.max_x, 40.0);
}

TEST_F(ShapeFile, NumberingKeepsTheEntitiesThatAreLeftOut) {
    const ShapeLayer layer = read(houses());
    ASSERT_EQ(layer.entities.size(), 4U);
    EXPECT_EQ(layer.entities[2].number, 2);
    EXPECT_EQ(layer.entities[3].number, 5);
}

TEST_F(ShapeFile, HeaderIsToldBeforeTheReading) {
    read(houses());
    EXPECT_THAT(told, testing::StartsWith("Shape File Header information\n"
                                          "ShapeType ID: 5\n"
                                          "Total Number of Entities: 6\n"
                                          "BoundingBox MIN: ("));
    EXPECT_THAT(told, HasSubstr("\n            MAX: ("));
    EXPECT_THAT(told, testing::EndsWith("Reading Shape file.\n.Done.\n"));
}

TEST_F(ShapeFile, AttributesInTheirUnits) {
    ShapeSet set = houses();
    set.dbf_pd = "DENSITY";
    set.dbf_rls = "LEN_CM";
    set.dbf_cf = "CF";
    set.dbf_z0 = "Z0_CM";
    set.dbf_luid = "USE";
    set.uconv = 0.01F;
    set.height_unit = 0.5F;
    set.scale = 2;
    const ShapeLayer layer = read(set);
    ASSERT_EQ(layer.entities.size(), 4U);
    const ShapeEntity& house = layer.entities[0];
    EXPECT_EQ(house.height, 5.0);
    EXPECT_EQ(house.pd.value, 0.9);
    EXPECT_NEAR(house.rls.value, 15.0, 1e-5);
    EXPECT_EQ(house.cf.value, 1.1);
    EXPECT_NEAR(house.z0.value, 0.05, 1e-8);
    EXPECT_EQ(house.luid.value, 7.0);
    EXPECT_TRUE(house.z0org.null);
    EXPECT_EQ(house.x[2], 40.0);
    EXPECT_EQ(house.box.min_x, 0.0);
    EXPECT_EQ(house.box.max_x, 40.0);
    EXPECT_EQ(house.box.max_y, 40.0);
    EXPECT_EQ(layer.entities[2].box.max_x, 80.0);
    EXPECT_TRUE(layer.entities[1].pd.null);
    EXPECT_TRUE(layer.entities[3].luid.null);
}

TEST_F(ShapeFile, HeightsThatAreMissing) {
    const ShapeLayer layer = read(houses());
    ASSERT_EQ(layer.entities.size(), 4U);
    EXPECT_EQ(layer.entities[1].height_state, HeightState::given);
    EXPECT_EQ(layer.entities[2].height_state, HeightState::missing);  // -9999
    EXPECT_EQ(layer.entities[3].height_state, HeightState::missing);  // nothing there
}

TEST_F(ShapeFile, MarkerIsComparedWithTheTableAsItStands) {
    ShapeSet set = houses();
    set.height_marker = 6.5F;
    set.height_unit = 2;
    const ShapeLayer layer = read(set);
    ASSERT_EQ(layer.entities.size(), 4U);
    EXPECT_EQ(layer.entities[0].height_state, HeightState::given);
    EXPECT_EQ(layer.entities[1].height_state, HeightState::missing);
}

TEST_F(ShapeFile, MissingHeightsAreReplaced) {
    ShapeSet set = houses();
    set.height_missing = 1;
    set.height_missing_value = 4.5F;
    set.height_unit = 2;
    const ShapeLayer layer = read(set);
    ASSERT_EQ(layer.entities.size(), 4U);
    EXPECT_EQ(layer.entities[2].height_state, HeightState::given);
    EXPECT_EQ(layer.entities[2].height, 4.5);
    EXPECT_EQ(layer.entities[3].height, 4.5);
    EXPECT_EQ(layer.entities[0].height, 20.0);
}

TEST_F(ShapeFile, ModifiedHeightsCountInTheEnd) {
    ShapeSet set = houses();
    set.modified = {{0, 12.5F}, {5, 3.25F}};
    const ShapeLayer layer = read(set);
    ASSERT_EQ(layer.entities.size(), 4U);
    EXPECT_EQ(layer.entities[0].height, 12.5);
    EXPECT_EQ(layer.entities[3].height_state, HeightState::given);
    EXPECT_EQ(layer.entities[3].height, 3.25);
    EXPECT_THAT(told, HasSubstr("Modifying entity height. ID:"));
    EXPECT_THAT(told, testing::ContainsRegex(" Before: +10.00 After: +12.50\n"));
}

TEST_F(ShapeFile, BlankKeysReadNothing) {
    ShapeSet set = houses();
    set.dbf_h = "";
    const ShapeLayer layer = read(set);
    ASSERT_EQ(layer.entities.size(), 4U);
    EXPECT_EQ(layer.entities[0].height_state, HeightState::unasked);
    EXPECT_TRUE(layer.entities[0].rls.null);
}

TEST_F(ShapeFile, ColumnsCompareInTwelveCharacters) {
    CaptureStdout();
    TableReader table;
    ASSERT_EQ(table.open(data + "/houses.shp"), 0);
    EXPECT_EQ(table.column("HEIGHT"), 1);
    EXPECT_EQ(table.column("HEIGH"), no_column);
    EXPECT_EQ(table.column("height"), no_column);
    GetCapturedStdout();

    // The whole name counts, which a table keeps to ten characters.
    test::TemporaryDirectory directory;
    TableWriter writer;
    ASSERT_EQ(writer.create(directory.file("t.dbf")), 0);
    ASSERT_EQ(writer.add_integer("ABCDEFGHIJ", 5), 0);
    ASSERT_EQ(writer.write(0, 0, 1), 0);
    writer.close();
    TableReader written;
    ASSERT_EQ(written.open(directory.file("t.dbf")), 0);
    EXPECT_EQ(written.column("ABCDEFGHIJ"), 0);
    EXPECT_EQ(written.column("ABCDEFGHIJK"), no_column);
}

TEST_F(ShapeFile, ATableMayBeginWithAFieldOfAnyKind) {
    test::TemporaryDirectory directory;
    for (const auto& add : {+[](TableWriter& t) { return t.add_double("F", 12, 3); },
                            +[](TableWriter& t) { return t.add_integer("F", 5); },
                            +[](TableWriter& t) { return t.add_text("F", 8); }}) {
        TableWriter table;
        ASSERT_EQ(table.create(directory.file("t.dbf")), 0);
        EXPECT_EQ(add(table), 0);
    }
}

TEST_F(ShapeFile, PolygonsWithZAndMAreRead) {
    for (const char* name : {"wood_z.shp", "wood_m.shp", "wood_m", "wood_m.dbf"}) {
        const ShapeLayer layer = read(one_polygon(name));
        ASSERT_FALSE(stopped) << stopped->what();
        ASSERT_EQ(layer.entities.size(), 1U);
        EXPECT_THAT(layer.entities[0].x, ElementsAre(0, 0, 4, 0));
        EXPECT_THAT(layer.entities[0].y, ElementsAre(0, 3, 0, 0));
        EXPECT_EQ(layer.entities[0].height, 12.0);
    }
}

TEST_F(ShapeFile, EntitiesThatAreNotKeptLeaveNothing) {
    CaptureStdout();
    const ShapeLayer layer =
        read_shape_file(houses(), [](const ShapeEntity& entity) { return entity.number == 2; });
    GetCapturedStdout();
    ASSERT_EQ(layer.entities.size(), 1U);
    EXPECT_EQ(layer.entities[0].number, 2);
    EXPECT_EQ(layer.count, 6);
}

TEST_F(ShapeFile, OtherShapesThanPolygonsAreRefused) {
    read(one_polygon("trees.shp"));
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(told, HasSubstr("Unknown shape type: 1 POINT \n"));
}

TEST_F(ShapeFile, MissingFilesHaveTheirTexts) {
    read(one_polygon("none.shp"));
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(told, HasSubstr("Unable to open:" + data + "/none.shp\n"));
    EXPECT_THAT(told, HasSubstr("ERROR: Shape File Not Found. \n"));

    test::TemporaryDirectory directory;
    for (const char* extension : {".shp", ".shx"}) {
        std::filesystem::copy_file(data + "/wood_z" + extension,
                                   directory.file("wood") + extension);
    }
    ShapeSet set = one_polygon("");
    set.filename = directory.file("wood.shp");
    read(set);
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(told, HasSubstr(",\"r\") failed.\n"));
    EXPECT_THAT(told, HasSubstr("ERROR: DB File Not Found. \n"));
}

TEST_F(ShapeFile, ColumnThatTheTableDoesNotHold) {
    ShapeSet set = houses();
    set.dbf_cf = "DRAG";
    read(set);
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(told, HasSubstr("ERROR: DB File Field Not Found. \n"));
    EXPECT_THAT(stopped->where(), HasSubstr("sf_build%dbf_cf"));
    EXPECT_THAT(stopped->fix(), HasSubstr("NAME, HEIGHT, DENSITY"));
}

TEST_F(ShapeFile, TableOfOtherLengthThanTheShapes) {
    test::TemporaryDirectory directory;
    std::filesystem::copy_file(data + "/wood_z.shp", directory.file("a.shp"));
    std::filesystem::copy_file(data + "/wood_z.shx", directory.file("a.shx"));
    std::filesystem::copy_file(data + "/houses.dbf", directory.file("a.dbf"));
    ShapeSet set = houses();
    set.filename = directory.file("a.shp");
    read(set);
    ASSERT_TRUE(stopped);
    EXPECT_THAT(stopped->what(), HasSubstr("1 shapes, but 6 rows"));
}

TEST_F(ShapeFile, NothingIsReadBeforeItIsOpen) {
    CaptureStdout();
    ShapeReader reader;
    ShapeFileInfo info;
    ShapeObject object;
    EXPECT_EQ(reader.info(info), 1);
    EXPECT_EQ(reader.read(0, object), 1);
    EXPECT_EQ(GetCapturedStdout(),
              "There is no shape file to read.\nThere is no shape file to read.\n");
}

TEST_F(ShapeFile, WhatIsWrittenIsReadBack) {
    test::TemporaryDirectory directory;
    ShapeWriter shapes;
    TableWriter table;
    ASSERT_EQ(shapes.create(directory.file("out.shp")), 0);
    ASSERT_EQ(table.create(directory.file("out.dbf")), 0);
    ASSERT_EQ(table.add_integer("POLYGON", 8), 0);
    ASSERT_EQ(table.add_text("LandUse", 20), 0);
    ASSERT_EQ(table.add_double("Height", 16, 6), 0);
    for (int n = 0; n < 3; ++n) {
        const double x = 10.0 * n;
        ASSERT_EQ(shapes.write_ring({x, x, x + 5, x + 5, x}, {0, 5, 5, 0, 0}), 0);
        ASSERT_EQ(table.write(n, 0, n), 0);
        ASSERT_EQ(table.write(n, 1, "wood"), 0);
        ASSERT_EQ(table.write(n, 2, 1.5 * n), 0);
    }
    shapes.close();
    table.close();
    ShapeSet set;
    set.name = "sf_tree";
    set.filename = directory.file("out.shp");
    set.dbf_h = "Height";
    const ShapeLayer layer = read(set);
    ASSERT_EQ(layer.entities.size(), 3U);
    EXPECT_EQ(layer.entities[2].height, 3.0);
    EXPECT_THAT(layer.entities[2].x, ElementsAre(20, 20, 25, 25, 20));
}

TEST_F(ShapeFile, FailuresToWriteAreTold) {
    CaptureStdout();
    ShapeWriter shapes;
    TableWriter table;
    EXPECT_EQ(shapes.create("/nowhere/at/all.shp"), 1);
    EXPECT_EQ(shapes.write_ring({0, 0, 1, 0}, {0, 1, 0, 0}), 1);
    EXPECT_EQ(table.create("/nowhere/at/all.dbf"), 1);
    EXPECT_EQ(table.add_text("A", 5), 1);
    EXPECT_EQ(table.add_integer("B", 6), 1);
    EXPECT_EQ(table.add_double("C", 7, 2), 1);
    EXPECT_EQ(table.write(1, 2, "wood"), 1);
    EXPECT_EQ(table.write(1, 2, 3), 1);
    EXPECT_EQ(table.write(1, 2, 3.5), 1);
    const std::string lines = GetCapturedStdout();
    for (const char* line :
         {"Unable to open:/nowhere/at/all.shp\n", "Unable to write\n",
          "DBFCreate(/nowhere/at/all.dbf) failed.\n", "DBFAddField(A,FTString,5,0) failed.\n",
          "DBFAddField(B,FTInteger,6,0) failed.\n", "DBFAddField(C,FTDouble,7,2) failed.\n",
          "DBWriteString(1,2,wood) failed.\n", "DBWriteInteger(1,2,3) failed.\n"}) {
        EXPECT_THAT(lines, HasSubstr(line));
    }
    EXPECT_THAT(lines, testing::ContainsRegex("DBFWriteString\\(1,2, *3\\.500000\\) failed\\."));
}

}  // namespace
}  // namespace torvex
