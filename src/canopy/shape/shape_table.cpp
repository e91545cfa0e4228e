#include "canopy/shape/shape_table.hpp"

#include <shapefil.h>

#include <array>
#include <cstring>

#include "base/edit.hpp"
#include "base/run_log.hpp"
#include "canopy/shape/shape_bytes.hpp"

namespace torvex {

namespace {

constexpr std::size_t name_length = 12;  // characters of a column's name that count

DBFHandle table(void* handle) {
    return static_cast<DBFHandle>(handle);
}

int report(const std::string& text) {
    console(text);
    return 1;
}

std::string column_name(void* handle, int column) {
    std::array<char, name_length + 1> name{};
    DBFGetFieldInfo(table(handle), column, name.data(), nullptr, nullptr);
    return name.data();
}

std::string place_of(int row, int column) {
    return std::to_string(row) + "," + std::to_string(column);
}

}  // namespace

TableReader::~TableReader() {
    if (handle_ != nullptr) {
        DBFClose(table(handle_));
    }
}

int TableReader::open(const std::string& name) {
    const std::string path = shape_file_names(name).dbf;
    if (!path.empty()) {
        check_table_bytes(path);
        handle_ = DBFOpen(path.c_str(), "rb");
    }
    if (handle_ == nullptr) {
        return report("DBFOpen(" + name + ",\"r\") failed.");
    }
    if (DBFGetFieldCount(table(handle_)) == 0) {
        return report("There are no fields in this table!");
    }
    return 0;
}

int TableReader::rows() const {
    return DBFGetRecordCount(table(handle_));
}

int TableReader::column(const std::string& name) const {
    const int count = DBFGetFieldCount(table(handle_));
    for (int n = 0; n < count; ++n) {
        if (std::strncmp(column_name(handle_, n).c_str(), name.c_str(), name_length) == 0) {
            return n;
        }
    }
    return no_column;
}

std::string TableReader::column_names() const {
    std::string names;
    const int count = DBFGetFieldCount(table(handle_));
    for (int n = 0; n < count; ++n) {
        names += (n > 0 ? ", " : "") + column_name(handle_, n);
    }
    return names;
}

bool TableReader::deleted(int row) const {
    return DBFIsRecordDeleted(table(handle_), row) != 0;
}

TableNumber TableReader::number(int row, int column) const {
    if (column == no_column) {
        return {};
    }
    return {DBFReadDoubleAttribute(table(handle_), row, column),
            DBFIsAttributeNULL(table(handle_), row, column) != 0};
}

TableWriter::~TableWriter() {
    close();
}

int TableWriter::create(const std::string& name) {
    close();
    handle_ = DBFCreate(name.c_str());
    return handle_ == nullptr ? report("DBFCreate(" + name + ") failed.") : 0;
}

int TableWriter::add_text(const std::string& field, int width) {
    if (handle_ == nullptr || DBFAddField(table(handle_), field.c_str(), FTString, width, 0) < 0) {
        return report("DBFAddField(" + field + ",FTString," + std::to_string(width) +
                      ",0) failed.");
    }
    return 0;
}

int TableWriter::add_integer(const std::string& field, int width) {
    if (handle_ == nullptr || DBFAddField(table(handle_), field.c_str(), FTInteger, width, 0) < 0) {
        return report("DBFAddField(" + field + ",FTInteger," + std::to_string(width) +
                      ",0) failed.");
    }
    return 0;
}

int TableWriter::add_double(const std::string& field, int width, int decimals) {
    if (handle_ == nullptr ||
        DBFAddField(table(handle_), field.c_str(), FTDouble, width, decimals) < 0) {
        return report("DBFAddField(" + field + ",FTDouble," + std::to_string(width) + "," +
                      std::to_string(decimals) + ") failed.");
    }
    return 0;
}

int TableWriter::write(int row, int column, const std::string& text) {
    if (handle_ == nullptr ||
        DBFWriteStringAttribute(table(handle_), row, column, text.c_str()) == 0) {
        return report("DBWriteString(" + place_of(row, column) + "," + text + ") failed.");
    }
    return 0;
}

int TableWriter::write(int row, int column, int value) {
    if (handle_ == nullptr || DBFWriteIntegerAttribute(table(handle_), row, column, value) == 0) {
        return report("DBWriteInteger(" + place_of(row, column) + "," + std::to_string(value) +
                      ") failed.");
    }
    return 0;
}

int TableWriter::write(int row, int column, double value) {
    if (handle_ == nullptr || DBFWriteDoubleAttribute(table(handle_), row, column, value) == 0) {
        return report("DBFWriteString(" + place_of(row, column) + "," + edit::F(value, 20, 6) +
                      ") failed.");
    }
    return 0;
}

void TableWriter::close() {
    if (handle_ != nullptr) {
        DBFClose(table(handle_));
        handle_ = nullptr;
    }
}

}  // namespace torvex
