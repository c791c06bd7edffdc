#include "CReceiveRecordBuilder.h"
#include "FuzzQt.h"
#include "FuzzSupport.h"
#include "QVProfile.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <vector>

using namespace MV::Fuzz;

// Input: GoZTextureSize.ini as the host data folder holds it. A read that succeeds gives the
// positive sizes of Size0 .. Size<Count - 1>, in that order, and nothing else.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SilenceQt();
    QV::CProfile profile;
    Check(profile.Parse(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size))) == QV::kOk,
          "any bytes parse as settings");

    std::vector<std::int32_t> sizes{-1};
    const QV::Result result = MV::CReceiveRecordBuilder::ReadTextureSizes(profile, sizes);
    if (QV::Failed(result)) {
        return 0;
    }
    const QString section = QStringLiteral("GoZTextureSize");
    int count = 0;
    Check(profile.ReadInt(section, QStringLiteral("Count"), count) == QV::kOk, "a successful read had a Count");
    std::vector<std::int32_t> expected;
    // Every SizeN below Count was there, or the read would have failed: the loop is bounded
    // by the input.
    for (int i = 0; i < count; ++i) {
        int value = 0;
        Check(profile.ReadInt(section, QStringLiteral("Size%1").arg(i), value) == QV::kOk,
              "a successful read had every size below Count");
        if (value >= 1) {
            expected.push_back(value);
        }
    }
    Check(sizes == expected, "the positive sizes, in order, replace what the list held");
    return 0;
}
