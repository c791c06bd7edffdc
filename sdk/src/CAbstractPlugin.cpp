#include "CAbstractPlugin.h"

#include <QDebug>
#include <QFileInfo>
#include <QResource>

CAbstractPlugin::CAbstractPlugin() = default;

CAbstractPlugin::~CAbstractPlugin()
{
    // A host may load the module again later; leave no stale resource tree behind.
    if (!m_strResourcePath.isEmpty()) {
        QResource::unregisterResource(m_strResourcePath);
    }
}

QV::Result CAbstractPlugin::InitResource(const QString& pluginFolder, const QString& rccName,
                                         const QString& secondPath, CMiravaInterface* host)
{
    Q_UNUSED(secondPath);
    if (host == nullptr) {
        return QV::kInvalidArg;
    }
    m_pHost = host;
    const QString path = pluginFolder + rccName;
    if (m_strResourcePath == path) {
        return QV::kOk;
    }
    if (!QFileInfo(path).isFile() || !QResource::registerResource(path)) {
        qWarning().noquote() << "Cannot register resource file" << path;
        return QV::kFail;
    }
    m_strResourcePath = path;
    return QV::kOk;
}
