#include "case/shape_set_keys.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <variant>

#include "base/stop.hpp"
#include "base/value_scanner.hpp"
#include "case/keyed_block.hpp"

namespace torvex {

namespace {

constexpr std::string_view block = "shp_parameters";
constexpr std::string_view modified_suffix = "%mod_";
constexpr std::size_t name_length = 256;   // of a file
constexpr std::size_t column_length = 80;  // of a column; its first 12 count

template <auto Member>
KeyTarget in(ShapeSet& set) {
    auto& value = set.*Member;
    if constexpr (requires(KeyTarget target) { target = &value; }) {
        return &value;
    } else {
        return std::span(&value, 1);
    }
}

using S = ShapeSet;

constexpr std::array table{
    ShapeSetKey{"%filename", in<&S::filename>, "", "", "the shapefile; blank: the set is off",
                name_length},
    ShapeSetKey{
        "%cs", in<&S::cs>, "shp_def_cs", "",
        "coordinate system: 0 degrees of longitude and latitude, 1 to 19 plane rectangular "
        "zone, 1001 to 1019 the same on GRS80, 101 to 160 UTM zone north, 201 to 260 south, "
        "-1 metres east and north of the case centre"},
    ShapeSetKey{"%dbf_h", in<&S::dbf_h>, "", "", "column of the height", column_length},
    ShapeSetKey{"%dbf_pd", in<&S::dbf_pd>, "", "", "column of the packing density, 0 to 1",
                column_length},
    ShapeSetKey{"%dbf_rls", in<&S::dbf_rls>, "", "", "column of the representative length scale",
                column_length},
    ShapeSetKey{"%dbf_cf", in<&S::dbf_cf>, "", "", "column of the drag coefficient", column_length},
    ShapeSetKey{"%scale", in<&S::scale>, "1", "", "factor on the coordinates as the file has them"},
    ShapeSetKey{"%dbf_z0", in<&S::dbf_z0>, "", "", "column of the roughness length of the ground",
                column_length},
    ShapeSetKey{"%dbf_z0org", in<&S::dbf_z0org>, "", "",
                "column of the roughness length before any change", column_length},
    ShapeSetKey{"%dbf_luid", in<&S::dbf_luid>, "", "", "column of the land-use id", column_length},
    ShapeSetKey{"%data_type", in<&S::data_type>, "0", "",
                "method: 1 LU (forest), 2 ZEN (buildings, with frontal areas); 0: that of the set"},
    ShapeSetKey{"%height_unit", in<&S::height_unit>, "1", "m",
                "factor on the column of the height"},
    ShapeSetKey{"%height_missing", in<&S::height_missing>, "0", "",
                "1: a height that is missing is replaced; 0: the polygon is left out"},
    ShapeSetKey{"%height_marker", in<&S::height_marker>, "-9999", "",
                "height as the table has it that stands for none, as do NULL and 0 or below"},
    ShapeSetKey{"%uconv", in<&S::uconv>, "1", "m",
                "factor on the columns of length and roughness lengths"},
    ShapeSetKey{"%height_missing_value", in<&S::height_missing_value>, "0", "m",
                "what takes the place of a missing height"},
    ShapeSetKey{"%n_mod_entity", in<&S::n_mod_entity>, "0", "",
                "number of heights modified by hand, in the keys %mod_1, %mod_2, ... as entity "
                "(from 0, as in the file) and height in metres"},
};

std::string full_name(std::string_view set, std::string_view suffix) {
    return std::string(set) + std::string(suffix);
}

[[noreturn]] void fail(const CaseText& file, const std::string& key, const std::string& what) {
    stop(1, "block &" + std::string(block) + ": key " + key + ": " + what, file.name);
}

KeyStatus read_target(const CaseText& file, const std::string& key, const KeyTarget& target,
                      std::size_t length) {
    if (const auto* number = std::get_if<std::span<std::int32_t>>(&target)) {
        return read_integer_key(file, block, key, number->front());
    }
    if (const auto* real = std::get_if<std::span<float>>(&target)) {
        return read_real_key(file, block, key, real->front());
    }
    return read_text_key(file, block, key, *std::get<std::string*>(target), length);
}

void read_modified(const CaseText& file, ShapeSet& set) {
    for (std::int32_t n = 1; n <= set.n_mod_entity; ++n) {
        const std::string key = full_name(set.name, modified_suffix) + std::to_string(n);
        std::array<float, 2> pair{-1, std::nanf("")};
        const KeyStatus status = read_real_array_key(file, block, key, pair);
        const bool whole = pair[0] >= 0 && std::floor(pair[0]) == pair[0];
        if (status != KeyStatus::read || !whole || !(pair[1] >= 0)) {
            fail(file, key, "expected the number of an entity, from 0, and its height in metres");
        }
        set.modified.push_back({static_cast<int>(pair[0]), pair[1]});
    }
}

void check(const CaseText& file, const ShapeSet& set) {
    const auto refuse = [&](std::string_view suffix, const char* expected) {
        fail(file, full_name(set.name, suffix), expected);
    };
    if (!(set.scale > 0)) {
        refuse("%scale", "expected a factor above 0");
    }
    if (!(set.height_unit > 0)) {
        refuse("%height_unit", "expected a factor above 0");
    }
    if (!(set.uconv > 0)) {
        refuse("%uconv", "expected a factor above 0");
    }
    if (set.data_type < 0 || set.data_type > 2) {
        refuse("%data_type", "expected 1 (LU), 2 (ZEN), or 0 for that of the set");
    }
    if (set.height_missing != 0 && set.height_missing != 1) {
        refuse("%height_missing", "expected 0 or 1");
    }
    if (set.n_mod_entity < 0 || set.n_mod_entity > 100000) {
        refuse("%n_mod_entity", "expected a count, 0 to 100000");
    }
}

void tell(const ShapeSet& set, RunLog& log) {
    log.line("SHP File:" + set.filename);
    log.line("Coordinate Sytem ID :" +
             (set.cs_given ? std::to_string(set.cs) : std::string(" shp_def_cs")));
    log.line(" PackDen:" + set.dbf_pd);
    log.line(" Length:" + set.dbf_rls);
    log.line(" Cf:" + set.dbf_cf);
}

}  // namespace

std::span<const ShapeSetKey> shape_set_keys() {
    return table;
}

bool is_shape_set_key(std::string_view key) {
    const std::size_t percent = key.find('%');
    const std::string_view set = key.substr(0, percent);
    if (percent == std::string_view::npos ||
        (set != building_set && set != tree_set && set != conversion_set)) {
        return false;
    }
    const std::string_view suffix = key.substr(percent);
    if (suffix.starts_with(modified_suffix)) {
        std::int32_t number = 0;
        return parse_integer(suffix.substr(modified_suffix.size()), number) && number > 0;
    }
    return std::ranges::any_of(table,
                               [suffix](const ShapeSetKey& k) { return k.suffix == suffix; });
}

ShapeSet read_shape_set(const CaseText& file, std::string_view name, RunLog& log) {
    ShapeSet set;
    set.name = name;
    for (const ShapeSetKey& key : table) {
        const std::string full = full_name(name, key.suffix);
        const KeyStatus status = read_target(file, full, key.target(set), key.length);
        if (status == KeyStatus::bad_value) {
            fail(file, full, "its value cannot be read");
        }
        if (key.suffix == "%cs") {
            set.cs_given = status == KeyStatus::read;
        }
    }
    if (set.filename.empty()) {
        return set;
    }
    check(file, set);
    read_modified(file, set);
    tell(set, log);
    return set;
}

}  // namespace torvex
