#pragma once

#include <QDir>
#include <QSet>
#include <QString>
#include <QVector>

namespace MV {

// The files a Relink send replaces are moved aside instead of deleted, so that a send that
// fails before the object list is rewritten can put back exactly what ZBrush's list names.
// Once the new list is written the moved files are deleted.
class CRelinkSetAside
{
public:
    explicit CRelinkSetAside(const QString& projectFolder);
    ~CRelinkSetAside();

    CRelinkSetAside(const CRelinkSetAside&) = delete;
    CRelinkSetAside& operator=(const CRelinkSetAside&) = delete;

    // Takes fileName out of the project folder. A name taken earlier in this run now holds
    // this run's own export, which is simply deleted: the original stays set aside.
    void Take(const QString& fileName);
    // Puts every taken file back in place of whatever this run wrote there.
    void Restore();
    // Deletes the taken files: the exchange now points at the new ones.
    void Discard();
    bool IsEmpty() const { return m_kTaken.isEmpty(); }

    // Folder inside the project folder; a folder, so the dialog's file list never sees it.
    static QString FolderName();

private:
    QString AsidePath(const QString& fileName) const;
    void RemoveFolderIfEmpty();

    QDir m_kProject;
    QVector<QString> m_kTaken;
    QSet<QString> m_kSeen;
};

} // namespace MV
