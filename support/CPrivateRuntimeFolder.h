#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace MV {

// Qt warns without a runtime folder and falls back to a shared one in /tmp that outlives the
// program: when none is set, a program makes its own and removes it at exit. Create it
// before the application object and keep it until after.
class CPrivateRuntimeFolder
{
public:
    CPrivateRuntimeFolder()
    {
        if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
            return;
        }
        m_pFolder = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/mvgoz-runtime-XXXXXX"));
        if (m_pFolder->isValid()) {
            qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_pFolder->path()));
        }
    }
    ~CPrivateRuntimeFolder()
    {
        if (m_pFolder && m_pFolder->isValid()) {
            qunsetenv("XDG_RUNTIME_DIR");
        }
    }

    CPrivateRuntimeFolder(const CPrivateRuntimeFolder&) = delete;
    CPrivateRuntimeFolder& operator=(const CPrivateRuntimeFolder&) = delete;

private:
    std::unique_ptr<QTemporaryDir> m_pFolder;
};

} // namespace MV
