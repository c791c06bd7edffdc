#include "CGoZStandInFile.h"
#include "FuzzQt.h"
#include "FuzzSupport.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

using namespace MV::Fuzz;
using MV::Host::CGoZMesh;
using MV::Host::CGoZStandInFile;

// Input: a GoZ stand-in file as the stand-ins and the reference host exchange it. A refused
// file leaves the target as it was and says why; an accepted one holds a sound mesh and
// survives writing and reading back, in the file form and in the JSON form.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SilenceQt();
    CGoZStandInFile file;
    file.SetValue(QStringLiteral("before"), QStringLiteral("kept"));
    QString error;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    if (!CGoZStandInFile::Parse(bytes, file, error)) {
        Check(!error.isEmpty(), "a refused file says why");
        Check(file.m_kKeys.size() == 1 && file.Value(QStringLiteral("before")) == QLatin1String("kept")
                  && file.m_kMesh.IsEmpty(),
              "a refused file leaves the target as it was");
        return 0;
    }
    Check(file.m_kMesh.Check().isEmpty(), "an accepted mesh is sound");

    const QByteArray written = file.Write();
    CGoZStandInFile again;
    QString againError;
    Check(CGoZStandInFile::Parse(written, again, againError), "what is written reads back");
    Check(again.m_kKeys == file.m_kKeys && again.m_kMesh == file.m_kMesh, "writing and reading keep the content");
    Check(again.Write() == written, "writing again gives the same bytes");

    CGoZMesh fromJson;
    QString jsonError;
    Check(fromJson.FromJson(file.m_kMesh.ToJson(), jsonError) && fromJson == file.m_kMesh,
          "the JSON form keeps the mesh");
    Check(file.m_kMesh.Summary().value(QStringLiteral("vertices")).toInt() == file.m_kMesh.m_kVertices.size(),
          "the summary counts the vertices");
    return 0;
}
