#include "CReferenceUiService.h"

#include "CHostContext.h"

#include <QWidget>

namespace MV {
namespace Host {

using C = CHostContext;

CReferenceUiService::CReferenceUiService(CHostContext& context) : m_rContext(context) {}

CReferenceUiService::~CReferenceUiService() = default;

int CReferenceUiService::ShowMessageBox(const QString& text, const QString& title, QWidget* parent, int kind,
                                        int buttons, int defaultButton)
{
    QV::Result injected = QV::kOk;
    const QString parentName = parent == nullptr ? QStringLiteral("null") : parent->objectName();
    if (m_rContext.Enter("ShowMessageBox",
                         {text, title, parentName, C::Number(kind), C::Number(buttons), C::Number(defaultButton)},
                         injected)) {
        return injected;
    }
    CMessageBoxRecord record;
    record.m_strText = text;
    record.m_strTitle = title;
    record.m_iKind = kind;
    record.m_iButtons = buttons;
    record.m_iDefaultButton = defaultButton;
    record.m_iAnswer = m_rContext.QueuedAnswers().isEmpty() ? kMessageButtonOk : m_rContext.QueuedAnswers().takeFirst();
    m_rContext.MessageBoxes().append(record);
    return record.m_iAnswer;
}

void CReferenceUiService::SelectObjects(QV::Result& result, const QV::CArrayList<QV::CHandle*>& list, int a, int b)
{
    if (m_rContext.Enter("SelectObjects", {m_rContext.Ids(list), C::Number(a), C::Number(b)}, result)) {
        return;
    }
    QStringList ids;
    for (const QV::CHandle* handle : list) {
        const CSceneObject* object = m_rContext.Scene().Find(handle);
        if (object == nullptr) {
            result = QV::kInvalidArg;
            return;
        }
        ids << object->m_strId;
    }
    result = QV::kOk;
    m_rContext.ReplaceSelection(ids);
}

bool CReferenceUiService::ReadyForCommand(int a, int b)
{
    return !m_rContext.Enter("ReadyForCommand", {C::Number(a), C::Number(b)}) &&
           m_rContext.Scene().State().m_bReadyForCommand;
}

void CReferenceUiService::RecordUsageStep(QV::Result& result, const QString& tag, const std::wstring& text, int id)
{
    if (m_rContext.Enter("RecordUsageStep", {tag, C::Text(text), C::Number(id)}, result)) {
        return;
    }
    result = QV::kOk;
}

void CReferenceUiService::RefreshView(QV::Result& result, int flag)
{
    if (m_rContext.Enter("RefreshView", {C::Number(flag)}, result)) {
        return;
    }
    result = QV::kOk;
}

QString CReferenceUiService::GetLanguage()
{
    return m_rContext.Enter("GetLanguage") ? QString() : m_rContext.Scene().State().m_strLanguage;
}

} // namespace Host
} // namespace MV
