#include "GoZPaths.h"

#include "Platform.h"

#include <QProcessEnvironment>

#include <string>

namespace MV {
namespace GoZPaths {

QString PixologicRoot()
{
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QString publicFolder = environment.value(QStringLiteral("public"), QStringLiteral("C:\\users\\public"));
    // Windows names are case-insensitive, so "public" finds PUBLIC there. QProcessEnvironment
    // is case-sensitive elsewhere; ask the platform layer so PUBLIC=... works on Linux too.
    if (!environment.contains(QStringLiteral("public"))) {
        std::wstring value;
        if (Platform::GetEnvironmentValue(L"public", value)) {
            publicFolder = QString::fromStdWString(value);
        }
    }
    return publicFolder + QStringLiteral("/Pixologic/");
}

} // namespace GoZPaths
} // namespace MV
