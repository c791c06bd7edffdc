#include "EnvironmentGuard.h"
#include "GoZPaths.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(GoZPaths, PixologicRootFollowsThePublicVariable)
{
    const struct
    {
        const char* lower; // value of "public", nullptr for unset
        const char* upper; // value of "PUBLIC", nullptr for unset
        const char* root;
    } cases[] = {
        {nullptr, nullptr, "C:\\users\\public/Pixologic/"},
        {"D:\\Shared", nullptr, "D:\\Shared/Pixologic/"},
        {nullptr, "/tmp/sandbox", "/tmp/sandbox/Pixologic/"},
        {"lower", "upper", "lower/Pixologic/"},
        {"", "upper", "/Pixologic/"},
        // Tests and the demo rely on this spelling giving the fixed root.
        {nullptr, "C:/Users/Public", MV::GoZPaths::kFixedPixologicRoot},
    };
    for (const auto& c : cases) {
        CEnvironmentGuard environment;
        environment.Unset("Public");
        for (const auto& variable : {std::make_pair("public", c.lower), std::make_pair("PUBLIC", c.upper)}) {
            variable.second != nullptr ? environment.Set(variable.first, variable.second)
                                       : environment.Unset(variable.first);
        }
        EXPECT_EQ(MV::GoZPaths::PixologicRoot().toStdString(), c.root)
            << (c.lower != nullptr ? c.lower : "(unset)") << " / " << (c.upper != nullptr ? c.upper : "(unset)");
    }
}

} // namespace
