// torvex-prep canopy: the polygons of shapefiles become the canopy file of every wind direction.

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "base/status_line.hpp"
#include "base/stop.hpp"
#include "canopy/canopy_file.hpp"
#include "case/shape_set_keys.hpp"
#include "prep/check_shapefile.hpp"
#include "prep/direction_canopy_file.hpp"
#include "prep/entries.hpp"
#include "prep/prep_case.hpp"

namespace torvex {

namespace {

constexpr const char* usage = "usage: torvex-prep canopy [/f CASE_FILE] [--check-shapefile]";

// While it lives no run begins in this directory; a run that is at work there is not disturbed. Its
// table of directions bears the lock and is not written to.
class RunLock {
 public:
    explicit RunLock(const std::string& table)
        : descriptor_(::open(table.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor_ >= 0 && flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
            ::close(descriptor_);
            stop(1, "another run is using this directory", table,
                 "wait for that run, or give this case a directory of its own");
        }
    }
    ~RunLock() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    RunLock(const RunLock&) = delete;
    RunLock& operator=(const RunLock&) = delete;

 private:
    int descriptor_;
};

// Radius of the circle round the mesh: it may turn with the wind.
double reach_of(const MeshLines& lines) {
    const auto farther = [](const Line1& line) {
        return std::max(std::abs(static_cast<double>(line(1))),
                        std::abs(static_cast<double>(line(line.size()))));
    };
    return std::hypot(farther(lines.x_line), farther(lines.y_line));
}

std::vector<CanopySource> read_sources(PrepCase& prep) {
    std::vector<CanopySource> sources;
    for (const std::string_view name : {building_set, tree_set}) {
        const ShapeSet set = read_shape_set(prep.file, name, prep.log);
        if (!set.filename.empty()) {
            sources.push_back(
                read_canopy_source(set, prep.settings, reach_of(prep.lines), prep.log));
        }
    }
    if (sources.empty()) {
        stop(1, "no shapefile: both sf_build%filename and sf_tree%filename are blank",
             prep.file.name, "name a shapefile in the block &shp_parameters");
    }
    return sources;
}

// Warns of what a run would make of the files.
void warn_of_mode(PrepCase& prep) {
    if (!prep.settings.canopy_on()) {
        prep.log.warn("canopy_mode is 0: the canopy files are written, but no run reads them.");
    }
}

}  // namespace

int prep_canopy(std::vector<std::string> arguments) {
    const std::string case_file = take_case_file(arguments);
    const bool check = std::erase(arguments, "--check-shapefile") > 0;
    if (!arguments.empty()) {
        stop(102, "unknown argument \"" + arguments.front() + "\"", {}, usage);
    }
    PrepCase prep;
    open_prep_case(case_file, "canopy", prep);
    warn_of_mode(prep);
    const RunLock lock(prep.settings.run_prefix + "view-wind_direction.dat");
    const std::vector<CanopySource> sources = read_sources(prep);

    int used = 0;
    const int directions = static_cast<int>(prep.wd_tag.size());
    for (int iwd = 1; iwd <= directions; ++iwd) {
        status_line().show("canopy of direction " + std::to_string(iwd) + " of " +
                           std::to_string(directions));
        const DirectionCanopy canopy = make_direction_canopy(prep, sources, iwd);
        const std::string file = prep.restart_stem(iwd) + std::string(canopy_file_name);
        write_canopy_file(file, canopy.records);
        if (check) {
            write_check_shapefile(prep, canopy, iwd);
        }
        report_direction_canopy(prep, canopy, iwd);
        console("   - Written: " + file);
        prep.log.timed(" Written: " + file);
        used += canopy.used();
    }
    status_line().clear();
    if (used == 0) {
        stop(1, "no polygon lies inside the mesh of any direction", prep.file.name,
             "check the coordinate system of the shapefiles and the centre of the case");
    }
    return 0;
}

}  // namespace torvex
