#pragma once

#include "CZBrushToFMMeshInfo.h"
#include "QVArrayList.h"
#include "QVResult.h"

#include <cstdint>
#include <functional>
#include <string>

class CMiravaInterface;
class QString;
class QWidget;

namespace MV {

class CGoZReturnReader;
class CReceiveRecordBuilder;

// Decides whether returned GoZ meshes are an expression of the avatar being edited and
// matches them to its face meshes. No widgets: the dialog passes itself as the parent of
// the messages.
class CExpressionMatcher
{
public:
    // What the checks made of a return, in the order they are made.
    enum class EVerdict
    {
        NotExpression,   // neither editing nor an expression: the receive dialog's
        NotInEditMode,   // an expression, but no blend shape is being edited
        NoExpressionGoZ, // editing, but the meshes are no expression
        NoMatch,         // the face meshes did not all come back
        Accepted,
    };

    // Lists the base names of the returned motions.
    using CMotionLister = std::function<QV::Result(QV::CArrayList<std::wstring>&)>;

    // Node types of an avatar's face meshes, in the order they are gathered.
    static const int kFaceNodeTypes[4];
    static constexpr int kTeethNodeType = 36;
    static constexpr std::int64_t kNoTarget = -1;

    CExpressionMatcher(CMiravaInterface* host, const CGoZReturnReader& reader, CReceiveRecordBuilder& builder);

    // Where the motion names come from; the reader's project folder unless replaced.
    void SetMotionLister(CMotionLister lister) { m_fnListMotions = std::move(lister); }

    bool IsInBlendShapeEditingMode() const;
    // True when a record that has candidates is named like a returned motion, or when the
    // motions can't be listed. Sets the expression name (empty in the second case).
    bool CheckIsExpressionGoZ(const CZBrushToFMMeshInfoList& infos);
    const std::wstring& ExpressionName() const { return m_strExpressionName; }

    // The mesh names of the avatar's children of node types 35, 49, 50 and 36, in that order.
    QV::Result GetAvatarMeshName(QV::CHandle* avatar, QV::CArrayList<std::wstring>& names) const;
    // Chooses, per record, its first candidate that is a face mesh; true when as many records
    // matched as the avatar has face meshes. Otherwise a message with parent as its parent.
    bool CheckAvatarMeshMatch(QV::CHandle* avatar, CZBrushToFMMeshInfoList& infos, QWidget* parent) const;
    // The avatar's first child of node type 36; null when it has none.
    QV::CHandle* GetAvatarTeeth(QV::CHandle* avatar) const;
    QV::Result InitialAvatarPartMeshName();

    // The teeth go out as the avatar's extra part meshes and come back under those names.
    // Reads the returned list a second time, takes the teeth's files out of files and puts
    // one entry named after the teeth mesh in their place, so that the teeth make one record
    // that matches the teeth mesh. Without teeth, or when none of theirs came back, files stays.
    QV::Result GatherTeethReturn(QV::CHandle* avatar, QV::CArrayList<std::wstring>& files, std::wstring& teethMeshName,
                                 QV::CArrayList<std::wstring>& teethFiles) const;

    // Runs the checks on the records of a return from the avatar being edited, shows the
    // message of a failed check, and on success settles the records' targets. Result 1 for
    // the first three verdicts, else 0 or a failure.
    QV::Result CheckReturn(QV::CHandle* avatar, CZBrushToFMMeshInfoList& infos, QWidget* parent, EVerdict& verdict);

    // True when part occurs in text (case-sensitive); an empty part always does.
    static bool Contain(const std::wstring& text, const std::wstring& part);
    // Each path whose base name contains a name, once per name it contains.
    static QV::Result GetGozFilePathCandidate(QV::CArrayList<std::wstring> paths, QV::CArrayList<std::wstring> names,
                                              QV::CArrayList<std::wstring>& candidates);
    // Erases the first entry equal to path; a path not in the list is no failure.
    static QV::Result RemoveGozFilePathNoUsedToDisplay(std::wstring path, QV::CArrayList<std::wstring>& paths);
    // Update records that aim at the same target: the earlier keeps it, each later one moves
    // to its first candidate nobody else aims at, or to no target.
    static QV::Result CheckUpdateGozTargetObject(CZBrushToFMMeshInfoList& infos);
    // False when an Update record has no target.
    static bool CheckUiStateCanGoz(const CZBrushToFMMeshInfoList& infos);

    // The scene-mesh position a record's candidate selects; kNoTarget when it selects none.
    static std::int64_t CandidateTarget(const CZBrushToFMMeshInfo& info, int candidate);
    // The scene mesh a record's chosen candidate selects; null when it has no target.
    static QV::CHandle* TargetMesh(const CZBrushToFMMeshInfo& info);

private:
    void ShowMessage(const QString& text, QWidget* parent) const;

    CMiravaInterface* m_pHost;
    const CGoZReturnReader& m_rReader;
    CReceiveRecordBuilder& m_rBuilder;
    CMotionLister m_fnListMotions;
    std::wstring m_strExpressionName;
};

} // namespace MV
