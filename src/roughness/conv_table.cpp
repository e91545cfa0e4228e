#include "roughness/conv_table.hpp"

#include <array>
#include <optional>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/case_keys.hpp"
#include "case/case_text.hpp"
#include "case/namelist.hpp"

namespace torvex {

namespace {

constexpr std::size_t longest_name = 256;

// The reader of namelists fills case settings; a scratch list of them holds the classes meanwhile.
KeyTarget classes(CaseSettings& scratch) {
    return scratch.EQUIVALENT_ROUGHNESS.span().first(land_use_classes);
}

constexpr std::array keys{
    CaseKey{"Z00", classes, "0", "m", "roughness length of the land-use classes"}};
constexpr CaseGroup group{"CONV_TABLE", "", keys};

}  // namespace

void read_conv_table(ConvTable& table) {
    const std::string name(trimmed(std::string_view(table.file_name).substr(0, longest_name)));
    std::optional<std::string> text = read_text_file(name);
    if (!text) {
        const std::string told = name + " not found.";
        console(told);
        stop(1, told, {},
             "give the roughness lengths of the land-use classes in a group &CONV_TABLE");
    }
    const CaseText file{name, std::move(*text)};
    CaseSettings scratch;
    for (int n = 1; n <= land_use_classes; ++n) {
        scratch.EQUIVALENT_ROUGHNESS(n) = table.Z00(n);
    }
    KeyLines lines;
    read_namelist_group(file, group, scratch, lines);
    for (int n = 1; n <= land_use_classes; ++n) {
        table.Z00(n) = scratch.EQUIVALENT_ROUGHNESS(n);
    }
}

}  // namespace torvex
