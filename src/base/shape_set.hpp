#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace torvex {

// A set of shapes as the block shp_parameters describes it: NAME%filename and so on. Defaults are
// those of the table of its keys (case/shape_set_keys).
struct ShapeSet {
    std::string name;      // sf_build, sf_tree or trdb2shp
    std::string filename;  // blank: the set is off

    std::int32_t cs = 0;  // coordinate system of the file
    bool cs_given = false;

    // Columns of the table; blank: none
    std::string dbf_h;      // height
    std::string dbf_pd;     // packing density [-]
    std::string dbf_rls;    // representative length scale
    std::string dbf_cf;     // drag coefficient [-]
    std::string dbf_z0;     // roughness length
    std::string dbf_z0org;  // the same before any change
    std::string dbf_luid;   // land-use id

    float scale = 1;             // of the coordinates
    float height_unit = 1;       // of the heights [m]
    float uconv = 1;             // of dbf_rls, dbf_z0 and dbf_z0org [m]
    std::int32_t data_type = 0;  // 1 LU, 2 ZEN; 0: the method of the set

    std::int32_t height_missing = 0;  // 1: missing heights are replaced
    float height_marker = -9999;      // a height as the table has it that stands for none
    float height_missing_value = 0;   // what takes its place [m]

    struct ModifiedHeight {
        int entity = 0;    // from 0, as in the file
        float height = 0;  // [m]
    };
    std::int32_t n_mod_entity = 0;  // entities whose heights are modified by hand
    std::vector<ModifiedHeight> modified;
};

}  // namespace torvex
