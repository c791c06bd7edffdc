#include "MiniTest.h"

#include <cstdio>
#include <vector>

namespace MiniTest {

namespace {

struct CRegisteredTest
{
    const char* m_pName;
    TestFunction m_pFunction;
};

std::vector<CRegisteredTest>& Tests()
{
    static std::vector<CRegisteredTest> s_kTests;
    return s_kTests;
}

int g_nPassed = 0;
int g_nFailed = 0;

} // namespace

bool Register(const char* name, TestFunction function)
{
    Tests().push_back({name, function});
    return true;
}

void Check(bool condition, const char* expression, const char* file, int line, const std::string& detail)
{
    if (condition) {
        ++g_nPassed;
        return;
    }
    ++g_nFailed;
    std::printf("  FAILED %s:%d: %s%s%s\n", file, line, expression, detail.empty() ? "" : " -- ", detail.c_str());
}

int RunAll()
{
    for (const CRegisteredTest& test : Tests()) {
        const int failedBefore = g_nFailed;
        test.m_pFunction();
        std::printf("[%s] %s\n", g_nFailed == failedBefore ? "ok" : "FAILED", test.m_pName);
    }
    std::printf("%d passed, %d failed\n", g_nPassed, g_nFailed);
    std::fflush(stdout);
    return (g_nFailed == 0 && g_nPassed > 0) ? 0 : 1;
}

} // namespace MiniTest

int main()
{
    return MiniTest::RunAll();
}
