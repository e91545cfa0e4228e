#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "run/run_torvex.hpp"
#include "run/working_directory.hpp"
#include "support/case_text.hpp"
#include "support/run_program.hpp"

namespace torvex::test {

// A run inside the test's own process, so that its solve can be given.
struct RunHere {
    int status = -1;
    std::string out;
    std::string err;
};

RunHere run_here(const std::vector<std::string>& arguments, const Solve& solve);

// Every file below a directory with its bytes.
std::map<std::string, std::string> files_below(const std::filesystem::path& directory);

// A directory of its own for each test, with the maps of the quick cases in it.
class RunTest : public ::testing::Test {
 protected:
    RunTest() {
        directory.write("h.map", level_map("10"));
        directory.write("z0.map", level_map("0.03"));
    }

    void write_case(const CaseItems& items = {}, const std::string& behind = {}) const {
        directory.write("torvex.tin", quick_case_text(items, behind));
    }
    ProgramRun run(const std::vector<std::string>& arguments = {}) const {
        return run_torvex_program(arguments, directory.path());
    }
    std::string log() const { return without_dates(directory.read("torvex.log")); }

    // Slot n of a table on disk, without the blanks on its right.
    std::string slot(const std::string& name, int n) const;

    WorkingDirectory directory;
};

// Lines that must stand one behind the other; gap() lets any number of others stand between.
class LogShape {
 public:
    LogShape& operator<<(const std::string& line) {
        parts_.back().push_back(line);
        return *this;
    }
    LogShape& gap() {
        parts_.emplace_back();
        return *this;
    }
    // Blank if the lines have the shape, else the first part that is not where it should be.
    std::string difference(const std::vector<std::string>& lines) const;

 private:
    std::vector<std::vector<std::string>> parts_{1};
};

}  // namespace torvex::test
