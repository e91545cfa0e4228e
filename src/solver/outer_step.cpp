#include "solver/outer_step.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace torvex {

namespace {

// Calls equations until one leaves a residual that is not a number.
class Caller {
 public:
    Caller(const SolverContext& context, int iter, int interval)
        : context_(context), iter_(iter), interval_(interval) {}

    template <class... Labels>
    void operator()(const Equations::Solve& equation, const float& resid, Labels... label) {
        if (!report_.finite) {
            return;
        }
        const std::array<std::string_view, sizeof...(Labels)> labels{label...};
        const SolveRecords records = equation(context_, iter_, interval_);
        for (std::size_t n = 0; n < records.size(); ++n) {
            report_.solves.push_back({labels.at(n), records[n]});
        }
        report_.finite = !std::isnan(resid);
    }
    void operator()(const Equations::Update& update) {
        if (report_.finite) {
            update(context_);
        }
    }
    StepReport report() { return std::move(report_); }

 private:
    const SolverContext& context_;
    int iter_;
    int interval_;
    StepReport report_;
};

}  // namespace

OuterStep step_through(Equations equations) {
    return [equations = std::move(equations)](const SolverContext& context, int iter,
                                              int interval) {
        const FlowState& flow = context.flow;
        const int model = context.settings.TURBULENCE_MODEL;
        Caller call(context, iter, interval);
        call(equations.CALCU, flow.resid_u, "   u");
        call(equations.CALCV, flow.resid_v, "   v");
        call(equations.CALCW, flow.resid_w, "   w");
        constexpr float tested_later = 0;  // the mass residual, with the others of the iteration
        call(equations.CALCP, tested_later, "   p", "  pp");
        call(equations.CALCKE, flow.resid_k, "   k");
        if (model == 2) {
            call(equations.CALCLM);
        } else {
            call(equations.CALCED, flow.resid_e, "   e");
            if (model == 4) {
                call(equations.CALCKLM, flow.resid_klm, "  klm");
                call(equations.CALCLM_);
            }
        }
        call(equations.CALCVIS);
        StepReport report = call.report();
        report.tested = iter % interval == 0;
        return report;
    };
}

void normalise_residuals(FlowState& flow, int turbulence_model) {
    flow.resid_m /= flow.flow_in;
    flow.resid_u /= flow.momentum_in;
    flow.resid_v /= flow.momentum_in;
    flow.resid_w /= flow.momentum_in;
    flow.resid_k /= flow.momentum_in;
    flow.resid_e /= flow.momentum_in;
    if (turbulence_model == 4) {
        flow.resid_klm /= flow.momentum_in;
    }
}

// Each value is tested by itself: the largest of a list may hide a value that is not a number.
bool has_diverged(const FlowState& flow) {
    constexpr float limit = 1.0e14F;
    const std::array residuals{flow.resid_m, flow.resid_u, flow.resid_v,
                               flow.resid_w, flow.resid_k, flow.resid_e};
    const bool not_a_number = std::ranges::any_of(residuals, [](float r) { return std::isnan(r); });
    const float largest = std::max({flow.resid_m, flow.resid_u, flow.resid_v, flow.resid_w});
    return not_a_number || largest > limit;
}

}  // namespace torvex
