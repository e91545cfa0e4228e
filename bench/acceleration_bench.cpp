// The accelerated iteration beside the default one: iterations and seconds to the answer.
//
//   torvex_bench_acceleration hill CELLS THREADS [KEYS]
//   torvex_bench_acceleration FILE RADIUS THREADS [KEYS]
//   torvex_bench_acceleration answer CELLS THREADS
//
// The last one runs the accelerated hill alone, down to a mass residual of 4e-5, whose speeds stand
// for the answer, and prints one JSON line; its seconds count from the launch.
// KEYS go into NML_NUMERICAL_SOLVER of the accelerated run beside ACCEL = 1. The first direction of
// the case file FILE is run in a copy of its directory, with points at RADIUS [m] round the centre.
// The answer is there when the speeds at twelve points (the centre and three at the radius
// upwind, downwind and aside, at 10, 30 and 80 m) stay within 1 % (0.2 %) of what the default
// converges to. With TORVEX_BENCH_REFERENCE=NAME those values are kept in that file and taken from
// there the next time.

#include <omp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "hill_case.hpp"
#include "run/outer_iteration.hpp"
#include "run/run_torvex.hpp"
#include "run/runtime_settings.hpp"
#include "speed_points.hpp"

namespace torvex::bench {
namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

struct Moment {
    double seconds = 0;
    float resid_m = 0;
    Speeds speeds{};
};

struct Result {
    double cells = 0;
    bool converged = false;
    double set_up_seconds = 0;
    double solve_seconds = 0;
    int iterations = 0;
    std::array<Moment, 4000> history{};
};

struct CaseOf {
    std::string hill;  // cells, or blank
    fs::path file;
    float radius = 500;
};

fs::path written_case(const CaseOf& of, const fs::path& directory, const std::string& keys) {
    if (!of.hill.empty()) {
        return write_hill_case({.min_dxy = spacing_for(std::stod(of.hill)),
                                .max_iterations = 3000,
                                .solver_keys = keys},
                               directory);
    }
    fs::copy(fs::absolute(of.file).parent_path(), directory,
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    const fs::path copy = directory / of.file.filename();
    std::stringstream text;
    text << std::ifstream(of.file).rdbuf();
    std::string s = text.str();
    const std::string group = "&NML_NUMERICAL_SOLVER";
    s.insert(s.find("\n/", s.find(group)), "\n  " + keys);
    std::ofstream(copy) << s;
    return copy;
}

void solve_here(const CaseOf& of, int threads, const std::string& keys, Result& result) {
    std::array<char, 64> name{"/tmp/torvex-bench-XXXXXX"};
    const char* made = mkdtemp(name.data());
    const fs::path directory = made;
    const std::string file = written_case(of, directory, keys);
    if (std::getenv("TORVEX_BENCH_TALK") == nullptr) {
        (void)!std::freopen("/dev/null", "w", stdout);
    }
    omp_set_num_threads(threads);
    Clock::time_point start = Clock::now();
    const auto since = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    bool first = true;
    run_torvex({"/f", file}, [&](Run& run, Direction& direction) {
        if (!first) {
            return;
        }
        first = false;
        const GridGeometry& g = direction.grid;
        result.cells = static_cast<double>(g.nx - 1) * (g.ny - 1) * (g.nz - 1);
        result.set_up_seconds = since();
        start = Clock::now();
        const OuterStep step = outer_step_of(run.settings, direction);
        OUTER_ITERATION(run, direction, [&](const SolverContext& c, int iter, int interval) {
            StepReport report = step(c, iter, interval);
            if (result.iterations < static_cast<int>(result.history.size())) {
                result.history.at(static_cast<std::size_t>(result.iterations++)) = {
                    since(), c.flow.resid_m / c.flow.flow_in, speeds(c.grid, c.flow, of.radius)};
            }
            return report;
        });
        result.converged = direction.converged;
        result.solve_seconds = since();
    });
    fs::current_path("/");
    fs::remove_all(directory);
}

Result solve(const CaseOf& of, int threads, const std::string& keys, double& peak) {
    const fs::path answer = "/tmp/torvex-bench-answer-" + std::to_string(getpid());
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        static Result result;
        solve_here(of, threads, keys, result);
        std::ofstream(answer, std::ios::binary)
            .write(reinterpret_cast<const char*>(&result), sizeof result);
        _exit(0);
    }
    rusage usage{};
    int status = 0;
    wait4(child, &status, 0, &usage);
    peak = 1024.0 * static_cast<double>(usage.ru_maxrss);
    Result result;
    std::ifstream(answer, std::ios::binary).read(reinterpret_cast<char*>(&result), sizeof result);
    fs::remove(answer);
    return result;
}

// First iteration, from 1, from which on all points lie within `band` of the values.
int settled(const Result& r, const Speeds& values, float band) {
    int n = r.iterations;
    while (n > 0) {
        const Speeds& now = r.history.at(static_cast<std::size_t>(n - 1)).speeds;
        for (std::size_t m = 0; m < points; ++m) {
            if (!(std::abs(now.at(m) - values.at(m)) <= band * std::abs(values.at(m)))) {
                return n + 1;
            }
        }
        --n;
    }
    return 1;
}

// Prints the line of a run; returns the seconds to 1 %, below 0 where it never came there.
double print(const char* what, const Result& r, const Speeds& values, double peak) {
    const int coarse = settled(r, values, 0.01F);
    const int fine = settled(r, values, 0.002F);
    const auto seconds = [&](int n) {
        return n <= r.iterations ? r.history.at(static_cast<std::size_t>(n - 1)).seconds : -1.0;
    };
    float deviation = 0;
    const Speeds& last = r.history.at(static_cast<std::size_t>(r.iterations - 1)).speeds;
    for (std::size_t m = 0; m < points; ++m) {
        deviation = std::max(deviation, std::abs(last.at(m) / values.at(m) - 1.0F));
    }
    std::printf(
        "%-12s %8.0f cells: 1 %% after %4d iterations, %7.3f s; 0.2 %% after %4d, %7.3f s; %s "
        "after %4d, %7.3f s; %.3f us per cell and iteration; deviation %.4f %%; set up %.2f s; "
        "%.0f bytes per cell\n",
        what, r.cells, coarse, seconds(coarse), fine, seconds(fine),
        r.converged ? "converged" : "NOT converged", r.iterations, r.solve_seconds,
        1e6 * r.solve_seconds / r.cells / r.iterations, 100.0 * static_cast<double>(deviation),
        r.set_up_seconds, peak / r.cells);
    std::fflush(stdout);
    return seconds(coarse);
}

std::string keys_of(const char* name) {
    const char* keys = std::getenv(name);
    return keys == nullptr ? "" : keys;
}

int print_answer(const CaseOf& of, int threads) {
    double peak = 0;
    const Result r = solve(of, threads, "ACCEL = 1, MAXIT = 100, CC_OUT_M = 4e-5", peak);
    const Speeds& last = r.history.at(static_cast<std::size_t>(r.iterations - 1)).speeds;
    const int answer = settled(r, last, 0.01F);
    const Moment& then = r.history.at(static_cast<std::size_t>(answer - 1));
    std::printf(
        "{\"cells\": %.0f, \"threads\": %d, \"converged\": %s, \"iterations\": %d, "
        "\"answer_iter\": %d, \"answer_s\": %.3f, \"set_up_s\": %.3f, "
        "\"us_per_cell_iter\": %.4f, \"peak_mib\": %.1f}\n",
        r.cells, threads, r.converged ? "true" : "false", r.iterations, answer,
        r.set_up_seconds + then.seconds, r.set_up_seconds,
        1e6 * r.solve_seconds / r.cells / r.iterations, peak / 1048576.0);
    return r.converged ? 0 : 1;
}

int run(const std::vector<std::string>& a) {
    if (a.size() < 3) {
        std::cerr << "usage: torvex_bench_acceleration hill CELLS THREADS [KEYS]\n"
                     "       torvex_bench_acceleration FILE RADIUS THREADS [KEYS]\n";
        return 2;
    }
    CaseOf of;
    if (a[0] == "answer") {
        of.hill = a[1];
        return print_answer(of, std::stoi(a[2]));
    }
    if (a[0] == "hill") {
        of.hill = a[1];
    } else {
        of.file = a[0];
        of.radius = std::stof(a[1]);
    }
    const int threads = std::stoi(a[2]);
    const char* kept = std::getenv("TORVEX_BENCH_REFERENCE");
    Speeds values{};
    double peak = 0;
    std::ifstream known(kept == nullptr ? "" : kept);
    bool have = false;
    double default_seconds = 0;
    for (float& v : values) {
        have = static_cast<bool>(known >> v);
    }
    if (!have) {
        const Result plain = solve(of, threads, keys_of("TORVEX_BENCH_DEFAULT"), peak);
        values = plain.history.at(static_cast<std::size_t>(plain.iterations - 1)).speeds;
        default_seconds = print("default", plain, values, peak);
        if (kept != nullptr) {
            std::ofstream out(kept);
            out.precision(9);
            for (const float v : values) {
                out << v << '\n';
            }
        }
    }
    const Result fast = solve(of, threads, "ACCEL = 1 " + (a.size() > 3 ? a[3] : ""), peak);
    const double seconds = print("accelerated", fast, values, peak);
    if (default_seconds > 0 && seconds > 0) {
        std::printf("to 1 %%: %.1f times sooner\n", default_seconds / seconds);
    }
    if (std::getenv("TORVEX_BENCH_HISTORY") != nullptr) {
        for (int n = 0; n < fast.iterations; ++n) {
            const Moment& m = fast.history.at(static_cast<std::size_t>(n));
            float worst = 0;
            std::size_t at = 0;
            for (std::size_t p = 0; p < points; ++p) {
                const float d = std::abs(m.speeds.at(p) / values.at(p) - 1.0F);
                if (d > worst) {
                    worst = d;
                    at = p;
                }
            }
            std::printf("  %4d resid_m %.3e worst %.4f %% at %zu\n", n + 1,
                        static_cast<double>(m.resid_m), 100.0 * static_cast<double>(worst), at);
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
