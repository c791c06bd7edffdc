#include "CFMToZBrushMeshInfo.h"

#include <QCoreApplication>

#include <new>

namespace MV {

QV::Result CFMToZBrushMeshInfo::SetActiveAction(std::size_t action, std::size_t info)
{
    for (ActionPair& pair : m_kActionMap) {
        if (pair.first == action) {
            pair.second = info;
            return QV::kOk;
        }
    }
    try {
        m_kActionMap.emplace_back(action, info);
    } catch (const std::bad_alloc&) {
        return QV::kOutOfMemory;
    }
    return QV::kOk;
}

void CFMToZBrushMeshInfo::SelectAction(std::size_t action)
{
    for (std::size_t i = m_kActionMap.size(); i > 0; --i) {
        if (m_kActionMap[i - 1].first == action) {
            m_iActionMapIndex = static_cast<int>(i - 1);
            return;
        }
    }
}

bool CFMToZBrushMeshInfo::HasAction(std::size_t action) const
{
    for (const ActionPair& pair : m_kActionMap) {
        if (pair.first == action) {
            return true;
        }
    }
    return false;
}

std::size_t CFMToZBrushMeshInfo::ActiveAction() const
{
    if (m_iActionMapIndex < 0 || static_cast<std::size_t>(m_iActionMapIndex) >= m_kActionMap.size()) {
        return Create;
    }
    return m_kActionMap[static_cast<std::size_t>(m_iActionMapIndex)].first;
}

std::size_t CFMToZBrushMeshInfo::ActiveInfo() const
{
    if (m_iActionMapIndex < 0 || static_cast<std::size_t>(m_iActionMapIndex) >= m_kActionMap.size()) {
        return NoInfo;
    }
    return m_kActionMap[static_cast<std::size_t>(m_iActionMapIndex)].second;
}

bool CFMToZBrushMeshInfo::IsCheckable() const
{
    const std::size_t action = ActiveAction();
    const std::size_t info = ActiveInfo();
    if (action == Create && info == NoInfo) {
        return false;
    }
    return info != SameNameMesh;
}

namespace {

// The texts are marked with QT_TRANSLATE_NOOP where they stand so that lupdate finds them.
std::wstring Translate(const char* text)
{
    return QCoreApplication::translate("MV::FMToZBrushDlg", text).toStdWString();
}

} // namespace

const std::vector<std::wstring>& GozExportActionTexts()
{
    static const std::vector<std::wstring> texts = {
        Translate(QT_TRANSLATE_NOOP("MV::FMToZBrushDlg", "[MVGoZBursh] Create")),
        Translate(QT_TRANSLATE_NOOP("MV::FMToZBrushDlg", "[MVGoZBursh] Relink")),
        Translate(QT_TRANSLATE_NOOP("MV::FMToZBrushDlg", "[MVGoZBursh] Skip")),
    };
    return texts;
}

const std::vector<std::wstring>& GozExportActionInfoTexts()
{
    static const std::vector<std::wstring> texts = {
        std::wstring(),
        Translate(QT_TRANSLATE_NOOP("MV::FMToZBrushDlg", "[MVGoZBursh] It will auto rename.")),
        Translate(QT_TRANSLATE_NOOP("MV::FMToZBrushDlg",
                                    "[MVGoZBursh] This content has some name mesh. It will auto rename.")),
        Translate(QT_TRANSLATE_NOOP("MV::FMToZBrushDlg",
                                    "[MVGoZBursh] Mesh contain polygon that side of numbers more than 4, goz does not support.")),
        Translate(QT_TRANSLATE_NOOP("MV::FMToZBrushDlg",
                                    "[MVGoZBursh] Mesh name has characters that GoZ can not carry. Rename the mesh to send it.")),
    };
    return texts;
}

std::wstring GozExportActionText(std::size_t action)
{
    const auto& texts = GozExportActionTexts();
    return action < texts.size() ? texts[action] : std::wstring();
}

std::wstring GozExportActionInfoText(std::size_t info)
{
    const auto& texts = GozExportActionInfoTexts();
    return info < texts.size() ? texts[info] : std::wstring();
}

} // namespace MV
