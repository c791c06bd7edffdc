#pragma once

#include "QVArrayList.h"
#include "QVResult.h"

#include <cstdio>
#include <string>

namespace MV {

// Finds what ZBrush handed back: the GoZ files named in the returned object list and the
// pose motions beside them. Both receive dialogs hold one of these.
class CGoZReturnReader
{
public:
    // Longest object name the list may hold: the name, ".GoZ" and a terminator fill 100 bytes.
    static constexpr std::size_t kMaxObjectNameBytes = 95;
    // Longest GOZ_OBJECT_LIST value taken from the information file.
    static constexpr int kMaxListNameBytes = 1024;

    CGoZReturnReader();

    // Appends "<name>.GoZ" for every name of the returned object list, in file order.
    QV::Result ReadGoZMesh(QV::CArrayList<std::wstring>& files) const;
    // Appends the base names of the ".mvMotionPlus" files of the GoZ project folder.
    QV::Result GetGoZRelatedMotionName(QV::CArrayList<std::wstring>& motions) const;

    const std::string& ApplicationFolder() const { return m_strApplicationFolder; }
    const std::string& ProjectFolder() const { return m_strProjectFolder; }

    // The names of an open object list, appended as "<name>.GoZ". Words are separated by
    // white space. A word longer than kMaxObjectNameBytes, or holding a NUL byte, is skipped
    // whole with a log line: a cut name would name a GoZ file that does not exist.
    static QV::Result ReadObjectNames(std::FILE* list, QV::CArrayList<std::wstring>& files);

private:
    std::string m_strApplicationFolder;
    std::string m_strProjectFolder;
};

} // namespace MV
