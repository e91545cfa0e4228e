// What the iterations of a direction remember beside the fields, as a file.

#include "run/iteration_memory.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "run/file_mutations.hpp"
#include "run/working_directory.hpp"

namespace torvex::test {
namespace {

const std::string path = "restart-270_0-iteration.info";

bool same_bits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool remembers_nothing(const Direction& d) {
    const AccelerationMemory& m = d.acceleration;
    return m.stage == Stage::common && m.begun == 0 && m.course.seen == 0 && m.cycles &&
           m.before_cycle == 0.0F && d.settling.fraction == 0.0F && d.settling.speeds.empty();
}

// A direction behind so many iterations.
struct DirectionAt : Direction {
    explicit DirectionAt(int count) {
        restart_stem = "restart-270_0-";
        outer_count = count;
    }
};

class IterationMemory : public ::testing::Test {
 protected:
    IterationMemory() {
        settings.ACCEL = 1;
        AccelerationMemory& m = remembered.acceleration;
        m.stage = Stage::robust;
        m.begun = 12;
        m.course = {.seen = 45, .smallest = 0.1F / 3, .smallest_at = 41};
        m.cycling.coarse_iterations = 3;
        m.cycling.gain = 0.8F;
        m.cycles = false;
        m.before_cycle = std::nextafter(0.002F, 1.0F);
        remembered.settling.fraction = 0.005F;
        remembered.settling.speeds = {{7.1F, 1.0F / 3}, {std::nextafter(7.1F, 8.0F), 1e-7F}};
    }
    void write(const Direction& d) {
        const torvex::Run run(settings);
        write_iteration_memory(run, d);
    }
    // The file with one of its blank-separated words changed.
    std::string with_word(int line, int word, const std::string& value) const {
        std::string text = directory.read(path);
        std::size_t at = 0;
        for (int n = 1; n < line; ++n) {
            at = text.find('\n', at) + 1;
        }
        at = text.find_first_not_of(" ,", at);
        for (int n = 1; n < word; ++n) {
            at = text.find_first_not_of(" ,", text.find_first_of(" ,\n", at));
        }
        return text.replace(at, text.find_first_of(" ,\n", at) - at, value);
    }

