#include "maps/conversion/land_use_roughness.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "roughness/land_use_classes.hpp"

namespace torvex {

namespace {

std::string code_text(float code) {
    return code == std::floor(code) && std::abs(code) < 1.0e9F
               ? std::to_string(static_cast<std::int64_t>(code))
               : std::string(trimmed(edit::E(code, 15, 7)));
}

// "3, 7, 99 and 2 more"
std::string listed(const std::set<float>& codes) {
    constexpr std::size_t most = 20;
    std::string text;
    std::size_t n = 0;
    for (const float code : codes) {
        if (n++ == most) {
            return text + " and " + std::to_string(codes.size() - most) + " more";
        }
        text += (text.empty() ? "" : ", ") + code_text(code);
    }
    return text;
}

void require_rows(const LandUseTables& tables, const std::string& where, const Field2& codes) {
    std::set<float> unknown;
    float last = 0.0F;  // neighbours are alike: one look-up for a run of them
    bool looked_up = false;
    for (std::size_t n = 0; n < codes.size(); ++n) {
        const float code = codes.data()[n];
        if (looked_up && code == last) {
            continue;
        }
        last = code;
        looked_up = true;
        if (class_of_code(tables.classes, code) == nullptr) {
            unknown.insert(code);
        }
    }
    if (!unknown.empty()) {
        stop(1, "land-use codes without a row in the table: " + listed(unknown), where,
             std::string("give them rows in ") + canopy_conv_table_name);
    }
}

}  // namespace

float LandUseTables::sea_code() const {
    if (rows < sea_class) {
        stop(1, "a tile is missing and the land-use table has no row 12 to stand for the sea",
             canopy_conv_table_name, "give the table a row 12, or complete the database");
    }
    return classes.rows[sea_class - 1].code;
}

LandUseTables read_land_use_tables() {
    LandUseTables tables;
    tables.rows = read_canopy_conv_table(tables.classes);
    read_conv_table(tables.roughness);
    return tables;
}

void codes_to_roughness(const LandUseTables& tables, const std::string& where, Field2& values) {
    require_rows(tables, where, values);
    LandUseMap map{values, false};
    const Array2<std::int32_t> classes = replaced_codes(tables.classes, map);
    std::set<float> without_roughness;
    for (std::size_t n = 0; n < values.size(); ++n) {
        const int r = classes.data()[n];
        const float z0 = r >= 1 && r <= land_use_classes ? tables.roughness.Z00(r) : 0.0F;
        if (!(z0 > 0.0F && std::isfinite(z0))) {
            without_roughness.insert(static_cast<float>(r));
        }
        values.data()[n] = z0;
    }
    if (!without_roughness.empty()) {
        stop(1,
             "land-use classes in use without a roughness above 0: rows " +
                 listed(without_roughness),
             tables.roughness.file_name, "give Z00 of these rows");
    }
}

std::vector<float> codes_to_roughness(const LandUseTables& tables, const std::string& where,
                                      std::span<const float> codes) {
    if (codes.empty()) {
        return {};
    }
    Field2 values(static_cast<int>(codes.size()), 1);
    std::ranges::copy(codes, values.data());
    codes_to_roughness(tables, where, values);
    return {values.data(), values.data() + values.size()};
}

}  // namespace torvex
