#include "timed_equations.hpp"

#include <chrono>

namespace torvex::bench {

namespace {

using Clock = std::chrono::steady_clock;

class Stopwatch {
 public:
    explicit Stopwatch(double& seconds) : seconds_(seconds) {}
    ~Stopwatch() { seconds_ += std::chrono::duration<double>(Clock::now() - start_).count(); }
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

 private:
    double& seconds_;
    Clock::time_point start_ = Clock::now();
};

struct TimedSolve {
    Equations::Solve call;
    double& seconds;

    SolveRecords operator()(const SolverContext& context, int iter, int interval) const {
        const Stopwatch watch(seconds);
        return call(context, iter, interval);
    }
};

struct TimedUpdate {
    Equations::Update call;
    double& seconds;

    void operator()(const SolverContext& context) const {
        const Stopwatch watch(seconds);
        call(context);
    }
};

}  // namespace

Equations timed_equations(RoutineSeconds& seconds,
                          const std::function<void(const SolverContext&)>& behind) {
    const auto of = [&seconds](Routine routine) -> double& {
        return seconds.at(static_cast<std::size_t>(routine));
    };
    const Equations plain = flow_equations();
    const TimedUpdate last{plain.CALCVIS, of(Routine::CALCVIS)};
    return {.CALCU = TimedSolve{plain.CALCU, of(Routine::CALCU)},
            .CALCV = TimedSolve{plain.CALCV, of(Routine::CALCV)},
            .CALCW = TimedSolve{plain.CALCW, of(Routine::CALCW)},
            .CALCP = TimedSolve{plain.CALCP, of(Routine::CALCP)},
            .CALCKE = TimedSolve{plain.CALCKE, of(Routine::CALCKE)},
            .CALCED = TimedSolve{plain.CALCED, of(Routine::CALCED)},
            .CALCKLM = TimedSolve{plain.CALCKLM, of(Routine::CALCKLM)},
            .CALCLM = TimedUpdate{plain.CALCLM, of(Routine::CALCLM)},
            .CALCLM_ = TimedUpdate{plain.CALCLM_, of(Routine::CALCLM_)},
            .CALCVIS = [last, behind](const SolverContext& context) {
                last(context);
                behind(context);
            }};
}

}  // namespace torvex::bench
