#include "roughness/canopy_conv_table.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

#include "base/list_input.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

constexpr std::size_t name_length = 20;

[[noreturn]] void fail(const std::string& reason, const std::string& where) {
    const std::string told = "Caught error during reading cnpy_conv_tab";
    console(told);
    stop(1, told + ": " + reason, where,
         "a line of text, then rows of: id name code height RLS packing_density Cf z0");
}

// Blank lines behind the last row are no row.
std::string_view without_blank_end(std::string_view text) {
    return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

bool all_finite(const CanopyClass& row) {
    const auto finite = [](float value) { return std::isfinite(value); };
    return finite(row.code) && std::ranges::all_of(row.p.span(), finite);
}

void read_row(ListInput& input, const std::string& name, CanopyClass& row) {
    const long line = input.line();
    // The order of the file is not that of the record.
    if (!input.read(row.id, row.name, row.code, row.p(1), row.p(3), row.p(2), row.p(4), row.p(5))) {
        fail(input.fault().message(), place(name, input.fault().line));
    }
    if (!all_finite(row)) {
        fail("expected finite numbers", place(name, line));
    }
    row.name = std::string(trimmed(std::string_view(row.name).substr(0, name_length)));
    row.valid = true;
}

}  // namespace

int read_canopy_conv_table(CanopyConvTable& table, const std::string& name) {
    if (table.rows.empty()) {
        table.rows.resize(land_use_classes);
    }
    const std::optional<std::string> text = read_text_file(name);
    if (!text) {
        const std::string told = name + " not found.";
        console(told);
        stop(1, told, {}, "give the canopy of the land-use classes in this file");
    }
    ListInput input(without_blank_end(*text));
    std::string_view heading;
    input.read_line(heading);
    int count = 0;
    for (CanopyClass& row : table.rows) {
        if (input.at_end()) {
            break;
        }
        read_row(input, name, row);
        ++count;
    }
    if (!input.at_end()) {
        fail("more than " + std::to_string(land_use_classes) + " rows", place(name, input.line()));
    }
    return count;
}

const CanopyClass* class_of_code(const CanopyConvTable& table, float code) {
    const auto row = std::ranges::find_if(
        table.rows, [code](const CanopyClass& r) { return r.valid && r.code == code; });
    return row == table.rows.end() ? nullptr : &*row;
}

}  // namespace torvex
