#include "CPluginInterface.h"

quint32 CPluginInterface::GetCurrentApp()
{
    return m_uCurrentApp;
}

void CPluginInterface::SetCurrentApp(quint32 app)
{
    m_uCurrentApp = app;
}

QV::Result CPluginInterface::RestoreLayout()
{
    return QV::kOk;
}

CPluginInterface::~CPluginInterface() = default;
