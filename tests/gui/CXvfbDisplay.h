#pragma once

#include <string>

#include <sys/types.h>

namespace MV {
namespace Test {

// A private X server for window tests: Xvfb picks a free display number itself and tells it
// through a pipe (-displayfd), so parallel runs never collide. Stopped on destruction.
class CXvfbDisplay
{
public:
    CXvfbDisplay() = default;
    ~CXvfbDisplay();
    CXvfbDisplay(const CXvfbDisplay&) = delete;
    CXvfbDisplay& operator=(const CXvfbDisplay&) = delete;

    // screen: "WIDTHxHEIGHTxDEPTH". On failure error says why and nothing is left running.
    bool Start(const std::string& screen, std::string& error);
    // ":<n>", for DISPLAY.
    const std::string& Name() const { return m_strName; }

private:
    void Stop();

    pid_t m_iPid = -1;
    std::string m_strName;
};

} // namespace Test
} // namespace MV
