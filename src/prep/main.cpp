#include <string>
#include <vector>

#include "prep/run_prep.hpp"

int main(int argc, char** argv) {
    return torvex::run_prep(std::vector<std::string>(argv + 1, argv + argc));
}
