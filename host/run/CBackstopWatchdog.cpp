#include "CBackstopWatchdog.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace MV {
namespace Host {

CBackstopWatchdog::CBackstopWatchdog(int milliseconds, std::string message, int exitCode)
{
    m_kThread = std::thread([this, milliseconds, message, exitCode] {
        std::unique_lock<std::mutex> lock(m_kMutex);
        if (!m_kCondition.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return m_bDisarmed; })) {
            std::fprintf(stderr, "%s\n", message.c_str());
            std::fflush(stderr);
            std::_Exit(exitCode);
        }
    });
}

CBackstopWatchdog::~CBackstopWatchdog()
{
    {
        std::lock_guard<std::mutex> lock(m_kMutex);
        m_bDisarmed = true;
    }
    m_kCondition.notify_all();
    m_kThread.join();
}

} // namespace Host
} // namespace MV
