#include "results/field_list.hpp"

#include <algorithm>
#include <array>

#include "results/result_files.hpp"
#include "solver/flow_fields.hpp"

namespace torvex {

namespace {

constexpr const char* head =
    R"("""The fields of the flow that files keep, in the order of their records.

Written by `cmake --build build --target reference` from the table that the program works with.
"""

from typing import NamedTuple


class Field(NamedTuple):
    name: str
    unit: str
    long_name: str
    files: tuple[int, ...]  # identifiers of the files that hold it


FIELDS = (
)";

bool holds(std::int32_t id, const FlowField& field) {
    if (field.kept == Kept::start) {
        return true;
    }
    if (field.kept == Kept::result) {
        return id != start_id;
    }
    return std::ranges::any_of(further_fields(id), [&field](const FlowField& further) {
        return further.member == field.member;
    });
}

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

// "(132,)", "(122, 132)"
std::string files_of(const FlowField& field) {
    std::string files;
    int count = 0;
    for (const std::int32_t id : {start_id, result_id(1), result_id(2), result_id(4)}) {
        if (holds(id, field)) {
            files += (files.empty() ? "" : ", ") + std::to_string(id);
            ++count;
        }
    }
    return "(" + files + (count == 1 ? ",)" : ")");
}

}  // namespace

std::string python_field_list() {
    std::string text = head;
    for (const FlowField& field : kept_fields) {
        text += "    Field(" + quoted(field.name) + ", " + quoted(field.unit) + ", " +
                quoted(field.long_name) + ", " + files_of(field) + "),\n";
    }
    return text + ")\n";
}

}  // namespace torvex
