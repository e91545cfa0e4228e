#pragma once

#include <string>
#include <vector>

#include "canopy/shape/shape_bytes.hpp"

namespace torvex {

// A box in plan.
struct ShapeBox {
    double min_x = 0, min_y = 0, max_x = 0, max_y = 0;
};

// What the header tells.
struct ShapeFileInfo {
    int type = 0;   // by the number of the format: 5 polygon, 15 with Z, 25 with M
    int count = 0;  // entities
    ShapeBox box;   // as the header has it
};

// One entity as it stands in the file; no parts where it is a null shape.
struct ShapeObject {
    ShapeBox box;
    std::vector<int> part_start;  // of the rings, from 0
    std::vector<double> x, y;     // all rings, one behind the other
};

// "5 POLYGON": number and word of a shape type.
std::string shape_type_name(int type);
// True for polygons, also with Z or M.
bool is_polygon_type(int type);

// A shapefile that is open for reading. What it returns is 0, or 1 after a line on the console that
// tells the failure. Damaged files stop 1 before their library sees them, naming file and entity.
class ShapeReader {
 public:
    ShapeReader() = default;
    ~ShapeReader();
    ShapeReader(const ShapeReader&) = delete;
    ShapeReader& operator=(const ShapeReader&) = delete;

    int open(const std::string& name);
    int info(ShapeFileInfo& info) const;
    int read(int entity, ShapeObject& object);

 private:
    void* handle_ = nullptr;
    std::string path_;
    ShapeBytes bytes_;
};

// A shapefile of polygons that is being written.
class ShapeWriter {
 public:
    ShapeWriter() = default;
    ~ShapeWriter();
    ShapeWriter(const ShapeWriter&) = delete;
    ShapeWriter& operator=(const ShapeWriter&) = delete;

    int create(const std::string& name);
    // One closed ring, first point repeated at its end, clockwise; the entities count from 0.
    int write_ring(const std::vector<double>& x, const std::vector<double>& y);
    void close();

 private:
    void* handle_ = nullptr;
};

}  // namespace torvex
