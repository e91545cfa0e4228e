#include "mesh/sizing_report.hpp"

#include <gtest/gtest.h>

#include "mesh_cases.hpp"

namespace torvex {
namespace {

using test::console_of;
using test::flat_case;
using test::log_lines;

using Lines = std::vector<std::string>;

TEST(SizingReport, HeightModeIsOneDigit) {
    CaseSettings settings = flat_case();
    RunLog log;
    EXPECT_EQ(console_of([&] { report_height_mode(settings, log); }),
              Lines{"   - boundary_height_mode is 0"});
    settings.BOUNDARY_HEIGHT_MODE = 1;
    console_of([&] { report_height_mode(settings, log); });
    settings.BOUNDARY_HEIGHT_MODE = -1;
    console_of([&] { report_height_mode(settings, log); });
    EXPECT_EQ(log_lines(log), (Lines{" boundary_height_mode is 0", " boundary_height_mode is 1",
                                     " boundary_height_mode is *"}));
}

TEST(SizingReport, DomainHeight) {
    RunLog log;
    EXPECT_EQ(console_of([&] { report_domain_height(2345.678F, log); }),
              Lines{"   - Computational domain height set to   2345.7m."});
    EXPECT_EQ(log_lines(log), Lines{" Computational domain height set to   2345.7m."});
}

// A square of 2 km; all ratios 0.3 and 1.0; in mode 1 with a highest point of 800 m and 40 percent:
// delta = 0.3 * 2828.4 = 848.5, Hmax/grad = 2000, delta^ = 848.5/2 + 2000 = 2424.3, l_diag =
// sqrt(1414.2^2 + 4242.6^2) = 4472.1, max_length = 3 * 1414.2 + 2 * 2424.3 = 9091.2, need_length =
// sqrt(9091.2^2 + 3111.3^2) + 200 = 9808.8, coefficient (9808.8 / 2828.4)^2 = 12.03.
DomainWidths widths_of_mode_one() {
    DomainWidths w;
    w.max_rad = 1414.2136F;
    w.l_diag = 4472.136F;
    w.add_length = 2828.4271F;
    w.grad = 0.4F;
    w.delta_u = 848.52814F;
    w.delta_u_hat = 2424.2641F;
    w.delta_d = 848.52814F;
    w.delta_d_hat = 2424.2641F;
    w.delta_s = 848.52814F;
    w.elevation = {.Hmax = 800.0F, .Hmin = -12.25F, .Havg = 123.06F};
    return w;
}

TEST(SizingReport, WidthsOfModeZero) {
    RunLog log;
    DomainWidths w = widths_of_mode_one();
    w.l_diag = 0.0F;
    w.grad = 0.0F;
    w.delta_u_hat = w.delta_u;
    w.delta_d_hat = w.delta_d;
    w.elevation = {};
    EXPECT_EQ(console_of([&] { report_widths(flat_case(), w, log); }),
              (Lines{"   - Maximum elevation in the domain is        0.0m.",
                     "   - Minimum elevation in the domain is        0.0m.",
                     "   - Average elevation in the domain is        0.0m.",
                     "     > l_diag is      0.0m.", "     > up_bz_width is    848.5m to    848.5m.",
                     "     > down_bz_width is    848.5m to    848.5m.",
                     "     > side_bz_width is    848.5m."}));
    EXPECT_EQ(
        log_lines(log),
        (Lines{" Maximum elevation in the domain is        0.0m.",
               " Minimum elevation in the domain is        0.0m.",
               " Average elevation in the domain is        0.0m.", " l_diag is      0.0m.",
               " up_bz_width is    848.5m to    848.5m.",
               " down_bz_width is    848.5m to    848.5m.", " side_bz_width is    848.5m.",
               " max_rad is   1414.2m.", " max_length is   5939.7m, need_length is   6905.2m.",
               " Coefficient of domain size is      6.0."}));
}

TEST(SizingReport, WidthsOfModeOne) {
    const Lines block{"----------------------------------------------------------------",
                      "[calc domain length]",
                      "  ns_length =  2000.0, we_length =  2000.0",
                      "[add length]",
                      "  add_length =  2828.4",
                      "[up buffer zone]",
                      "  delta_u =   848.5, Hmax =   800.0, grad =     0.4",
                      "  delta^_u = max( delta_u/2 + Hmax / grad, delta_u ) =  2424.3",
                      "  connection_length =  2000.0, flat_length =   424.3",
                      "[down buffer zone]",
                      "  delta_d =   848.5, Hmax =   800.0, grad =     0.4",
                      "  delta^_d = max( delta_d/2 + Hmax / grad, delta_d ) =  2424.3",
                      "  connection_length =  2000.0, flat_length =   424.3",
                      "[side buffer zone]",
                      "  delta_s =   848.5",
                      "----------------------------------------------------------------"};
    Lines on_console{"   - Maximum elevation in the domain is      800.0m.",
                     "   - Minimum elevation in the domain is      -12.2m.",
                     "   - Average elevation in the domain is      123.1m.",
                     "     > l_diag is   4472.1m.",
                     "     > up_bz_width is    848.5m to   2424.3m.",
                     "     > down_bz_width is    848.5m to   2424.3m.",
                     "     > side_bz_width is    848.5m."};
    Lines on_log{" Maximum elevation in the domain is      800.0m.",
                 " Minimum elevation in the domain is      -12.2m.",
                 " Average elevation in the domain is      123.1m.",
                 " l_diag is   4472.1m.",
                 " up_bz_width is    848.5m to   2424.3m.",
                 " down_bz_width is    848.5m to   2424.3m.",
                 " side_bz_width is    848.5m.",
                 " max_rad is   1414.2m.",
                 " max_length is   9091.2m, need_length is   9808.8m.",
                 " Coefficient of domain size is     12.0."};
    for (const std::string& line : block) {
        on_console.push_back("     > " + line);
        on_log.push_back(line);
    }
    CaseSettings settings = flat_case();
    settings.BOUNDARY_HEIGHT_MODE = 1;
    RunLog log;
    EXPECT_EQ(console_of([&] { report_widths(settings, widths_of_mode_one(), log); }), on_console);
    EXPECT_EQ(log_lines(log), on_log);
}

TEST(SizingReport, ConnectionLengthIsHmaxOverGradAlsoWhereTheZoneIsLonger) {
    CaseSettings settings = flat_case();
    settings.BOUNDARY_HEIGHT_MODE = 1;
    DomainWidths w = widths_of_mode_one();
    w.elevation.Hmax = 100.0F;  // 250 m of connection in the 424 m of the inner half
    w.delta_u_hat = w.delta_u;
    w.delta_d_hat = w.delta_d;
    RunLog log;
    const Lines lines = console_of([&] { report_widths(settings, w, log); });
    ASSERT_EQ(lines.size(), 23U);
    const std::string expected = "     >   connection_length =   250.0, flat_length =   598.5";
    EXPECT_EQ(lines[15], expected);
    EXPECT_EQ(lines[19], expected);
}

}  // namespace
}  // namespace torvex
