#include "support/case_text.hpp"

#include <algorithm>
#include <array>
#include <regex>
#include <sstream>

namespace torvex::test {

namespace {

struct Group {
    const char* name;
    const char* lines;
};

constexpr std::array groups{
    Group{"NML_RUN", ""},
    Group{"NML_CASEFILE",
          "  CENT_LON = 139, 45, 0\n"
          "  CENT_LAT = 35, 30, 0\n"
          "  WE_LENGTH = 400\n"
          "  NS_LENGTH = 400\n"
          "  WD_TYPE = 0\n"
          "  N_WIND_DIRECTION = 16\n"
          "  MIN_DXY = 40\n"
          "  MAX_DXY = 50\n"
          "  MIN_DXY_RAD = 200\n"
          "  MESH_HRATIO = 1.2\n"
          "  MIN_DZ = 20\n"
          "  MESH_VRATIO = 1.3\n"},
    Group{"NML_MONITOR", "  MONITOR_STEP = 10\n"},
    Group{"NML_ER", ""},
    Group{"NML_BOUNDARY_TREATMENT", ""},
    Group{"NML_NAVIER_STOKES", ""},
    Group{"NML_NUMERICAL_SOLVER", ""},
    Group{"NML_SITE", ""},
};

CaseItems joined(CaseItems first, const CaseItems& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

}  // namespace

std::string case_text(const CaseItems& items, const std::string& behind) {
    std::string text;
    for (const Group& group : groups) {
        text += "&" + std::string(group.name) + "\n" + group.lines;
        for (const auto& [name, line] : items) {
            if (name == group.name) {
                text += "  " + line + "\n";
            }
        }
        text += "/\n";
    }
    return text + behind;
}

std::string quick_case_text(const CaseItems& items, const std::string& behind) {
    const CaseItems quick{{"NML_CASEFILE", "BASIC_H_FILE = 'h.map', BASIC_Z0_FILE = 'z0.map'"},
                          {"NML_NUMERICAL_SOLVER", "MAXIT = 0"}};
    return case_text(joined(quick, items), behind);
}

std::string level_map(const std::string& value) {
    std::string text =
        "<TORVEX_MAP lon-lat>\n"
        "n_lon = 21, n_lat = 21\n"
        "d_lon = 2, d_lat = 2\n"
        "base_longitude = 139 25\n"
        "base_latitude = 35 10\n"
        "--DATA--\n";
    for (int row = 0; row < 21; ++row) {
        text += "21*" + value + "\n";
    }
    return text;
}

std::string empty_groups() {
    std::string text;
    for (const Group& group : groups) {
        text += "&" + std::string(group.name) + " /\n";
    }
    return text;
}

std::string nest_block() {
    return "&nest_points\n"
           "nest_mode = 1\n"
           "nest_site%label = child\n"
           "nest_site%lon = 139, 45, 0\n"
           "nest_site%lat = 35, 30, 0\n"
           "nest_site%n_x_div = 2\n"
           "nest_site%n_y_div = 2\n"
           "nest_site%c2xmax = 100\n"
           "nest_site%c2ymax = 100\n"
           "/\n";
}

long line_of(const std::string& text, const std::string& what) {
    const std::size_t at = text.find(what);
    if (at == std::string::npos) {
        return 0;
    }
    return 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
}

std::string without_dates(const std::string& text) {
    static const std::regex stamp(R"(^\d{4}/\d{2}/\d{2} \d{2}:\d{2}:\d{2})",
                                  std::regex::ECMAScript | std::regex::multiline);
    return std::regex_replace(text, stamp, "<date>");
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace torvex::test
