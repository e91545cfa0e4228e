#include "case/model_report.hpp"

#include <string>

#include "base/edit.hpp"
#include "base/log_layer.hpp"
#include "base/stop.hpp"
#include "case/case_blocks.hpp"

namespace torvex {

namespace {

// One constant a line. The labels of the hybrid model are one blank wider.
class ConstantLines {
 public:
    ConstantLines(RunLog& log, std::size_t width) : log_(log), width_(width) {}

    void operator()(const std::string& name, float value) const {
        std::string label = "     > " + name + ":";
        label.resize(std::max(width_, label.size()), ' ');
        log_.line(label + edit::F(value, 5, 3));
    }

 private:
    RunLog& log_;
    std::size_t width_;
};

constexpr std::size_t plain_width = 15;
constexpr std::size_t hybrid_width = 16;

void report_k_epsilon(const CaseSettings& settings, const ConstantLines& constant) {
    constant("C_mu", settings.CMU);
    constant("C_e1", settings.CE1);
    constant("C_e2", settings.CE2);
    constant("TKE Pr", settings.SIGK);
    constant("TED Pr", settings.SIGE);
}

void report_k_l(const CaseSettings& settings, const ConstantLines& constant) {
    constant("C_mu", settings.KL_CMU);
    constant("TKE Pr", settings.KL_SIGMA_K);
    constant("alpha", settings.KL_ALPHA);
}

// An equilibrium inflow brings the SIGE that keeps it, unless the case gives one. A child has that
// of its parent.
void balance_sigma_e(const CaseText& file, CaseSettings& settings, const KeyLines& lines) {
    if (!settings.EQUILIBRIUM_INFLOW || settings.SPECIFY_INFLOW_PROFILE ||
        lines.given("KE_SIGMA_E")) {
        return;
    }
    if (settings.TORVEX_MODE != 0) {
        CaseSettings ahead = settings;  // the block is read later
        read_user_domain(file, ahead);
        if (ahead.user.inlet != 0) {
            return;
        }
    }
    if (!(settings.CE2 > settings.CE1 && settings.CMU > 0.0F)) {
        stop(1,
             "EQUILIBRIUM_INFLOW has no balanced KE_SIGMA_E unless KE_CE2 is above KE_CE1 and "
             "KE_CMU above 0",
             lines.where(file, "EQUILIBRIUM_INFLOW"), "correct the constants or give KE_SIGMA_E");
    }
    settings.SIGE = balanced_sigma_e(settings.CMU, settings.CE1, settings.CE2);
}

}  // namespace

void select_turbulence_constants(const CaseText& file, CaseSettings& settings,
                                 const KeyLines& lines) {
    switch (settings.TURBULENCE_MODEL) {
        case 1:
        case 3:
        case 4:
            settings.CMU = settings.KE_CMU;
            settings.CE1 = settings.KE_CE1;
            settings.CE2 = settings.KE_CE2;
            settings.SIGK = settings.KE_SIGMA_K;
            settings.SIGE = settings.KE_SIGMA_E;
            balance_sigma_e(file, settings, lines);
            break;
        case 2:
            settings.CMU = settings.KL_CMU;
            settings.SIGK = settings.KL_SIGMA_K;
            break;
        default:
            stop(1,
                 "key TURBULENCE_MODEL is " + std::to_string(settings.TURBULENCE_MODEL) +
                     ", expected 1 to 4",
                 lines.where(file, "TURBULENCE_MODEL"),
                 "1 k-epsilon, 2 k-l, 3 Launder-Kato, 4 hybrid");
    }
}

void report_turbulence_model(const CaseSettings& settings, RunLog& log) {
    const ConstantLines constant(log, plain_width);
    const ConstantLines hybrid(log, hybrid_width);
    switch (settings.TURBULENCE_MODEL) {
        case 1:
            log.line("   - k-epsilon model is used.");
            report_k_epsilon(settings, constant);
            break;
        case 2:
            log.line(" * k-l model is used.");
            log.line("   - k-l model is used.");
            report_k_l(settings, constant);
            break;
        case 3:
            log.line("   - Launder-Kato model is used.");
            report_k_epsilon(settings, constant);
            break;
        default:
            log.line("   - Hybrid turbulence viscosity model is used.");
            log.line(" * Model paramters for k-epsilon");
            report_k_epsilon(settings, hybrid);
            log.line(" * Model paramters for k-l model");
            report_k_l(settings, hybrid);
            log.line(" * Hybrid paramters");
            hybrid("ratio_kl", settings.RATIO_KL);
            hybrid("ratio_lk", settings.RATIO_OMEGA);
            break;
    }
}

}  // namespace torvex
