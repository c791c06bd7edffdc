#include "CRelinkSetAside.h"

#include <QDebug>
#include <QFileInfo>
#include <QFile>

namespace MV {

CRelinkSetAside::CRelinkSetAside(const QString& projectFolder) : m_kProject(projectFolder) {}

CRelinkSetAside::~CRelinkSetAside()
{
    // A run abandoned half way leaves ZBrush's list pointing at the old files.
    Restore();
}

QString CRelinkSetAside::FolderName()
{
    return QStringLiteral(".mvgoz-relink");
}

QString CRelinkSetAside::AsidePath(const QString& fileName) const
{
    return m_kProject.filePath(FolderName() + QLatin1Char('/') + fileName);
}

void CRelinkSetAside::Take(const QString& fileName)
{
    const QString original = m_kProject.filePath(fileName);
    if (m_kSeen.contains(fileName)) {
        QFile::remove(original);
        return;
    }
    m_kSeen.insert(fileName);
    if (!QFileInfo::exists(original)) {
        return;
    }
    const QString aside = AsidePath(fileName);
    if (!m_kProject.mkpath(FolderName())) {
        qDebug().noquote() << "Can't set aside" << original << "- it is replaced without a copy";
        QFile::remove(original);
        return;
    }
    // A copy left by a run that never finished is older than the file in place.
    QFile::remove(aside);
    if (!QFile::rename(original, aside)) {
        qDebug().noquote() << "Can't set aside" << original << "- it is replaced without a copy";
        QFile::remove(original);
        return;
    }
    m_kTaken.append(fileName);
}

void CRelinkSetAside::Restore()
{
    for (const QString& fileName : m_kTaken) {
        const QString original = m_kProject.filePath(fileName);
        QFile::remove(original);
        if (!QFile::rename(AsidePath(fileName), original)) {
            qDebug().noquote() << "Can't put back" << original;
        }
    }
    m_kTaken.clear();
    m_kSeen.clear();
    RemoveFolderIfEmpty();
}

void CRelinkSetAside::Discard()
{
    for (const QString& fileName : m_kTaken) {
        QFile::remove(AsidePath(fileName));
    }
    m_kTaken.clear();
    m_kSeen.clear();
    RemoveFolderIfEmpty();
}

void CRelinkSetAside::RemoveFolderIfEmpty()
{
    // rmdir refuses a folder that still holds something, which is what we want.
    m_kProject.rmdir(FolderName());
}

} // namespace MV
