#pragma once

#include "CZBrushToFMMeshInfo.h"
#include "GoZTypes.h"

#include <string>

class CMiravaInterface;

namespace MV {

class CGoZReturnReader;
class CReceiveRecordBuilder;

// What the receive dialog's option widgets say when Import is pressed.
struct CImportOptions
{
    EGozPoseOption m_ePoseOption = EGozPoseOption::None;
    bool m_bAutoRig = false;            // the auto-rig box is enabled and checked
    bool m_bAdjustEyeOcclusion = false; // the box is checked and visible
    bool m_bAdjustTearline = false;     // the box is checked and visible
    bool m_bBindPose = false;           // the bind-pose button is checked
};

// Applies the receive records to the scene through the host, in two halves around the
// moment the dialog hides: the rows first, then the avatar.
class CGoZImporter
{
public:
    // Node types of the eye elements that are fitted after an import.
    static constexpr int kEyeOcclusion = 49;
    static constexpr int kTearLine = 50;

    CGoZImporter(CMiravaInterface* host, const CGoZReturnReader& reader, const CReceiveRecordBuilder& builder);

    // Reads the returned files again and applies every row in row order; the first failing
    // host call ends it, later rows untouched. Added objects are announced.
    QV::Result ImportRows(const CZBrushToFMMeshInfoList& records, const CImportOptions& options);
    // Rigging or the plain avatar update, the eye elements and the pose reload.
    QV::Result UpdateAvatar(const CImportOptions& options);

    // True in isExpression when the owner name or the mesh name of a row that offers targets
    // equals the base name of a returned motion file.
    static QV::Result CheckIsExpressionGoZ(const CGoZReturnReader& reader, const CZBrushToFMMeshInfoList& records,
                                           bool& isExpression);
    QV::Result RebuildConform(QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& objects);

    QV::CHandle* Avatar() const { return m_pAvatar; }
    const QV::CArrayList<QV::CHandle*>& ImportedObjects() const { return m_kImported; }
    const QV::CArrayList<QV::CHandle*>& AddedObjects() const { return m_kAdded; }

private:
    QV::Result ReloadPose(const CImportOptions& options);

    CMiravaInterface* m_pHost;
    const CGoZReturnReader& m_rReader;
    const CReceiveRecordBuilder& m_rBuilder;
    QV::CHandle* m_pAvatar = nullptr;
    std::wstring m_strAvatarName;
    std::wstring m_strTeethMeshName;
    QV::CArrayList<QV::CHandle*> m_kImported;
    QV::CArrayList<QV::CHandle*> m_kAdded;
};

} // namespace MV
