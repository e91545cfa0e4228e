// The wind over a measured hill, from the case and the measurements of the example.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "run/run_fixture.hpp"

namespace torvex::test {
namespace {

const std::string example = TORVEX_EXAMPLES_DIR "/askervein/";

std::vector<std::string> split(const std::string& line, char separator) {
    std::vector<std::string> words;
    std::istringstream in(line);
    for (std::string word; std::getline(in, word, separator);) {
        words.push_back(word.substr(std::min(word.size(), word.find_first_not_of(' '))));
    }
    return words;
}

// Speed-up against the reference mast by mast, of the run that all masts took part in.
std::map<std::string, double> measured() {
    std::map<std::string, double> speed_up;
    std::ifstream in(example + "measured.csv");
    for (std::string line; std::getline(in, line);) {
        const std::vector<std::string> words = split(line, ',');
        if (words[0] == "TU03A") {
            speed_up[words[1]] = std::stod(words[8]);
        }
    }
    return speed_up;
}

class Askervein : public ::testing::Test {
 protected:
    Askervein() {
        for (const char* name : {"elevation.map", "roughness.map"}) {
            std::filesystem::create_symlink(example + name, directory.path() / name);
        }
        std::filesystem::copy_file(example + "torvex_coarse.tin", directory.path() / "torvex.tin");
    }

    // Horizontal speed 10 m above ground, linear in the logarithm of the height.
    double speed_at_10_m(const std::string& position) const {
        std::istringstream in(directory.read("sites-210_0-" + position + ".tpd"));
        std::string titles;
        int levels = 0;
        in >> levels;
        std::getline(in >> std::ws, titles);
        double z = 0;
        double speed = 0;
        for (int k = 1; k <= levels; ++k) {
            double next = 0;
            double u = 0;
            double v = 0;
            double rest = 0;
            in >> next >> u >> v >> rest >> rest >> rest >> rest >> rest;
            if (next >= 10) {
                return speed + (std::hypot(u, v) - speed) * std::log(10 / z) / std::log(next / z);
            }
            z = next;
            speed = std::hypot(u, v);
        }
        ADD_FAILURE() << position << " ends below 10 m";
        return 0;
    }

    // By the name of the mast, which is the label up to the distance.
    std::map<std::string, double> speeds() const {
        std::map<std::string, double> of_mast;
        std::istringstream list(directory.read("_latlon_label_list.txt"));
        for (std::string line; std::getline(list, line);) {
            const std::vector<std::string> words = split(line, ',');
            of_mast[words[1].substr(0, words[1].find('_'))] = speed_at_10_m(words[2]);
        }
        return of_mast;
    }

    WorkingDirectory directory;
};

// In cells of 50 m: within a fifth of the reference speed at every mast, within a tenth on average.
TEST_F(Askervein, SpeedUpAlongTheLineOfMastsIsThatMeasured) {
    const ProgramRun ran = run_torvex_program({}, directory.path(), 250);
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(directory.read("torvex.log"), ::testing::HasSubstr(": Converged."));
    const std::map<std::string, double> computed = speeds();
    const std::map<std::string, double> expected = measured();
    ASSERT_EQ(expected.size(), 11U);
    ASSERT_TRUE(computed.contains("RS"));
    double sum = 0;
    for (const auto& [mast, speed_up] : expected) {
        ASSERT_TRUE(computed.contains(mast)) << mast;
        const double found = computed.at(mast) / computed.at("RS") - 1;
        EXPECT_NEAR(found, speed_up, 0.2) << mast;
        sum += std::abs(found - speed_up);
    }
    EXPECT_LT(sum / static_cast<double>(expected.size()), 0.1);
}

}  // namespace
}  // namespace torvex::test
