#include "run/iteration_memory.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/list_input.hpp"
#include "base/text_file.hpp"
#include "base/whole_file.hpp"
#include "results/restart_info.hpp"

namespace torvex {

namespace {

std::string path_of(const Direction& direction) {
    return direction.restart_stem + std::string(file_names::iteration_memory);
}

// Nine digits, so that a value comes back to the last bit.
std::string exact(float value) {
    return edit::E(value, 18, 9);
}

bool read_speeds(ListInput& input, std::int32_t iterations, std::int32_t sites,
                 Settling& settling) {
    constexpr std::int32_t most = 1000;
    if (iterations < 0 || iterations > most || sites < 0 || sites > max_sites + 1) {
        return false;
    }
    for (std::int32_t n = 0; n < iterations; ++n) {
        std::vector<float> speeds(static_cast<std::size_t>(sites));
        if (!input.read_row(speeds.data(), speeds.size()) || input.row_left_values() ||
            !std::ranges::all_of(speeds, [](float speed) { return std::isfinite(speed); })) {
            return false;
        }
        settling.speeds.push_back(std::move(speeds));
    }
    return true;
}

// `count`: iterations of the direction, none of which the memory can have seen later.
bool read_memory(ListInput& input, int count, AccelerationMemory& memory) {
    std::int32_t stage = -1;
    std::int32_t begun = -1;
    Course& course = memory.course;
    Cycling& cycling = memory.cycling;
    if (!input.read(stage, begun, course.seen, course.smallest, course.smallest_at) ||
        !input.read(cycling.coarse_iterations, cycling.gain, memory.cycles, memory.before_cycle)) {
        return false;
    }
    constexpr int most_iterations = 100;
    constexpr float most_gain = 2.0F;
    const auto between = [](auto least, auto x, auto most) { return x >= least && x <= most; };
    if (!between(0, stage, 2) || !between(0, begun, count)) {
        return false;
    }
    memory.stage = static_cast<Stage>(stage);
    memory.begun = begun;
    return between(0, course.seen, count - begun) && between(0, course.smallest_at, course.seen) &&
           between(0.0F, course.smallest, std::numeric_limits<float>::max()) &&
           between(1, cycling.coarse_iterations, most_iterations) &&
           between(0.0F, cycling.gain, most_gain) &&
           between(0.0F, memory.before_cycle, std::numeric_limits<float>::max());
}

}  // namespace

void write_iteration_memory(const Run& run, const Direction& direction) {
    const std::string path = path_of(direction);
    if (run.settings.ACCEL == 0 && !(run.settings.STOP_SITES > 0.0F)) {
        forget_file(path);
        return;
    }
    const AccelerationMemory& memory = direction.acceleration;
    const Settling& settling = direction.settling;
    const std::size_t sites = settling.speeds.empty() ? 0 : settling.speeds.back().size();
    std::string text = edit::list(direction.outer_count) + '\n';
    text += edit::list(static_cast<int>(memory.stage), memory.begun, memory.course.seen) +
            exact(memory.course.smallest) + edit::list(memory.course.smallest_at) + '\n';
    text += edit::list(memory.cycling.coarse_iterations) + exact(memory.cycling.gain) +
            edit::list(memory.cycles) + exact(memory.before_cycle) + '\n';
    text += exact(settling.fraction) +
            edit::list(static_cast<int>(settling.speeds.size()), static_cast<int>(sites)) + '\n';
    for (const std::vector<float>& speeds : settling.speeds) {
        for (const float speed : speeds) {
            text += exact(speed);
        }
        text += '\n';
    }
    write_text_file_whole(path, text);
}

bool read_iteration_memory(Direction& direction) {
    const std::optional<std::string> text = read_text_file(path_of(direction));
    if (!text) {
        return false;
    }
    ListInput input(*text);
    std::int32_t count = -1;
    AccelerationMemory memory;
    Settling settling;
    std::int32_t iterations = 0;
    std::int32_t sites = 0;
    if (!input.read(count) || count != direction.outer_count ||
        !read_memory(input, count, memory) || !input.read(settling.fraction, iterations, sites) ||
        !(settling.fraction >= 0.0F && settling.fraction < 1.0F) ||
        !read_speeds(input, iterations, sites, settling)) {
        return false;
    }
    direction.acceleration = memory;
    direction.settling = std::move(settling);
    return true;
}

}  // namespace torvex
