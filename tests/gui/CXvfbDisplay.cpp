#include "CXvfbDisplay.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace MV {
namespace Test {

namespace {

constexpr int kStartTimeoutMs = 15000;

} // namespace

CXvfbDisplay::~CXvfbDisplay()
{
    Stop();
}

bool CXvfbDisplay::Start(const std::string& screen, std::string& error)
{
    int pipeFds[2];
    if (pipe(pipeFds) != 0) {
        error = std::string("cannot make a pipe: ") + std::strerror(errno);
        return false;
    }
    const pid_t pid = fork();
    if (pid < 0) {
        error = std::string("cannot fork: ") + std::strerror(errno);
        close(pipeFds[0]);
        close(pipeFds[1]);
        return false;
    }
    if (pid == 0) {
        close(pipeFds[0]);
        const std::string fd = std::to_string(pipeFds[1]);
        // Its own process group, so a signal to the test's group does not reach it first.
        setpgid(0, 0);
        execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen.c_str(), "-nolisten", "tcp",
               "-noreset", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(pipeFds[1]);
    m_iPid = pid;
    std::string number;
    struct pollfd wait = {pipeFds[0], POLLIN, 0};
    while (number.find('\n') == std::string::npos) {
        if (poll(&wait, 1, kStartTimeoutMs) <= 0) {
            break;
        }
        char buffer[32];
        const ssize_t got = read(pipeFds[0], buffer, sizeof buffer);
        if (got <= 0) {
            break;
        }
        number.append(buffer, static_cast<size_t>(got));
    }
    close(pipeFds[0]);
    const size_t end = number.find('\n');
    if (end == std::string::npos || end == 0) {
        int status = 0;
        const bool ended = waitpid(m_iPid, &status, WNOHANG) == m_iPid;
        error = ended && WIFEXITED(status) && WEXITSTATUS(status) == 127
                    ? "Xvfb is not installed (Debian package xvfb; scripts/setup.sh installs it)"
                    : "Xvfb did not report a display within 15 s";
        Stop();
        return false;
    }
    m_strName = ":" + number.substr(0, end);
    return true;
}

void CXvfbDisplay::Stop()
{
    if (m_iPid <= 0) {
        return;
    }
    int status = 0;
    if (waitpid(m_iPid, &status, WNOHANG) == 0) {
        kill(m_iPid, SIGTERM);
        for (int i = 0; i < 100 && waitpid(m_iPid, &status, WNOHANG) == 0; ++i) {
            usleep(20000);
        }
        if (waitpid(m_iPid, &status, WNOHANG) == 0) {
            kill(m_iPid, SIGKILL);
            waitpid(m_iPid, &status, 0);
        }
    }
    m_iPid = -1;
}

} // namespace Test
} // namespace MV
