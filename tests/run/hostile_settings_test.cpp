// Settings that no machine can serve, in the environment and in the case: the program ends by
// itself, and soon, or does its work as if nothing were.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <list>
#include <optional>
#include <utility>

#include "run/run_fixture.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;

// --- the environment ---

using Settings = std::vector<std::pair<const char*, std::string>>;

// A variable of the environment that has another value for a while.
class Variable {
 public:
    Variable(const char* name, const std::string& value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
        }
        setenv(name, value.c_str(), 1);
    }
    ~Variable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

 private:
    const char* name_;
    std::optional<std::string> before_;
};

class HostileEnvironment : public RunTest {
 protected:
    HostileEnvironment() {
        write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                    {"NML_MONITOR", "MONITOR_STEP = 1"},
                    {"NML_NUMERICAL_SOLVER", "MAXIT = 1"}});
        const Variable one("OMP_NUM_THREADS", "1");
        good = results();
        EXPECT_TRUE(good.contains("restart-000_0-vpkeout_00001.tuf"));
    }
    std::map<std::string, std::string> results() const {
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_EQ(ran.signal, 0);
        EXPECT_FALSE(ran.timed_out);
        std::map<std::string, std::string> files = files_below(directory.path());
        std::erase_if(files, [](const auto& file) { return file.first == "torvex.log"; });
        return files;
    }
    void expect_the_same(const Settings& settings) {
        std::list<Variable> set;
        std::string names;
        for (const auto& [name, value] : settings) {
            set.emplace_back(name, value);
            names += std::string(name) + "=" + value + " ";
        }
        SCOPED_TRACE(names);
        EXPECT_TRUE(results() == good);
    }
    std::map<std::string, std::string> good;
};

TEST_F(HostileEnvironment, AnyNumberOfThreadsIsServed) {
    for (const char* threads : {"1000000", "2147483647", "4000000000", "99999999999999", "0", "-1",
                                "many", "3,2,1", ""}) {
        expect_the_same({{"OMP_NUM_THREADS", threads}});
    }
}

TEST_F(HostileEnvironment, NoSizeOfAStackEndsTheProgram) {
    for (const char* size : {"1k", "20k", "0", "1B", "1023", "1 k", "1000G", "9999999999",
                             "2147483647G", "3000000000", "-1", "big", ""}) {
        expect_the_same({{"OMP_NUM_THREADS", "2"}, {"OMP_STACKSIZE", size}});
    }
    for (const char* size : {"1", "20", "0", "999999999999", "big"}) {
        expect_the_same({{"OMP_NUM_THREADS", "2"}, {"GOMP_STACKSIZE", size}});
    }
}

TEST_F(HostileEnvironment, NoOtherSettingOfTheRuntimeChangesAResult) {
    const Settings settings{{"OMP_THREAD_LIMIT", "1"},
                            {"OMP_THREAD_LIMIT", "0"},
                            {"OMP_DYNAMIC", "true"},
                            {"OMP_MAX_ACTIVE_LEVELS", "0"},
                            {"OMP_MAX_ACTIVE_LEVELS", "-1"},
                            {"OMP_NESTED", "true"},
                            {"OMP_PLACES", "garbage"},
                            {"OMP_PLACES", "{1000}"},
                            {"OMP_PLACES", "cores(100000000)"},
                            {"OMP_PROC_BIND", "garbage"},
                            {"OMP_PROC_BIND", "spread,close,"},
                            {"GOMP_CPU_AFFINITY", "garbage"},
                            {"GOMP_CPU_AFFINITY", "0-100000000"},
                            {"GOMP_CPU_AFFINITY", "5000"},
                            {"OMP_SCHEDULE", "dynamic,1"},
                            {"OMP_SCHEDULE", "static,-1"},
                            {"OMP_WAIT_POLICY", "garbage"},
                            {"GOMP_SPINCOUNT", "garbage"},
                            {"OMP_TARGET_OFFLOAD", "mandatory"}};
    for (const auto& setting : settings) {
        expect_the_same({{"OMP_NUM_THREADS", "2"}, setting});
    }
}

// --- the case ---

// While it lives, programs that are started get no more memory than this.
class MemoryLimit {
 public:
    explicit MemoryLimit(rlim_t bytes) {
#ifndef __SANITIZE_ADDRESS__  // which takes terabytes of addresses for itself
        getrlimit(RLIMIT_AS, &before_);
        rlimit limit = before_;
        limit.rlim_cur = std::min(bytes, before_.rlim_max);
        setrlimit(RLIMIT_AS, &limit);
        limited_ = true;
#else
        static_cast<void>(bytes);
#endif
    }
    ~MemoryLimit() {
        if (limited_) {
            setrlimit(RLIMIT_AS, &before_);
        }
    }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

 private:
    rlimit before_{};
    bool limited_ = false;
};

class HostileSizes : public RunTest {
 protected:
    // Ends by itself with this status and says so, although it may take no more than a gigabyte.
    void expect_refused(int status, const CaseItems& items, const std::string& told,
                        const std::string& behind = {}) const {
        CaseItems all{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};
        all.insert(all.end(), items.begin(), items.end());
        write_case(all, behind);
        const MemoryLimit limit(rlim_t{1} << 30U);
        const ProgramRun ran = run();
        const std::string what = items.empty() ? behind : items[0].second;
        EXPECT_EQ(ran.status, status) << what << ": " << ran.err;
        EXPECT_FALSE(ran.timed_out) << what;
        EXPECT_THAT(ran.err, HasSubstr(told)) << what;
        EXPECT_THAT(ran.err, ::testing::Not(HasSubstr("out of memory"))) << what;
    }
};

