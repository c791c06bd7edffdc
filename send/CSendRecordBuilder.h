#pragma once

#include "CFMToZBrushMeshInfo.h"

#include <QStringList>

class CMiravaInterface;

namespace MV {

// Turns picked objects into send records and decides which actions each record offers.
class CSendRecordBuilder
{
public:
    explicit CSendRecordBuilder(CMiravaInterface* host);

    // Appends one record per mesh object under the pick, each with (Create, None) selected.
    QV::Result BuildMeshInfo(QV::CHandle* pick, CFMToZBrushMeshInfoList& meshInfo) const;
    // Flags the records whose first object is the current character's teeth mesh.
    QV::Result MarkTeethMesh(CFMToZBrushMeshInfoList& meshInfo) const;
    // Relink for meshes sent before, renaming for equal names, Skip for meshes ZBrush can't take.
    QV::Result SetGozActionInfo(CFMToZBrushMeshInfoList& meshInfo, const QStringList& gozFileList) const;

    // Names of the plain files in a folder; empty when the folder does not exist.
    static QStringList ListProjectFiles(const QString& folder);

private:
    void ListMeshes(QV::CHandle* object, int nodeType, QV::CArrayList<QV::CHandle*>& meshes) const;

    CMiravaInterface* m_pHost;
};

} // namespace MV