    WorkingDirectory directory;
    CaseSettings settings;
    DirectionAt remembered{57};
};

TEST_F(IterationMemory, ComesBackBitForBit) {
    write(remembered);
    DirectionAt back(57);
    ASSERT_TRUE(read_iteration_memory(back));
    const AccelerationMemory& a = remembered.acceleration;
    const AccelerationMemory& b = back.acceleration;
    EXPECT_EQ(b.stage, Stage::robust);
    EXPECT_EQ(b.begun, 12);
    EXPECT_EQ(b.course.seen, 45);
    EXPECT_EQ(b.course.smallest_at, 41);
    EXPECT_EQ(b.cycling.coarse_iterations, 3);
    EXPECT_FALSE(b.cycles);
    EXPECT_TRUE(same_bits(a.course.smallest, b.course.smallest));
    EXPECT_TRUE(same_bits(a.cycling.gain, b.cycling.gain));
    EXPECT_TRUE(same_bits(a.before_cycle, b.before_cycle));
    EXPECT_TRUE(same_bits(remembered.settling.fraction, back.settling.fraction));
    ASSERT_EQ(back.settling.speeds.size(), 2U);
    for (std::size_t n = 0; n < 2; ++n) {
        ASSERT_EQ(back.settling.speeds[n].size(), 2U);
        for (std::size_t m = 0; m < 2; ++m) {
            EXPECT_TRUE(same_bits(remembered.settling.speeds[n][m], back.settling.speeds[n][m]));
        }
    }
}

// In front of the fifth iteration there is no smallest residual: the largest number stands for it.
TEST_F(IterationMemory, OfAStartComesBackToo) {
    write(DirectionAt(2));
    DirectionAt back(2);
    ASSERT_TRUE(read_iteration_memory(back));
    EXPECT_TRUE(remembers_nothing(back));
    EXPECT_EQ(back.acceleration.course.smallest, std::numeric_limits<float>::max());
}

// The residual of the last iteration, which restart.info keeps, is what the next one judges.
TEST_F(IterationMemory, OfAnotherCountIsNotTaken) {
    write(remembered);
    for (const int count : {0, 56, 58}) {
        DirectionAt back(count);
        EXPECT_FALSE(read_iteration_memory(back));
        EXPECT_TRUE(remembers_nothing(back));
    }
}

TEST_F(IterationMemory, IsNotThereWithoutAFile) {
    DirectionAt back(57);
    EXPECT_FALSE(read_iteration_memory(back));
    EXPECT_TRUE(remembers_nothing(back));
}

// Lines and words as the head of the routine lists them.
TEST_F(IterationMemory, ValueThatCannotBeIsNotTaken) {
    struct Bad {
        int line, word;
        const char* value;
    };
    for (const Bad& bad : {Bad{1, 1, "99999999999"},
                           {1, 1, "NaN"},
                           {2, 1, "3"},
                           {2, 1, "-1"},
                           {2, 1, "256"},
                           {2, 2, "-1"},
                           {2, 2, "58"},
                           {2, 3, "46"},
                           {2, 3, "-1"},
                           {2, 4, "NaN"},
                           {2, 4, "-1.0"},
                           {2, 4, "1e99"},
                           {2, 5, "46"},
                           {3, 1, "0"},
                           {3, 1, "2000000000"},
                           {3, 2, "NaN"},
                           {3, 2, "1e30"},
                           {3, 2, "-1.2"},
                           {3, 3, "7"},
                           {3, 4, "Inf"},
                           {3, 4, "NaN"},
                           {4, 1, "NaN"},
                           {4, 1, "1.0"},
                           {4, 2, "2000000000"},
                           {4, 2, "3"},
                           {4, 2, "-1"},
                           {4, 3, "2000000000"},
                           {4, 3, "1"},
                           {4, 3, "-1"},
                           {5, 1, "NaN"},
                           {6, 2, "Infinity"},
                           {6, 1, "here"}}) {
        write(remembered);
        directory.write(path, with_word(bad.line, bad.word, bad.value));
        DirectionAt back(57);
        EXPECT_FALSE(read_iteration_memory(back))
            << "line " << bad.line << ", word " << bad.word << ": " << bad.value;
        EXPECT_TRUE(remembers_nothing(back));
    }
}

TEST_F(IterationMemory, CutShortIsNotTaken) {
    write(remembered);
    const std::string whole = directory.read(path);
    const std::size_t last_word = whole.find_last_of(' ');
    for (std::size_t length = 0; length <= last_word; ++length) {
        directory.write(path, whole.substr(0, length));
        DirectionAt back(57);
        EXPECT_FALSE(read_iteration_memory(back)) << length;
        EXPECT_TRUE(remembers_nothing(back));
    }
}

// Whatever stands in the file: nothing is remembered, or something that the iteration can use.
TEST_F(IterationMemory, DamageIsSurvived) {
    write(remembered);
    const std::string whole = directory.read(path);
    FileMutator mutator(31);
    int refused = 0;
    for (int n = 0; n < 500; ++n) {
        directory.write(path, mutator.text(whole));
        DirectionAt back(57);
        if (!read_iteration_memory(back)) {
            ASSERT_TRUE(remembers_nothing(back));
            ++refused;
            continue;
        }
        const AccelerationMemory& m = back.acceleration;
        ASSERT_LE(static_cast<int>(m.stage), 2);
        ASSERT_TRUE(m.begun >= 0 && m.begun + m.course.seen <= 57);
        ASSERT_TRUE(m.cycling.gain >= 0.0F && m.cycling.gain <= 2.0F);
        ASSERT_TRUE(m.cycling.coarse_iterations > 0 && m.cycling.coarse_iterations <= 100);
        ASSERT_TRUE(std::isfinite(m.before_cycle) && std::isfinite(m.course.smallest));
        for (const auto& speeds : back.settling.speeds) {
            ASSERT_EQ(speeds.size(), back.settling.speeds.front().size());
            for (const float speed : speeds) {
                ASSERT_TRUE(std::isfinite(speed));
            }
        }
    }
    EXPECT_GT(refused, 100);
}

TEST_F(IterationMemory, IsRemovedWhereTheCaseHasNoUseForIt) {
    write(remembered);
    ASSERT_TRUE(directory.has(path));
    settings.ACCEL = 0;
    settings.STOP_SITES = 0.005F;
    write(remembered);
    EXPECT_TRUE(directory.has(path));
    settings.STOP_SITES = 0;
    write(remembered);
    EXPECT_FALSE(directory.has(path));
}

}  // namespace
}  // namespace torvex::test
