// The lines of the log on each turbulence model, in full.

#include "case/model_report.hpp"

#include <gtest/gtest.h>

#include "case/case_reading.hpp"
#include "support/case_text.hpp"

namespace torvex {
namespace {

// What the log says behind the four lines on the modes.
std::string report_of(const std::string& model_items) {
    const test::ReadCase c(test::case_text({{"NML_NAVIER_STOKES", model_items}}));
    const std::string log = c.log.kept();
    const std::string modes_end = "  meso_dws_mode = F\n F\n";
    const std::size_t at = log.find(modes_end);
    return at == std::string::npos ? log : log.substr(at + modes_end.size());
}

TEST(ModelReport, KEpsilon) {
    EXPECT_EQ(report_of("TURBULENCE_MODEL = 1, KE_CMU = 0.0333, KE_CE1 = 1.176, KE_SIGMA_E = 10"),
              "   - k-epsilon model is used.\n"
              "     > C_mu:   0.033\n"
              "     > C_e1:   1.176\n"
              "     > C_e2:   1.920\n"
              "     > TKE Pr: 1.000\n"
              "     > TED Pr: *****\n");
}

TEST(ModelReport, LaunderKato) {
    EXPECT_EQ(report_of("TURBULENCE_MODEL = 3"),
              "   - Launder-Kato model is used.\n"
              "     > C_mu:   0.090\n"
              "     > C_e1:   1.440\n"
              "     > C_e2:   1.920\n"
              "     > TKE Pr: 1.000\n"
              "     > TED Pr: 1.300\n");
}

TEST(ModelReport, KL) {
    EXPECT_EQ(report_of("TURBULENCE_MODEL = 2, KL_ALPHA = 0.15"),
              " * k-l model is used.\n"
              "   - k-l model is used.\n"
              "     > C_mu:   0.094\n"
              "     > TKE Pr: 1.860\n"
              "     > alpha:  0.150\n");
}

TEST(ModelReport, Hybrid) {
    EXPECT_EQ(report_of("TURBULENCE_MODEL = 4, RATIO_KL = 0.25, RATIO_OMEGA = 0.75"),
              "   - Hybrid turbulence viscosity model is used.\n"
              " * Model paramters for k-epsilon\n"
              "     > C_mu:    0.090\n"
              "     > C_e1:    1.440\n"
              "     > C_e2:    1.920\n"
              "     > TKE Pr:  1.000\n"
              "     > TED Pr:  1.300\n"
              " * Model paramters for k-l model\n"
              "     > C_mu:    0.094\n"
              "     > TKE Pr:  1.860\n"
              "     > alpha:   0.100\n"
              " * Hybrid paramters\n"
              "     > ratio_kl:0.250\n"
              "     > ratio_lk:0.750\n");
}

}  // namespace
}  // namespace torvex
