#include "EnvironmentGuard.h"
#include "GoZPaths.h"

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

namespace {

struct RootCase
{
    const char* name;
    const char* lower;  // value of "public", nullptr for unset
    const char* upper;  // value of "PUBLIC", nullptr for unset
    const char* root;
};

void PrintTo(const RootCase& c, std::ostream* out)
{
    *out << c.name;
}

class PixologicRootTable : public ::testing::TestWithParam<RootCase>
{
};

TEST_P(PixologicRootTable, FollowsThePublicVariable)
{
    const RootCase& c = GetParam();
    CEnvironmentGuard environment;
    environment.Unset("Public");
    for (const auto& variable : {std::make_pair("public", c.lower), std::make_pair("PUBLIC", c.upper)}) {
        if (variable.second != nullptr) {
            environment.Set(variable.first, variable.second);
        } else {
            environment.Unset(variable.first);
        }
    }
    EXPECT_EQ(MV::GoZPaths::PixologicRoot().toStdString(), c.root);
}

INSTANTIATE_TEST_SUITE_P(
    GoZPaths, PixologicRootTable,
    ::testing::Values(RootCase{"UnsetGivesDefault", nullptr, nullptr, "C:\\users\\public/Pixologic/"},
                      RootCase{"LowerCase", "D:\\Shared", nullptr, "D:\\Shared/Pixologic/"},
                      RootCase{"UpperCaseOnly", nullptr, "/tmp/sandbox", "/tmp/sandbox/Pixologic/"},
                      RootCase{"ExactNameWins", "lower", "upper", "lower/Pixologic/"},
                      RootCase{"EmptyIsKept", "", "upper", "/Pixologic/"}),
    [](const ::testing::TestParamInfo<RootCase>& info) { return std::string(info.param.name); });

TEST(GoZPaths, SandboxRootMatchesTheFixedRoot)
{
    // Tests and the demo rely on this: PUBLIC=C:/Users/Public makes both spellings one folder.
    CEnvironmentGuard environment;
    environment.Unset("public");
    environment.Set("PUBLIC", "C:/Users/Public");
    EXPECT_EQ(MV::GoZPaths::PixologicRoot(), QString::fromLatin1(MV::GoZPaths::kFixedPixologicRoot));
}

} // namespace
