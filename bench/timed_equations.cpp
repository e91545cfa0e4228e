#include "timed_equations.hpp"

#include <chrono>
#include <utility>

namespace torvex::bench {

namespace {

using Clock = std::chrono::steady_clock;

template <class Call>
void timed(double& seconds, Call call) {
    const Clock::time_point start = Clock::now();
    call();
    seconds += std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

Equations timed_equations(RoutineSeconds& seconds,
                          const std::function<void(const SolverContext&)>& behind) {
    const auto place = [&seconds](Routine routine) -> double& {
        return seconds.at(static_cast<std::size_t>(routine));
    };
    const auto sweep = [&place](Routine routine, Equations::Sweep call) -> Equations::Sweep {
        return [call = std::move(call), &total = place(routine)](const SolverContext& context,
                                                                 int iter, int interval) {
            timed(total, [&] { call(context, iter, interval); });
        };
    };
    const auto update = [&place](Routine routine, Equations::Update call) -> Equations::Update {
        return [call = std::move(call), &total = place(routine)](const SolverContext& context) {
            timed(total, [&] { call(context); });
        };
    };
    const Equations plain = flow_equations();
    const Equations::Update last = update(Routine::CALCVIS, plain.CALCVIS);
    return {.CALCU = sweep(Routine::CALCU, plain.CALCU),
            .CALCV = sweep(Routine::CALCV, plain.CALCV),
            .CALCW = sweep(Routine::CALCW, plain.CALCW),
            .CALCP = sweep(Routine::CALCP, plain.CALCP),
            .CALCKE = sweep(Routine::CALCKE, plain.CALCKE),
            .CALCED = sweep(Routine::CALCED, plain.CALCED),
            .CALCKLM = sweep(Routine::CALCKLM, plain.CALCKLM),
            .CALCLM = update(Routine::CALCLM, plain.CALCLM),
            .CALCLM_ = update(Routine::CALCLM_, plain.CALCLM_),
            .CALCVIS = [last, behind](const SolverContext& context) {
                last(context);
                behind(context);
            }};
}

}  // namespace torvex::bench
