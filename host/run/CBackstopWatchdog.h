#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace MV {
namespace Host {

// Last resort for a run whose user-interface thread never comes back (plug-in code stuck
// outside any event loop): after the delay it prints the message and ends the process.
class CBackstopWatchdog
{
public:
    CBackstopWatchdog(int milliseconds, std::string message, int exitCode);
    ~CBackstopWatchdog(); // disarms
    CBackstopWatchdog(const CBackstopWatchdog&) = delete;
    CBackstopWatchdog& operator=(const CBackstopWatchdog&) = delete;

private:
    std::mutex m_kMutex;
    std::condition_variable m_kCondition;
    bool m_bDisarmed = false;
    std::thread m_kThread;
};

} // namespace Host
} // namespace MV
