// A whole case as a user runs it: a Gaussian hill, solved by the program's own sequence.
//
//   torvex_bench_case                      rates at 0.05 to 1 million cells, 1 and 2 threads
//   torvex_bench_case answer               time to the answer at 0.05, 0.3 and 1 million cells
//   torvex_bench_case rate CELLS THREADS ITERATIONS [MODEL]
//   torvex_bench_case answer CELLS THREADS [MODEL]
//
// A rate is wall microseconds per cell and outer iteration, by routine, over the iterations behind
// the first, with the compulsory traffic that goes with it (see traffic.hpp). The answer is there
// when the speeds at twelve points (top, upwind foot, lee foot and side of the hill, at 10, 30 and
// 80 m) stay within 1 % of what they are at convergence. Every case runs in a process of its own,
// whose peak memory is told per cell. The triad beside it, over arrays that no cache holds, is the
// mean of one before and one behind the case: on a shared machine the memory's speed changes from
// minute to minute. "over memory time" is the time over that of the compulsory traffic at its
// speed.

#include <omp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "hill_case.hpp"
#include "run/outer_iteration.hpp"
#include "run/run_torvex.hpp"
#include "run/runtime_settings.hpp"
#include "speed_points.hpp"
#include "timed_equations.hpp"
#include "traffic.hpp"

namespace torvex::bench {
namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Bytes per second of a triad, best of several, without the lines that a store fetches first.
double triad(int threads) {
    constexpr std::size_t n = 32U << 20U;
    std::vector<float> a(n, 0.0F);
    std::vector<float> b(n, 1.0F);
    std::vector<float> c(n, 2.0F);
    omp_set_num_threads(threads);
    double best = 1e30;
    for (int run = 0; run < 8; ++run) {
        const Clock::time_point start = Clock::now();
        float* x = a.data();
        const float* y = b.data();
        const float* z = c.data();
#pragma omp parallel for simd schedule(static)
        for (std::size_t m = 0; m < n; ++m) {
            x[m] = y[m] + 3.0F * z[m];
        }
        best = std::min(best, seconds_since(start));
    }
    return 12.0 * static_cast<double>(n) / best;
}

// --- twelve points -------------------------------------------------------------------------------

constexpr float foot = 2.0F * static_cast<float>(hill_half_width);

struct Moment {
    double seconds = 0;
    Speeds speeds{};
};

// First iteration from which on no point leaves the band round its last value.
std::size_t settled(const std::vector<Moment>& history) {
    const Speeds& last = history.back().speeds;
    std::size_t first = history.size();
    while (first > 0) {
        const Speeds& now = history[first - 1].speeds;
        for (std::size_t n = 0; n < points; ++n) {
            if (std::abs(now.at(n) - last.at(n)) > 0.01F * std::abs(last.at(n))) {
                return first;
            }
        }
        --first;
    }
    return first;
}

// --- one case ------------------------------------------------------------------------------------

struct Result {
    double cells = 0;
    int iterations = 0;
    bool converged = false;
    double set_up_seconds = 0;
    double solve_seconds = 0;
    double rate_seconds = 0;  // without the first iteration
    RoutineSeconds routine{};
    std::array<double, routines> bytes{};  // compulsory traffic per cell
    int answer_iterations = 0;
    double answer_seconds = 0;
    double peak_bytes = 0;  // filled by the parent process
    double triad = 0;       // bytes per second, likewise
};

struct Solver {
    Result& result;
    Clock::time_point start = Clock::now();
    std::vector<Moment> history{};

    void operator()(Run& run, Direction& direction) {
        const GridGeometry& g = direction.grid;
        result.cells = static_cast<double>(g.nx - 1) * (g.ny - 1) * (g.nz - 1);
        result.set_up_seconds = seconds_since(start);
        start = Clock::now();
        RoutineSeconds seconds{};
        RoutineSeconds first{};
        const auto behind = [&](const SolverContext& context) {
            if (history.empty()) {
                first = seconds;
            }
            history.push_back({seconds_since(start), speeds(context.grid, context.flow, foot)});
        };
        OUTER_ITERATION(run, direction, timed_equations(seconds, behind));
        for (std::size_t n = 0; n < seconds.size(); ++n) {
            result.routine.at(n) = seconds.at(n) - first.at(n);
        }
        result.iterations = static_cast<int>(history.size());
        result.converged = direction.converged;
        result.solve_seconds = seconds_since(start);
        result.rate_seconds = history.back().seconds - history.front().seconds;
        const std::size_t at = std::min(settled(history), history.size() - 1);
        result.answer_iterations = static_cast<int>(at) + 1;
        result.answer_seconds = history[at].seconds;
    }
};

void solve_here(const HillCase& hill, int threads, int answer) {
    std::array<char, 64> name{"/tmp/torvex-bench-XXXXXX"};
    const char* made = mkdtemp(name.data());
    if (made == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
        _exit(3);
    }
    const std::filesystem::path directory = made;
    omp_set_num_threads(threads);
    Result result;
    Solver solver{result};
    const int status = run_torvex({"/f", write_hill_case(hill, directory)},
                                  [&](Run& run, Direction& direction) { solver(run, direction); });
    result.bytes = compulsory_bytes(directory / "restart-270_0-torvex.conv.log", 1);
    std::filesystem::current_path("/");
    std::filesystem::remove_all(directory);
    const bool told = write(answer, &result, sizeof result) == sizeof result;
    _exit(status == 0 && told ? 0 : 2);
}

// What `work` writes to the pipe that it is given, in a process of its own: threads of an earlier
// case would not live through a fork.
template <class Answer, class Work>
Answer in_child(const Work& work, rusage& usage) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        std::exit(3);
    }
    std::cout.flush();
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        work(ends[1]);
    }
    close(ends[1]);
    Answer answer{};
    const bool told = read(ends[0], &answer, sizeof answer) == sizeof answer;
    close(ends[0]);
    int status = 0;
    wait4(child, &status, 0, &usage);
    if (!told || status != 0) {
        std::cerr << "a measurement failed\n";
        std::exit(1);
    }
    return answer;
}

