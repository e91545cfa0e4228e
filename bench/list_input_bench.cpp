// Reading of map rows: bytes of text per second, for the styles in which maps come.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "base/list_input.hpp"

namespace {

constexpr std::size_t text_size = 20'000'000;

struct MapText {
    std::string text;
    std::size_t columns = 0;
    std::size_t rows = 0;
};

void append(std::string& text, double value, int decimals) {
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    text.append(digits, end.ptr);
}

// Hills of some hundred metres in steps of 0.1 m.
double elevation(std::size_t i, std::size_t j) {
    const auto x = static_cast<double>(i);
    const auto y = static_cast<double>(j);
    return 812.3 + 700.0 * std::sin(x / 170.0) * std::cos(y / 230.0) + 40.0 * std::sin(x / 7.0 + y);
}

MapText elevation_map(std::size_t columns, const char* separator) {
    MapText map{.text = {}, .columns = columns};
    map.text.reserve(text_size + 20 * columns);
    while (map.text.size() < text_size) {
        for (std::size_t i = 0; i < columns; ++i) {
            append(map.text, elevation(i, map.rows), 1);
            map.text += i + 1 < columns ? separator : "\n";
        }
        ++map.rows;
    }
    return map;
}

// Patches of few classes; as repeat counts where `repeated`.
MapText roughness_map(std::size_t columns, bool repeated) {
    static constexpr double classes[] = {0.0002, 0.03, 0.08, 0.3, 1.0};
    MapText map{.text = {}, .columns = columns};
    map.text.reserve(text_size + 20 * columns);
    std::minstd_rand engine;
    while (map.text.size() < text_size) {
        std::size_t left = columns;
        while (left > 0) {
            const std::size_t patch = std::min<std::size_t>(left, 1 + engine() % 12);
            const double value = classes[engine() % 5];
            const int decimals = value < 0.001 ? 4 : 2;
            left -= patch;
            if (repeated && patch > 1) {
                map.text += std::to_string(patch) + '*';
            }
            for (std::size_t n = repeated ? 1 : patch; n > 0; --n) {
                append(map.text, value, decimals);
                map.text += left > 0 || n > 1 ? ' ' : '\n';
            }
        }
        ++map.rows;
    }
    return map;
}

void read_rows(benchmark::State& state, const MapText& map) {
    std::vector<float> row(map.columns);
    for ([[maybe_unused]] auto _ : state) {
        torvex::ListInput in(map.text);
        for (std::size_t j = 0; j < map.rows; ++j) {
            if (!in.read_row(row.data(), row.size())) {
                state.SkipWithError(in.fault().message().c_str());
                return;
            }
            benchmark::DoNotOptimize(row.data());
        }
        if (!in.at_end()) {
            state.SkipWithError("text left over");
        }
    }
    const auto times = static_cast<std::int64_t>(state.iterations());
    state.SetBytesProcessed(times * static_cast<std::int64_t>(map.text.size()));
    state.SetItemsProcessed(times * static_cast<std::int64_t>(map.rows * map.columns));
}

void elevation_rows(benchmark::State& state) {
    read_rows(state, elevation_map(static_cast<std::size_t>(state.range(0)), " "));
}

void elevation_rows_with_commas(benchmark::State& state) {
    read_rows(state, elevation_map(static_cast<std::size_t>(state.range(0)), ","));
}

void roughness_rows(benchmark::State& state) {
    read_rows(state, roughness_map(static_cast<std::size_t>(state.range(0)), false));
}

void roughness_rows_with_repeat_counts(benchmark::State& state) {
    read_rows(state, roughness_map(static_cast<std::size_t>(state.range(0)), true));
}

BENCHMARK(elevation_rows)->Arg(500)->Arg(3000)->Unit(benchmark::kMillisecond);
BENCHMARK(elevation_rows_with_commas)->Arg(1500)->Unit(benchmark::kMillisecond);
BENCHMARK(roughness_rows)->Arg(1500)->Unit(benchmark::kMillisecond);
BENCHMARK(roughness_rows_with_repeat_counts)->Arg(1500)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
