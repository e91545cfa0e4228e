#pragma once

#include <string>

namespace torvex {

// A number of a table as its library reads it: 0 where the text is none.
struct TableNumber {
    double value = 0;
    bool null = true;  // nothing stands there
};

inline constexpr int no_column = -1;

// The dBase table beside a shapefile, open for reading. Returns are those of ShapeReader.
class TableReader {
 public:
    TableReader() = default;
    ~TableReader();
    TableReader(const TableReader&) = delete;
    TableReader& operator=(const TableReader&) = delete;

    int open(const std::string& name);
    int rows() const;

    // The column whose name has these first 12 characters, from 0; no_column where there is none.
    int column(const std::string& name) const;
    std::string column_names() const;  // "ID, HEIGHT", for messages

    bool deleted(int row) const;
    TableNumber number(int row, int column) const;  // null for no_column

 private:
    void* handle_ = nullptr;
};

// A table that is being written; fields first, then rows from 0.
class TableWriter {
 public:
    TableWriter() = default;
    ~TableWriter();
    TableWriter(const TableWriter&) = delete;
    TableWriter& operator=(const TableWriter&) = delete;

    int create(const std::string& name);
    int add_text(const std::string& field, int width);
    int add_integer(const std::string& field, int width);
    int add_double(const std::string& field, int width, int decimals);
    int write(int row, int column, const std::string& text);
    int write(int row, int column, const char* text) {
        return write(row, column, std::string(text));
    }
    int write(int row, int column, int value);
    int write(int row, int column, double value);
    void close();

 private:
    void* handle_ = nullptr;
};

}  // namespace torvex
