#pragma once

#include "CZBrushToFMMeshInfo.h"
#include "QVArrayList.h"
#include "QVResult.h"

#include <string>

class CMiravaInterface;

namespace MV {

class CExpressionMatcher;
class CGoZReturnReader;

// What the expression dialog's option boxes say when Import is pressed.
struct CExpressionImportOptions
{
    bool m_bAdjustEyeOcclusion = false; // checked and visible
    bool m_bAdjustTearline = false;     // checked and visible
};

// Applies an expression return to the avatar being edited: the motion, the face meshes,
// the avatar's refresh and conform, and the eye elements.
class CExpressionImporter
{
public:
    static constexpr int kEyeOcclusion = 49;
    static constexpr int kTearLine = 50;
    // The update mode of a mesh while a blend shape is being edited.
    static constexpr int kBlendShapeUpdateMode = 3;
    static constexpr unsigned int kPreparedKind = 19;
    static constexpr unsigned int kConformKind = 4;
    // The host's file kind of an expression motion.
    static constexpr int kExpressionMotionKind = 33;

    CExpressionImporter(CMiravaInterface* host, const CGoZReturnReader& reader, const CExpressionMatcher& matcher);

    // Reads the returned files, loads the motion, updates every record's mesh, then the avatar
    // and the eye elements. The first failing step ends it with its result, later records
    // untouched; eye elements made before a failure are announced all the same.
    QV::Result Import(const CZBrushToFMMeshInfoList& records, const std::wstring& expressionName,
                      const CExpressionImportOptions& options);

    // Tells the host an expression motion comes and loads "<name>.mvMotionPlus" from the
    // project folder. Always success: a missing motion does not stop the meshes.
    QV::Result ImportMotion(const std::wstring& expressionName);
    // The avatar's conform, then a reset of the runtime controllers the objects are bound to.
    QV::Result RebuildConform(QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& objects);

    const QV::CArrayList<QV::CHandle*>& UpdatedObjects() const { return m_kUpdated; }
    const QV::CArrayList<QV::CHandle*>& AddedObjects() const { return m_kAdded; }

    // "C:/Users/Public/Pixologic/GoZProjects/Default/<name>.mvMotionPlus".
    static std::wstring MotionPath(const std::wstring& expressionName);

private:
    QV::Result UpdateMeshes(QV::CHandle* avatar, const CZBrushToFMMeshInfoList& records,
                            const QV::CArrayList<std::wstring>& files);
    QV::Result UpdateMesh(const CZBrushToFMMeshInfo& record, const std::wstring& file, int mode);
    QV::Result UpdateAvatar(QV::CHandle* avatar);
    QV::Result AdjustEyeElement(QV::CHandle* avatar, int nodeType);
    // Announces the eye elements made so far, then passes the outcome on.
    QV::Result Finish(QV::Result outcome);

    CMiravaInterface* m_pHost;
    const CGoZReturnReader& m_rReader;
    const CExpressionMatcher& m_rMatcher;
    QV::CArrayList<QV::CHandle*> m_kUpdated;
    QV::CArrayList<QV::CHandle*> m_kAdded;
};

} // namespace MV
