#include "CPrivateRuntimeFolder.h"
#include "CWorkerPool.h"

#include <QApplication>
#include <QFont>

#include <gtest/gtest.h>

#include <cstring>

// The test program, and with "--fault-worker <plan> <results> <i,j,...>" one worker of the
// campaign (CWorkerPool).
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const MV::CPrivateRuntimeFolder runtime; // outlives the application
    if (argc == 5 && std::strcmp(argv[1], "--fault-worker") == 0) {
        int qtArgc = 1;
        QApplication app(qtArgc, argv);
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
        QList<int> indices;
        for (const QString& number : QString::fromLatin1(argv[4]).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            indices.append(number.toInt());
        }
        return MV::Faults::CWorkerPool::Work(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]), indices);
    }
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    return RUN_ALL_TESTS();
}
