// Time of building the nodes of one wind direction, and of the whole way there from the map file.
//
//   build/bin/torvex_bench_mesh
//
// The mesh has about a million nodes, the map 3000 by 3000 points.

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "maps/load_maps.hpp"
#include "mesh/grid_geometry.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/size_domain.hpp"

namespace torvex {
namespace {

constexpr int map_points = 3000;
constexpr float map_spacing = 5.0F;

CaseSettings bench_case() {
    CaseSettings s;
    s.TERRAIN_MODE = "normal";
    s.WE_LENGTH = 2000.0F;
    s.NS_LENGTH = 2000.0F;
    s.MIN_DXY = 20.0F;
    s.MAX_DXY = 50.0F;
    s.MIN_DXY_RAD = 500.0F;
    s.MESH_HRATIO = 1.1F;
    s.MIN_DZ = 2.0F;
    s.MESH_VRATIO = 1.08F;
    s.CONSTANT_DZ_HEIGHT = 100.0F;
    s.SIDE_BR = 0.3F;
    s.UP_BR = 0.3F;
    s.DOWN_BR = 0.3F;
    s.ADD_R = 1.0F;
    s.BZ_LIMIT = 2.0F;
    s.ADD_LIMIT = 3.0F;
    s.WIND_DIRECTION_ANGLE(1) = 33.0F;
    s.cent_lon_min = 139.0 * 60.0;
    s.cent_lat_min = 35.0 * 60.0;
    return s;
}

float height(int i, int j) {
    return 200.0F + 100.0F * std::sin(0.01F * static_cast<float>(i)) *
                        std::cos(0.013F * static_cast<float>(j));
}

TerrainMap synthetic_map() {
    TerrainMap map;
    map.columns = map_points;
    map.rows = map_points;
    map.dX = map_spacing;
    map.dY = map_spacing;
    map.X0 = -0.5F * map_spacing * static_cast<float>(map_points - 1);
    map.Y0 = map.X0;
    auto values = std::make_shared<Field2>(map_points, map_points);
    for (int j = 1; j <= map_points; ++j) {
        for (int i = 1; i <= map_points; ++i) {
            (*values)(i, j) = height(i, j);
        }
    }
    map.values = std::move(values);
    return map;
}

// Console lines of the routines would stand between the benchmark's own.
class Silence {
 public:
    Silence() { std::cout.setstate(std::ios::failbit); }
    ~Silence() { std::cout.clear(); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
};

void report(benchmark::State& state, const GridGeometry& grid) {
    const auto nodes = static_cast<double>(grid.xn.size());
    state.counters["nodes"] = nodes;
    state.counters["nodes/s"] = benchmark::Counter(nodes * static_cast<double>(state.iterations()),
                                                   benchmark::Counter::kIsRate);
}

void BM_MAKE_MESH(benchmark::State& state) {
    CaseSettings settings = bench_case();
    DirectionMaps maps;
    maps.basic_h = synthetic_map();
    RunLog log;
    MeshLines lines;
    {
        const Silence silence;
        settings.TERRAIN_MODE = "flat";
        MapState none;
        lines = size_domain(settings, none, log);
        settings.TERRAIN_MODE = "normal";
    }
    GridGeometry grid;
    for ([[maybe_unused]] auto _ : state) {
        MAKE_MESH(settings, lines, maps, 1, log, grid);
        benchmark::DoNotOptimize(grid.zn.data());
    }
    report(state, grid);
}
BENCHMARK(BM_MAKE_MESH)->Unit(benchmark::kMillisecond)->UseRealTime();

// A map file of 3000 by 3000 heights with one decimal, removed at the end.
class MapFile {
 public:
    MapFile() : path_((std::filesystem::temp_directory_path() / "torvex-bench.map").string()) {
        std::ofstream file(path_, std::ios::binary);
        file << "<TORVEX_MAP lon-lat>\nn_lon = 3000, n_lat = 3000\n"
                "d_lon = 0.0033, d_lat = 0.0027\n"
                "base_longitude = 138 55.0505\nbase_latitude = 34 55.9514\n--DATA--\n";
        std::string row;
        for (int j = 1; j <= map_points; ++j) {
            row.clear();
            for (int i = 1; i <= map_points; ++i) {
                char text[16];
                const auto end = std::to_chars(text, text + sizeof text, height(i, j),
                                               std::chars_format::fixed, 1);
                row.append(text, end.ptr);
                row += ' ';
            }
            row += '\n';
            file << row;
        }
    }
    ~MapFile() { std::filesystem::remove(path_); }
    MapFile(const MapFile&) = delete;
    MapFile& operator=(const MapFile&) = delete;

    const std::string& path() const { return path_; }

 private:
    std::string path_;
};

void BM_maps_sizing_and_mesh(benchmark::State& state) {
    const MapFile file;
    CaseSettings settings = bench_case();
    settings.BASIC_H_FILE = file.path();
    GridGeometry grid;
    for ([[maybe_unused]] auto _ : state) {
        const Silence silence;
        RunLog log;
        MapState maps;
        const MeshLines lines = size_domain(settings, maps, log);
        DirectionMaps placed;
        placed.basic_h = read_basic_terrain(settings, maps, log);
        MAKE_MESH(settings, lines, placed, 1, log, grid);
        benchmark::DoNotOptimize(grid.zn.data());
    }
    report(state, grid);
}
BENCHMARK(BM_maps_sizing_and_mesh)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

}  // namespace
}  // namespace torvex

BENCHMARK_MAIN();
