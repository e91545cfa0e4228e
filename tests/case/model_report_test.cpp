// The lines of the log on each turbulence model, in full.

#include "case/model_report.hpp"

#include <gtest/gtest.h>

#include "case/case_reading.hpp"
#include "support/case_text.hpp"
#include "support/failures.hpp"

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

std::string ted_line(const std::string& model_items, const std::string& inflow_items) {
    const test::ReadCase c(test::case_text(
        {{"NML_NAVIER_STOKES", model_items}, {"NML_BOUNDARY_TREATMENT", inflow_items}}));
    const std::string log = c.log.kept();
    const std::size_t at = log.find("TED Pr:");
    return at == std::string::npos ? "none" : log.substr(at, log.find('\n', at) - at);
}

// 0.41^2/(0.48 * 0.3) = 1.1674; with CMU 0.04, CE1 1.2 and CE2 1.92: 0.1681/(0.72 * 0.2) = 1.1674
// again; with CMU 0.0333 and the default rest: 0.1681/(0.48 * 0.182483) = 1.9191.
TEST(ModelReport, EquilibriumInflowBringsItsPrandtlNumber) {
    const std::string on = "EQUILIBRIUM_INFLOW = T";
    EXPECT_EQ(ted_line("TURBULENCE_MODEL = 1", on), "TED Pr: 1.167");
    EXPECT_EQ(ted_line("TURBULENCE_MODEL = 3, KE_CMU = 0.04, KE_CE1 = 1.2", on), "TED Pr: 1.167");
    EXPECT_EQ(ted_line("TURBULENCE_MODEL = 4, KE_CMU = 0.0333", on), "TED Pr:  1.919");
    EXPECT_EQ(ted_line("TURBULENCE_MODEL = 2", on), "none");
}

TEST(ModelReport, AGivenPrandtlNumberStays) {
    const std::string on = "EQUILIBRIUM_INFLOW = T";
    EXPECT_EQ(ted_line("KE_SIGMA_E = 1.3", on), "TED Pr: 1.300");
    EXPECT_EQ(ted_line("KE_SIGMA_E = 1.25", on), "TED Pr: 1.250");
    EXPECT_EQ(ted_line("TURBULENCE_MODEL = 1", "EQUILIBRIUM_INFLOW = F"), "TED Pr: 1.300");
    EXPECT_EQ(ted_line("TURBULENCE_MODEL = 1", on + ", SPECIFY_INFLOW_PROFILE = T"),
              "TED Pr: 1.300");
}

TEST(ModelReport, ConstantsWithoutABalanceEndTheRun) {
    for (const std::string constants : {"KE_CE1 = 1.92", "KE_CE2 = 1.2", "KE_CMU = 0"}) {
        const auto stop = test::stop_of([&] {
            const test::ReadCase c(
                test::case_text({{"NML_NAVIER_STOKES", constants},
                                 {"NML_BOUNDARY_TREATMENT", "EQUILIBRIUM_INFLOW = T"}}));
        });
        ASSERT_TRUE(stop) << constants;
        EXPECT_EQ(stop->code(), 1);
        EXPECT_NE(stop->where().find("line"), std::string::npos) << stop->where();
    }
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
