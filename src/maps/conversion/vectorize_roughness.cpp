#include "maps/conversion/vectorize_roughness.hpp"

#include <array>
#include <filesystem>
#include <functional>
#include <system_error>
#include <vector>

#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "canopy/shape/shape_file.hpp"
#include "canopy/shape/shape_table.hpp"
#include "maps/coordinate_ids.hpp"

namespace torvex {

namespace {

namespace fs = std::filesystem;

constexpr int integer_width = 10;
constexpr int real_width = 16;
constexpr int real_decimals = 6;

// From geographic minutes to the coordinates of the file.
class Corners {
 public:
    Corners(int cs, const RoughnessColumns& columns)
        : columns_(columns),
          frame_(coordinate_frame(is_zone(cs) ? cs : 0, "shapefile of columns")) {}

    FramePoint operator()(int i, int j) const {
        return frame_point(frame_, {columns_.corner_lon(i, j), columns_.corner_lat(i, j)});
    }

 private:
    static bool is_zone(int cs) { return cs >= 1 && cs <= 19; }

    const RoughnessColumns& columns_;
    CoordinateFrame frame_;
};

// The three files of a shapefile under a passing name, until they are complete.
class Replacement {
 public:
    explicit Replacement(const std::string& path)
        : final_(fs::path(path).replace_extension()), passing_(final_.string() + "-tmp") {}
    ~Replacement() {
        for (const char* extension : extensions) {
            std::error_code ignored;
            fs::remove(passing_.string() + extension, ignored);
        }
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    std::string name() const { return passing_.string() + ".shp"; }
    void commit() const {
        for (const char* extension : extensions) {
            std::error_code error;
            fs::rename(passing_.string() + extension, final_.string() + extension, error);
            if (error) {
                refuse(final_.string() + extension + ": " + error.message());
            }
        }
    }
    [[noreturn]] void refuse(const std::string& reason) const {
        stop(1, "the shapefile cannot be written: " + reason, final_.string() + ".shp",
             "the directory must exist and be writable, the disk have room");
    }

 private:
    static constexpr std::array extensions{".dbf", ".shx", ".shp"};
    fs::path final_;
    fs::path passing_;
};

// One column of the table.
struct TableField {
    const char* name;
    std::function<int(TableWriter&, int row, int field, int i, int j)> write;
    bool is_integer = false;
};

TableField integer_field(const char* name, const std::function<int(int row, int i, int j)>& value) {
    return {name,
            [value](TableWriter& table, int row, int field, int i, int j) {
                return table.write(row, field, value(row, i, j));
            },
            true};
}

TableField real_field(const char* name, const Field2& values) {
    return {name,
            [&values](TableWriter& table, int row, int field, int i, int j) {
                return table.write(row, field, static_cast<double>(values(i, j)));
            },
            false};
}

TableField number_field() {
    return integer_field("POLYGON", [](int row, int, int) { return row + 1; });
}

TableField land_use_field(const RoughnessColumns& columns) {
    return integer_field("LandUseID",
                         [&columns](int, int i, int j) { return columns.land_use_id(i, j); });
}

std::vector<TableField> short_table(const RoughnessColumns& columns) {
    return {number_field(), land_use_field(columns), real_field("Height", columns.height),
            real_field("RLS", columns.rls)};
}

std::vector<TableField> long_table(const RoughnessColumns& columns) {
    const int offset = columns.index_offset;
    return {number_field(),
            land_use_field(columns),
            real_field("Z0org", columns.z0org),
            real_field("Height", columns.height),
            real_field("RLS", columns.rls),
            integer_field("index_i", [offset](int, int i, int) { return i + offset; }),
            integer_field("index_j", [offset](int, int, int j) { return j + offset; })};
}

// Clockwise, as outer rings run.
int write_rectangle(ShapeWriter& shapes, const Corners& corner, int i, int j) {
    std::vector<double> x;
    std::vector<double> y;
    for (const FramePoint& at :
         {corner(i, j), corner(i, j + 1), corner(i + 1, j + 1), corner(i + 1, j), corner(i, j)}) {
        x.push_back(at.X);
        y.push_back(at.Y);
    }
    return shapes.write_ring(x, y);
}

void vectorize(const std::string& path, int cs, const RoughnessColumns& columns,
               const std::vector<TableField>& fields, bool canopy_only) {
    const Corners corner(cs, columns);
    const Replacement files(path);
    ShapeWriter shapes;
    TableWriter table;
    int failed = shapes.create(files.name()) | table.create(files.name());
    for (const TableField& field : fields) {
        failed |= failed != 0        ? 1
                  : field.is_integer ? table.add_integer(field.name, integer_width)
                                     : table.add_double(field.name, real_width, real_decimals);
    }
    int row = 0;
    for (int j = 1; j <= columns.height.nj() && failed == 0; ++j) {
        for (int i = 1; i <= columns.height.ni() && failed == 0; ++i) {
            if (canopy_only && !(columns.height(i, j) > 0.0F)) {
                continue;
            }
            failed |= write_rectangle(shapes, corner, i, j);
            for (int n = 0; n < static_cast<int>(fields.size()) && failed == 0; ++n) {
                failed |= fields[static_cast<std::size_t>(n)].write(table, row, n, i, j);
            }
            ++row;
        }
    }
    shapes.close();
    table.close();
    if (failed != 0) {
        files.refuse("see the line on the console");
    }
    files.commit();
}

}  // namespace

void vectorizeRoughness2(const std::string& path, int cs, const RoughnessColumns& columns) {
    console("vectorizeRoughness2()");
    vectorize(path, cs, columns, short_table(columns), true);
}

void vectorizeRoughness22(const std::string& path, int cs, const RoughnessColumns& columns) {
    console("vectorizeRoughness22()");
    vectorize(path, cs, columns, short_table(columns), false);
}

void vectorizeRoughness3(const std::string& path, int cs, const RoughnessColumns& columns) {
    console("vectorizeRoughness3()");
    vectorize(path, cs, columns, long_table(columns), false);
}

}  // namespace torvex
