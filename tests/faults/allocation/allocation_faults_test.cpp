// allocation_faults_test.cpp - every allocation fails once, and fails from then on, wherever the
// client is.
#include "faults/allocation/scenario_loop.hpp"

#include <gtest/gtest.h>
#include <ostream>

namespace
{

class allocation_faults : public testing::TestWithParam<scenario>
{
};

std::vector<scenario> all_scenarios()
{
    std::vector<scenario> all;
    for (const auto table : {run_scenarios(), service_scenarios(), packet_scenarios()})
        all.insert(all.end(), table.begin(), table.end());
    return all;
}

std::string name_of(const testing::TestParamInfo<scenario>& info)
{
    return info.param.name;
}

} // namespace

void PrintTo(const scenario& which, std::ostream* out);
void PrintTo(const scenario& which, std::ostream* out)
{
    *out << which.name;
}

TEST_P(allocation_faults, are_survived)
{
    const scenario_result result = scenario_loop(GetParam());
    std::printf("%s: %ld allocations, %ld runs, %ld crashes of libraries\n", GetParam().name,
                result.allocations, result.runs, result.library_crashes);
    EXPECT_TRUE(result.failures.empty()) << result.failures;
}

INSTANTIATE_TEST_SUITE_P(everywhere, allocation_faults, testing::ValuesIn(all_scenarios()),
                         name_of);