TEST_F(HostileSizes, OfTheMeshAreRefused) {
    const std::string wide = "needs more than 20000 cells from its centre to an edge";
    for (const char* line : {"WE_LENGTH = 1E30", "NS_LENGTH = 1E30", "MIN_DXY = 1E-30"}) {
        expect_refused(1, {{"NML_CASEFILE", line}}, wide);
    }
    for (const char* line : {"SIDE_BR = 1E30", "UP_BR = 1E30", "DOWN_BR = 1E30", "ADD_R = 1E30",
                             "BZ_LIMIT = 1E30", "ADD_LIMIT = 1E30"}) {
        expect_refused(1, {{"NML_BOUNDARY_TREATMENT", line}}, wide);
    }
    expect_refused(1, {{"NML_CASEFILE", "MIN_DXY = 0.2, MAX_DXY = 0.2, MIN_DZ = 0.1"}}, "memory");
    const std::string levels = "more than 5000 levels are needed";
    expect_refused(1, {{"NML_BOUNDARY_TREATMENT", "MIN_DZ_HEIGHT = 1E30"}}, levels);
    expect_refused(1, {{"NML_CASEFILE", "MESH_VRATIO = 0.5"}}, levels);
    expect_refused(152, {{"NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = 1E30"}}, "stop 152");
    expect_refused(152, {{"NML_CASEFILE", "MIN_DZ = 1E30"}}, "stop 152");
    expect_refused(152, {{"NML_BOUNDARY_TREATMENT", "USE_DEFAULT_MAX_Z = F, MAX_Z = -1E30"}},
                   "stop 152");
    // levels so far apart that the monitor lies between none of them
    expect_refused(161, {{"NML_BOUNDARY_TREATMENT", "USE_DEFAULT_MAX_Z = F, MAX_Z = 1E30"}},
                   "stop 161");
}

TEST_F(HostileSizes, OfListsAreRefused) {
    expect_refused(1, {{"NML_SITE", "N_SITE = 2147483647"}}, "N_SITE");
    expect_refused(1, {{"NML_SITE", "SITE(2147483647)%LABEL = 'a'"}}, "2147483647");
    expect_refused(1, {{"NML_CASEFILE", "N_WIND_DIRECTION = 2147483647"}}, "N_WIND_DIRECTION");
    expect_refused(1, {{"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 2147483647*1.0"}},
                   "WIND_DIRECTION_ANGLE");
    expect_refused(1, {{"NML_NUMERICAL_SOLVER", "NSWPP = 10001"}}, "NSWPP");
    const std::string use = "USE_DIRECTIONAL_ALPHA = T, DIRECTIONAL_ALPHA_FILE_NAME = 'alpha'";
    for (const char* text : {"2147483647\n0 0.15\n", "2147483647\n2147483647*1.0\n"}) {
        directory.write("alpha", text);
        expect_refused(1, {{"NML_ER", use}}, "table of directional alpha");
    }
    directory.write("profile", "2147483647\ntitles\n");
    expect_refused(1,
                   {{"NML_BOUNDARY_TREATMENT", "SPECIFY_INFLOW_PROFILE = T"},
                    {"NML_BOUNDARY_TREATMENT", "INFLOW_PROFILE_FILE = 'profile'"},
                    {"NML_BOUNDARY_TREATMENT", "INFLOW_PROFILE_TABLE = F"}},
                   "of 2147483647");
    directory.write("h.map",
                    "<TORVEX_MAP lon-lat>\nn_lon = 2147483647, n_lat = 2147483647\n"
                    "d_lon = 10, d_lat = 10\nbase_longitude = 139 25\n"
                    "base_latitude = 35 10\n--DATA--\n2147483647*10\n");
    expect_refused(113, {}, "2147483647 columns");
}

TEST_F(HostileSizes, OfAUsersMeshAreRefused) {
    const std::string block =
        "&user_domain\nmesh_n_file = n\nxyz_file = x\nroughness_file = z\n/\n";
    for (const char* counts : {"2147483647\n2147483647\n2147483647\n", "2147483647\n3\n3\n",
                               "1290\n1290\n1290\n", "99999999999\n3\n3\n"}) {
        directory.write("n", counts);
        expect_refused(1, {{"NML_RUN", "TORVEX_MODE = 1"}}, "\n  in n", block);
    }
}

TEST_F(HostileSizes, OfASearchEndIt) {
    directory.write("alpha", "2\n0 0.15\n180 0.2\n");
    for (const char* eps : {"0.001", "0", "-1"}) {
        write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                    {"NML_ER", "USE_DIRECTIONAL_ALPHA = T, DIRECTIONAL_ALPHA_FILE_NAME = 'alpha'"},
                    {"NML_ER", "DIRECTIONAL_ALPHA_APPLICABLE_WDS = 1, -1"},
                    {"NML_ER", "DIRECTIONAL_ALPHA_BS_MAXIT = 2147483647"},
                    {"NML_ER", "DIRECTIONAL_ALPHA_BS_EPS = " + std::string(eps)}});
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << eps << ": " << ran.err;
        EXPECT_FALSE(ran.timed_out) << eps;
    }
}

}  // namespace
}  // namespace torvex::test
