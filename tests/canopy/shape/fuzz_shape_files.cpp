// Damaged shapefiles under the sanitizers: every one is read, or refused with a message that names
// the file.
//
//   fuzz_shape_files DIRECTORY COUNT SEED   COUNT damaged files for each good one of the directory

#include <array>
#include <bit>
#include <filesystem>
#include <iostream>
#include <limits>
#include <random>
#include <string>

#include "canopy/shape/read_shape_file.hpp"
#include "case/fuzzing.hpp"
#include "support/temporary_directory.hpp"

namespace torvex::test {
namespace {

// One to three changes of bytes, counts, coordinates or length.
class ShapeMutator {
 public:
    explicit ShapeMutator(std::uint32_t seed) : random_(seed) {}

    std::string operator()(std::string bytes) {
        const std::size_t changes = 1 + below(3);
        for (std::size_t n = 0; n < changes && bytes.size() > 8; ++n) {
            change(bytes);
        }
        return bytes;
    }

 private:
    std::size_t below(std::size_t bound) { return random_() % bound; }

    // Mostly in a header or the head of a record, where the counts stand.
    std::size_t place(const std::string& bytes) {
        const std::size_t front = below(2) == 0 ? 160 : bytes.size();
        return below(std::min(front, bytes.size() - 8));
    }

    void put(std::string& bytes, std::size_t at, std::uint64_t value, int size, bool big) {
        for (int n = 0; n < size; ++n) {
            const int shift = 8 * (big ? size - 1 - n : n);
            bytes[at + static_cast<std::size_t>(n)] =
                static_cast<char>(static_cast<unsigned char>(value >> shift));
        }
    }

    void change(std::string& bytes) {
        constexpr std::array<std::uint32_t, 10> words{0,          1,  2,   0xFFFFFFFF, 0x7FFFFFFF,
                                                      0x80000000, 50, 100, 0x40000000, 2000000000};
        constexpr std::array<double, 4> reals{std::numeric_limits<double>::infinity(),
                                              std::numeric_limits<double>::quiet_NaN(), 1e300,
                                              -1e-300};
        switch (below(5)) {
            case 0:
                bytes[place(bytes)] = static_cast<char>(below(256));
                break;
            case 1:
                put(bytes, place(bytes) & ~std::size_t{3}, words[below(words.size())], 4,
                    below(2) == 0);
                break;
            case 2:
                put(bytes, place(bytes) & ~std::size_t{3},
                    std::bit_cast<std::uint64_t>(reals[below(reals.size())]), 8, false);
                break;
            case 3:
                bytes.resize(below(bytes.size()));
                break;
            default:
                bytes.insert(place(bytes), below(64), static_cast<char>(below(256)));
                break;
        }
    }

    std::mt19937 random_;
};

std::string good_bytes(const std::string& path) {
    const std::filesystem::path file(path);
    const TemporaryDirectory copies;
    std::filesystem::copy_file(file, copies.path() / file.filename());
    return copies.read(file.filename());
}

void read_all(const TemporaryDirectory& directory) {
    ShapeSet set;
    set.name = "sf_tree";
    set.filename = directory.file("case.shp");
    const ShapeLayer layer = read_shape_file(set);
    double sum = 0;
    for (const ShapeEntity& entity : layer.entities) {
        for (int part = 0; part < entity.parts(); ++part) {
            for (std::size_t n = entity.first(part); n < entity.end(part); ++n) {
                sum += entity.x[n] + entity.y[n];
            }
        }
    }
    std::cout << sum;
}

int fuzz(const std::string& examples, long count, std::uint32_t seed) {
    constexpr std::array extensions{".shp", ".shx", ".dbf"};
    ShapeMutator mutated(seed);
    for (const char* name : {"houses", "wood_z", "wood_m"}) {
        const TemporaryDirectory directory;
        std::array<std::string, 3> good;
        for (std::size_t n = 0; n < good.size(); ++n) {
            good[n] = good_bytes(examples + "/" + name + extensions[n]);
            directory.write(std::string("case") + extensions[n], good[n]);
        }
        for (std::size_t which = 0; which < good.size(); ++which) {
            const std::string file = std::string("case") + extensions[which];
            long accepted = 0;
            for (long n = 0; n < count; ++n) {
                const std::string bytes = mutated(good[which]);
                directory.write(file, bytes);
                const Reception reception = received(
                    bytes, [&](const std::string&) { read_all(directory); },
                    [](const std::string& message) {
                        return message.find("case.") != std::string::npos;
                    });
                if (!reception.complaint.empty()) {
                    std::cerr << name << extensions[which] << ", input " << n << ", met "
                              << reception.complaint << '\n';
                    return 1;
                }
                accepted += reception.accepted ? 1 : 0;
            }
            directory.write(file, good[which]);
            std::cerr << name << extensions[which] << ": " << count << " inputs, " << accepted
                      << " accepted\n";
        }
    }
    return 0;
}

}  // namespace
}  // namespace torvex::test

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: fuzz_shape_files DIRECTORY COUNT SEED\n";
        return 1;
    }
    try {
        torvex::test::keep_failing_input(
            std::filesystem::absolute("fuzz_shape_files.bad").string());
        std::cout.setstate(std::ios::failbit);
        return torvex::test::fuzz(argv[1], std::stol(argv[2]),
                                  static_cast<std::uint32_t>(std::stoul(argv[3])));
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
