#include "base/upwind_roughness_log.hpp"

#include <cmath>
#include <limits>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/whole_file.hpp"

namespace torvex {

std::string upwind_roughness_name(const std::string& tag) {
    return std::string(file_names::upwind_roughness_log) + tag;
}

void write_upwind_roughness(const std::string& path, float z_up) {
    write_text_file_whole(path, edit::list(z_up) + '\n');
}

std::optional<float> read_upwind_roughness(const std::string& path, const std::string& fix) {
    const std::optional<std::string> text = read_text_file(path);
    if (!text) {
        return std::nullopt;
    }
    ListInput input(*text);
    float z_up = std::numeric_limits<float>::quiet_NaN();
    if (!input.read(z_up)) {
        stop(1, "upwind roughness: " + input.fault().message(), place(path, input.fault().line),
             fix);
    }
    if (!(z_up > 0.0F && std::isfinite(z_up))) {
        stop(1, "upwind roughness: expected one number above 0", place(path, 1), fix);
    }
    return z_up;
}

}  // namespace torvex
