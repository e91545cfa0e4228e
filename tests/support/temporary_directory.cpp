#include "support/temporary_directory.hpp"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace torvex::test {

TemporaryDirectory::TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "torvex-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary directory");
    }
    path_ = std::filesystem::canonical(name);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void TemporaryDirectory::write(const std::string& name, std::string_view text) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream out(path_ / name, std::ios::binary);
    out << text;
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + name);
    }
}

std::string TemporaryDirectory::read(const std::string& name) const {
    std::ifstream in(path_ / name, std::ios::binary);
    if (!in) {
        throw std::runtime_error("cannot read " + name);
    }
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace torvex::test
