// Reading of a whole map, header and 3000 x 3000 values, from a file that the system has in memory.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "base/edit.hpp"
#include "maps/load_maps.hpp"
#include "maps/map_file.hpp"

namespace torvex {
namespace {

constexpr int points = 3000;

std::string write_map() {
    std::string path =
        (std::filesystem::temp_directory_path() / "torvex-bench-elevation.map").string();
    std::ofstream out(path, std::ios::binary);
    out << "<TORVEX_MAP lon-lat>\nn_lon = " << points << ", n_lat = " << points
        << "\nd_lon = 0.01, d_lat = 0.01\nbase_longitude = 139 0\nbase_latitude = 35 0\n--DATA--\n";
    std::uint32_t noise = 1;
    for (int j = 0; j < points; ++j) {
        std::string row;
        for (int i = 0; i < points; ++i) {
            noise = noise * 1664525U + 1013904223U;
            row += edit::F(static_cast<float>(noise >> 8U) * 2.0e-4F, 7, 1);
            row += i % 25 == 24 ? "\n" : " ";
        }
        out << row << '\n';
    }
    return path;
}

void read_map(benchmark::State& state) {
    const std::string path = write_map();
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path));
    RunLog log;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(read_map_file(path, basic_h_role, nullptr, log));
    }
    state.SetBytesProcessed(state.iterations() * size);
    state.SetItemsProcessed(state.iterations() * points * points);
    std::filesystem::remove(path);
}
BENCHMARK(read_map)->Unit(benchmark::kMillisecond);

// Placement and lookup in the cache: what a direction after the first pays for its terrain map.
void reread_map(benchmark::State& state) {
    CaseSettings settings;
    settings.BASIC_H_FILE = write_map();
    MapState maps;
    RunLog log;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(read_basic_terrain(settings, maps, log));
    }
    std::filesystem::remove(settings.BASIC_H_FILE);
}
BENCHMARK(reread_map)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace torvex

BENCHMARK_MAIN();
