#include "run/control_files.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

constexpr const char* stop_message = "#stop_message";
constexpr const char* intermediate_count = "#OutputIntermediateCount";

}  // namespace

bool stop_requested_by_file() {
    std::error_code error;
    return std::filesystem::exists(stop_message, error);
}

void delete_stop_message() {
    std::error_code error;
    std::filesystem::remove(stop_message, error);
    if (error) {
        stop(1, "the file cannot be deleted, and would end the run at once: " + error.message(),
             stop_message, "delete it by hand");
    }
}

void read_intermediate_interval(std::int32_t& interval) {
    const std::optional<std::string> text = read_text_file(intermediate_count);
    if (!text) {
        return;
    }
    ListInput input(*text);
    std::int32_t value = -1;
    if (input.read(value) && value >= 0) {
        interval = value;
    }
}

}  // namespace torvex
