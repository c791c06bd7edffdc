#pragma once

#include <string>

// A very small test harness for the programs cross-compiled for Windows, where GoogleTest
// is not built. Each MINI_TEST runs once; every check counts. The program prints
// "N passed, N failed" and exits non-zero when anything failed.
namespace MiniTest {

using TestFunction = void (*)();

bool Register(const char* name, TestFunction function);
void Check(bool condition, const char* expression, const char* file, int line, const std::string& detail);
int RunAll();

} // namespace MiniTest

#define MINI_TEST(name)                                                                            \
    static void name();                                                                            \
    static const bool name##_registered = MiniTest::Register(#name, &name);                       \
    static void name()

#define MINI_CHECK(condition) MiniTest::Check((condition), #condition, __FILE__, __LINE__, std::string())
#define MINI_CHECK_MSG(condition, detail) MiniTest::Check((condition), #condition, __FILE__, __LINE__, (detail))
