#pragma once

#include "CMiravaInterface.h"

namespace MV {
namespace Host {

class CHostContext;

// User-interface operations of the reference host. Message boxes are recorded, never shown:
// the host runs headless and answers with queued buttons.
class CReferenceUiService : public CUiService
{
public:
    explicit CReferenceUiService(CHostContext& context);
    ~CReferenceUiService() override;

    // Answers with the first queued button, else with Ok.
    int ShowMessageBox(const QString& text, const QString& title, QWidget* parent, int kind, int buttons,
                       int defaultButton) override;
    void SelectObjects(QV::Result& result, const QV::CArrayList<QV::CHandle*>& list, int a, int b) override;
    bool ReadyForCommand(int a, int b) override;
    void RecordUsageStep(QV::Result& result, const QString& tag, const std::wstring& text, int id) override;
    void RefreshView(QV::Result& result, int flag) override;
    // The scene's "language"; an injected failure answers "" (no translation).
    QString GetLanguage() override;

private:
    CHostContext& m_rContext;
};

} // namespace Host
} // namespace MV
