#include "CPrivateRuntimeFolder.h"

#include <QApplication>
#include <QFont>

#include <gtest/gtest.h>

// Discovery runs this binary during the build, where there is no display.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const MV::CPrivateRuntimeFolder runtime; // outlives the application
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    return RUN_ALL_TESTS();
}
