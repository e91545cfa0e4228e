#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

// What must hold of the bytes of a shapefile before its library may see them. The library believes
// counts and offsets; here nothing is believed that the size of the files does not bear out.
namespace torvex {

// The files beside each other under one name: NAME.shp, NAME.shx, NAME.dbf, or the same in
// capitals. `name` may end in .shp or any other extension, or in none.
struct ShapeFileNames {
    std::string shp, shx, dbf;  // blank where there is none
};
// For the name of any of the three, or their stem without an extension.
ShapeFileNames shape_file_names(const std::string& name);

// Reads pieces of a file.
class FileBytes {
 public:
    FileBytes() = default;
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    bool open(const std::string& path);
    std::int64_t size() const { return size_; }
    bool read(std::int64_t at, std::span<unsigned char> bytes);

 private:
    int descriptor_ = -1;
    std::int64_t size_ = 0;
};

// Goes through .shp and .shx. Every fault stops 1 naming file and record.
class ShapeBytes {
 public:
    // The headers, and the index against the size of the file.
    void open(const ShapeFileNames& names);

    int count() const { return static_cast<int>(spans_.size()); }
    int type() const { return type_; }

    // The record of entity i, from 0: its frame, counts, parts, and that all coordinates are
    // finite.
    void check(int i);

 private:
    struct Span {
        std::int64_t at = 0;
        std::int64_t bytes = 0;
    };

    [[noreturn]] void fail(const std::string& what) const;
    [[noreturn]] void fail(const std::string& what, int entity) const;
    void read_index(const std::string& shx);
    void check_polygon(int entity);

    FileBytes shp_;
    std::string name_;
    std::vector<Span> spans_;  // of the records, by entity
    std::vector<unsigned char> record_;
    int type_ = 0;
};

// The header of a .dbf: its rows and fields fit the file. Stops 1 naming the file.
void check_table_bytes(const std::string& dbf);

}  // namespace torvex
