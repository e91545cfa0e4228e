#include "prep/run_prep.hpp"

#include <array>
#include <exception>
#include <iostream>
#include <new>
#include <string_view>

#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "prep/entries.hpp"

namespace torvex {

namespace {

constexpr const char* version = "torvex-prep 5.0176";

constexpr std::string_view usage =
    "usage: torvex-prep ENTRY [ARGUMENTS]\n"
    "\n"
    "  canopy [/f CASE_FILE] [--check-shapefile]   canopy files of all directions, from "
    "shapefiles\n"
    "  maps [trdb2tvm.tin]                         maps of a case, from a database or a shapefile\n"
    "  check [/f CASE_FILE] [--json]               what a run would meet: mesh, maps, memory, "
    "disk, "
    "time, keys\n"
    "  preview [/f CASE_FILE]                      ground, mesh and sites, to be looked at\n"
    "  export [/f CASE_FILE] vtk|tecplot|shp [all] canopy files for viewers\n";

constexpr std::string_view check_usage =
    "usage: torvex-prep check [/f CASE_FILE] [--json]\n"
    "\n"
    "Tells what a run of the case would meet and need: domain and mesh; how far the maps reach in\n"
    "every direction; memory and disk against the limits of the machine and of its control group;\n"
    "the time of an iteration; the first cell against the roughness; slopes; the ground of the "
    "sites;\n"
    "which keys were given, defaulted or have no effect. Writes nothing but torvex-prep.log.\n"
    "\n"
    "  /f CASE_FILE   the case; torvex.tin in the current directory if not given\n"
    "  --json         one JSON object on standard output in place of the lines\n"
    "\n"
    "Exit status: 0, or the code of the stop that a run would meet first.\n";

struct Entry {
    std::string_view name;
    int (*run)(std::vector<std::string>);
    std::string_view help = usage;  // told on --help
};
constexpr std::array entries{Entry{"canopy", prep_canopy}, Entry{"maps", prep_maps},
                             Entry{"check", prep_check, check_usage},
                             Entry{"preview", prep_preview}, Entry{"export", prep_export}};

// True for a question about the program itself, which every entry answers.
bool answered(const std::string& argument, std::string_view help) {
    if (argument == "--help") {
        console(help);
    } else if (argument == "--version") {
        console(version);
    } else {
        return false;
    }
    return true;
}

int run_entry(const std::vector<std::string>& arguments) {
    const std::string name = arguments.empty() ? "" : arguments[0];
    for (const Entry& entry : entries) {
        if (name == entry.name) {
            if (arguments.size() > 1 && answered(arguments[1], entry.help)) {
                return 0;
            }
            return entry.run({arguments.begin() + 1, arguments.end()});
        }
    }
    if (answered(name, usage)) {
        return 0;
    }
    stop(102, name.empty() ? "which entry?" : "unknown entry \"" + name + "\"", {}, usage);
}

}  // namespace

int run_prep(const std::vector<std::string>& arguments) {
    try {
        return run_entry(arguments);
    } catch (const Stop& stopped) {
        console_error(stopped.what());
        return stopped.code();
    } catch (const std::bad_alloc&) {
        console_error("out of memory");
    } catch (const std::exception& failure) {
        console_error(failure.what());
    }
    return 1;
}

}  // namespace torvex
