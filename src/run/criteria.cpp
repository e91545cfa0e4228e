#include "run/criteria.hpp"

#include <algorithm>
#include <string>

#include "base/edit.hpp"

namespace torvex {

float scale_criteria(CaseSettings& settings, int ni, int nj, int nk) {
    constexpr float reference_count = 300000.0F;
    const float S = std::max(static_cast<float>(ni * nj * nk), reference_count) / reference_count;
    for (float* criterion : {&settings.CC_OUT_M, &settings.CC_OUT_U, &settings.CC_OUT_V,
                             &settings.CC_OUT_W, &settings.CC_OUT_TKE, &settings.CC_OUT_TED}) {
        *criterion *= S;
        if (settings.OUT_CC_LIMIT != 0.0F) {
            *criterion = std::min(*criterion, settings.OUT_CC_LIMIT);
        }
    }
    return S;
}

void report_criteria(const CaseSettings& settings, float S, RunLog& log) {
    const std::string m = edit::E(settings.CC_OUT_M, 11, 4);
    const std::string u = edit::E(settings.CC_OUT_U, 11, 4);
    const std::string v = edit::E(settings.CC_OUT_V, 11, 4);
    const std::string w = edit::E(settings.CC_OUT_W, 11, 4);
    const std::string scale = edit::F(S, 10, 3);
    const std::string limit = edit::F(settings.OUT_CC_LIMIT, 10, 5);
    console("   - Convergence Criteria are set as:");
    console("     > M:" + m);
    console("     > U:" + u);
    console("     > V:" + v);
    console("     > W:" + w);
    console("     > relaxation coefficient(limit): " + scale + "(" + limit + ")");

    const std::string indent(19, ' ');
    log.timed(" Outer iteration convergence criteria are set as:");
    log.line(indent + " M:" + m + ", U:" + u + ", V:" + v + ", W:" + w);
    log.line(indent + " SCALE:" + scale + ", LIMIT:" + limit);
}

}  // namespace torvex
