#include "CPrivateRuntimeFolder.h"

#include <QApplication>
#include <QFont>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// A private X server: Xvfb picks a free display number itself and tells it through a pipe
// (-displayfd), so parallel runs never collide. Returns ":<n>", or "" when none started.
std::string StartXvfb(pid_t& pid)
{
    int fds[2];
    if (pipe(fds) != 0 || (pid = fork()) < 0) {
        return std::string();
    }
    if (pid == 0) {
        close(fds[0]);
        // Its own process group, so a signal to the test's group does not reach it first.
        setpgid(0, 0);
        execlp("Xvfb", "Xvfb", "-displayfd", std::to_string(fds[1]).c_str(), "-screen", "0", "1600x1000x24",
               "-nolisten", "tcp", "-noreset", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(fds[1]);
    // One line with the display number once it accepts clients; nothing when Xvfb failed.
    char number[32] = {};
    FILE* in = fdopen(fds[0], "r");
    const bool told = in != nullptr && fgets(number, sizeof number, in) != nullptr && number[0] != '\n';
    if (in != nullptr) {
        fclose(in);
    }
    return told ? ":" + std::string(number, strcspn(number, "\n")) : std::string();
}

} // namespace

// Window tests run on a real X server of their own, started here, never on the user's display.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    const MV::CPrivateRuntimeFolder runtime; // outlives the application
    pid_t xvfb = -1;
    const std::string display = StartXvfb(xvfb);
    int result = 1;
    if (display.empty()) {
        std::fprintf(stderr, "window tests: no private X server (is Xvfb installed? Debian package xvfb)\n");
    } else {
        qputenv("DISPLAY", QByteArray::fromStdString(display));
        qputenv("QT_QPA_PLATFORM", "xcb");
        std::printf("window tests: X server on display %s\n", display.c_str());
        QApplication app(argc, argv);
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
        result = RUN_ALL_TESTS();
    }
    if (xvfb > 0) {
        kill(xvfb, SIGTERM);
        waitpid(xvfb, nullptr, 0);
    }
    return result;
}
