#include "CPrivateRuntimeFolder.h"
#include "CXvfbDisplay.h"

#include <QApplication>
#include <QFont>

#include <gtest/gtest.h>

#include <cstdio>

// Window tests run on a real X server of their own, started here, never on the user's display.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    const MV::CPrivateRuntimeFolder runtime; // outlives the application
    MV::Test::CXvfbDisplay display;
    std::string error;
    if (!display.Start("1600x1000x24", error)) {
        std::fprintf(stderr, "window tests: cannot start a private X server: %s\n", error.c_str());
        return 1;
    }
    qputenv("DISPLAY", QByteArray::fromStdString(display.Name()));
    qputenv("QT_QPA_PLATFORM", "xcb");
    std::printf("window tests: X server on display %s\n", display.Name().c_str());
    int result = 1;
    {
        QApplication app(argc, argv);
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
        result = RUN_ALL_TESTS();
    }
    return result;
}
