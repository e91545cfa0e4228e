// Distorted case files through the whole program: it ends by itself, and says why where it fails.

#include <gtest/gtest.h>

#include "case/mutations.hpp"
#include "run/run_fixture.hpp"

namespace torvex::test {
namespace {

TEST(MutatedCases, NeverEndTheProgramByASignalOrWithoutAMessage) {
    // A good case here ends at its missing map, so that no run takes long.
    const std::string good = case_text({{"NML_CASEFILE", "BASIC_H_FILE = 'none.map'"},
                                        {"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                                        {"NML_SITE", "N_SITE = 1, SITE(1)%LABEL = 'mast'"},
                                        {"NML_NUMERICAL_SOLVER", "MAXIT = 0"}},
                                       "&canopy_parameters\ncanopy_mode = 0\nbeta_d = 5.1\n/\n");
    Mutator mutator({good}, 4711);
    for (int n = 0; n < 100; ++n) {
        const TemporaryDirectory directory;
        const std::string text = mutator.next();
        directory.write("torvex.tin", text);
        const ProgramRun ran = run_torvex_program({}, directory.path(), 100);
        ASSERT_FALSE(ran.timed_out) << text;
        ASSERT_EQ(ran.signal, 0) << text << ran.err;
        ASSERT_EQ(ran.status == 0, ran.err.empty()) << text << ran.err;
    }
}

}  // namespace
}  // namespace torvex::test