double triad_now(int threads) {
    rusage usage{};
    return in_child<double>(
        [&](int answer) {
            const double speed = triad(threads);
            _exit(write(answer, &speed, sizeof speed) == sizeof speed ? 0 : 2);
        },
        usage);
}

Result solve(const HillCase& hill, int threads) {
    const double before = triad_now(threads);
    rusage usage{};
    auto result = in_child<Result>([&](int answer) { solve_here(hill, threads, answer); }, usage);
    result.triad = 0.5 * (before + triad_now(threads));
    result.peak_bytes = 1024.0 * static_cast<double>(usage.ru_maxrss);
    return result;
}

// --- tables --------------------------------------------------------------------------------------

// Time and compulsory traffic of a routine per cell and iteration.
void print_row(std::string_view name, double seconds, double bytes, const Result& r) {
    const double iterations = r.iterations - 1;
    std::printf("    %-8.8s %7.4f us  %5.1f %%  %6.0f bytes  %5.1f GB/s\n", name.data(),
                seconds * 1e6 / (r.cells * iterations), 100 * seconds / r.rate_seconds,
                bytes / iterations, 1e-9 * bytes * r.cells / seconds);
}

void print_rate(const HillCase& hill, int threads) {
    const Result r = solve(hill, threads);
    const double unit = 1e6 / (r.cells * (r.iterations - 1));
    std::printf(
        "%9.0f cells, %d thread%s, %d iterations: %7.4f us per cell and iteration, "
        "%4.0f bytes per cell\n",
        r.cells, threads, threads == 1 ? "" : "s", r.iterations, r.rate_seconds * unit,
        r.peak_bytes / r.cells);
    double rest = r.rate_seconds;
    double bytes = 0;
    for (std::size_t n = 0; n < r.routine.size(); ++n) {
        if (r.routine.at(n) > 0) {
            print_row(routine_names.at(n), r.routine.at(n), r.bytes.at(n), r);
            rest -= r.routine.at(n);
            bytes += r.bytes.at(n);
        }
    }
    print_row("other", rest, 0, r);
    print_row("all", r.rate_seconds, bytes, r);
    std::printf("    triad %.1f GB/s, over memory time %.2f\n", 1e-9 * r.triad,
                r.rate_seconds * r.triad / (bytes * r.cells));
    std::fflush(stdout);
}

void print_answer(const HillCase& hill, int threads) {
    const Result r = solve(hill, threads);
    std::printf(
        "%9.0f cells, %d threads: answer after %4d iterations, %7.2f s; %s after %4d "
        "iterations, %7.2f s; set up in %5.2f s; %4.0f bytes per cell\n",
        r.cells, threads, r.answer_iterations, r.answer_seconds,
        r.converged ? "converged" : "not converged", r.iterations, r.solve_seconds,
        r.set_up_seconds, r.peak_bytes / r.cells);
    std::fflush(stdout);
}

int usage() {
    std::cerr << "usage: torvex_bench_case [rate CELLS THREADS ITERATIONS [MODEL]]\n"
                 "       torvex_bench_case answer [CELLS THREADS [MODEL]]\n";
    return 2;
}

int run(const std::vector<std::string>& arguments) {
    const bool answers = !arguments.empty() && arguments[0] == "answer";
    const std::size_t given = arguments.size();
    if (given > 1) {
        const std::size_t numbers = answers ? 2 : 3;
        if (given < 1 + numbers || given > 2 + numbers) {
            return usage();
        }
        HillCase hill;
        hill.min_dxy = spacing_for(std::stod(arguments[1]));
        hill.max_iterations = answers ? 3000 : std::stoi(arguments[3]);
        hill.turbulence_model = given == 2 + numbers ? std::stoi(arguments.back()) : 1;
        const int threads = std::stoi(arguments[2]);
        answers ? print_answer(hill, threads) : print_rate(hill, threads);
        return 0;
    }
    if (answers) {
        for (const double cells : {0.05e6, 0.3e6, 1e6}) {
            print_answer({.min_dxy = spacing_for(cells), .max_iterations = 3000}, 2);
        }
        return 0;
    }
    if (given != 0) {
        return usage();
    }
    for (const double cells : {0.05e6, 0.1e6, 0.3e6, 1e6}) {
        for (const int threads : {1, 2}) {
            print_rate({.min_dxy = spacing_for(cells), .max_iterations = 31}, threads);
        }
    }
    return 0;
}

}  // namespace
}  // namespace torvex::bench

int main(int argc, char** argv) {
    torvex::settle_runtime(argv);  // as the program does
    try {
        return torvex::bench::run({argv + 1, argv + argc});
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 2;
    }
}
