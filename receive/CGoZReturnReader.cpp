#include "CGoZReturnReader.h"

#include "GoZPaths.h"
#include "KeyValueFile.h"
#include "Platform.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

namespace MV {

namespace {

constexpr char kInfoFile[] = "GoZ_Info.txt";
constexpr char kObjectListKey[] = "GOZ_OBJECT_LIST";
constexpr char kGoZSuffix[] = ".GoZ";
constexpr char kMotionSuffix[] = "mvMotionPlus";

// White space as "%s" sees it in the C locale.
bool IsSeparator(unsigned char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

} // namespace

// The returned files are always looked for below the fixed public path, never below the
// computed Pixologic root: that is where ZBrush writes them back. Deliberate.
CGoZReturnReader::CGoZReturnReader()
    : m_strApplicationFolder(std::string(GoZPaths::kFixedPixologicRoot) + GoZPaths::kFigmoraApp),
      m_strProjectFolder(std::string(GoZPaths::kFixedPixologicRoot) + GoZPaths::kProjectsDefault)
{
}

QV::Result CGoZReturnReader::ReadGoZMesh(QV::CArrayList<std::wstring>& files) const
{
    const std::string infoPath = m_strApplicationFolder + kInfoFile;
    char listName[kMaxListNameBytes + 1] = {};
    if (!GetKeyValue(infoPath.c_str(), kObjectListKey, listName, sizeof(listName))) {
        qDebug() << "Cant' read Object list path";
        return QV::kFail;
    }
    // The value is appended as it stands, without a separator.
    const std::string listPath = m_strApplicationFolder + listName;
    std::FILE* list = std::fopen(listPath.c_str(), "r");
    if (list == nullptr) {
        qDebug() << "Can't open object list ...";
        return QV::kFail;
    }
    const QV::Result result = ReadObjectNames(list, files);
    std::fclose(list);
    return result;
}

QV::Result CGoZReturnReader::ReadObjectNames(std::FILE* list, QV::CArrayList<std::wstring>& files)
{
    if (list == nullptr) {
        return QV::kInvalidArg;
    }
    char word[kMaxObjectNameBytes + sizeof(kGoZSuffix)] = {};
    std::size_t length = 0;
    bool tooLong = false;
    bool hasNul = false;

    const auto finishWord = [&]() -> QV::Result {
        if (length == 0 && !tooLong) {
            return QV::kOk;
        }
        QV::Result result = QV::kOk;
        if (tooLong) {
            qDebug().noquote() << "Skipping an object name longer than" << kMaxObjectNameBytes
                               << "bytes:" << QString::fromLatin1(word, static_cast<int>(length)) + QStringLiteral("...");
        } else if (hasNul) {
            qDebug() << "Skipping an object name that holds a NUL byte";
        } else {
            const std::string name = std::string(word, length) + kGoZSuffix;
            result = files.Add(Platform::NarrowToWide(name));
        }
        length = 0;
        tooLong = false;
        hasNul = false;
        return result;
    };

    char chunk[65536];
    for (;;) {
        const std::size_t count = std::fread(chunk, 1, sizeof(chunk), list);
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned char c = static_cast<unsigned char>(chunk[i]);
            if (IsSeparator(c)) {
                const QV::Result result = finishWord();
                if (QV::Failed(result)) {
                    return result;
                }
                continue;
            }
            if (length < kMaxObjectNameBytes) {
                word[length++] = static_cast<char>(c);
                hasNul = hasNul || c == 0;
            } else {
                tooLong = true;
            }
        }
        if (count < sizeof(chunk)) {
            break;
        }
    }
    return finishWord();
}

QV::Result CGoZReturnReader::GetGoZRelatedMotionName(QV::CArrayList<std::wstring>& motions) const
{
    const QDir folder(QString::fromLocal8Bit(m_strProjectFolder.c_str()));
    if (!folder.exists()) {
        return QV::kOk;
    }
    // Windows lists dot-files like any other file.
    const QStringList entries = folder.entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Unsorted);
    for (const QString& entry : entries) {
        const int dot = entry.lastIndexOf(QLatin1Char('.'));
        const QString extension = dot < 0 ? QString() : entry.mid(dot + 1);
        if (extension != QLatin1String(kMotionSuffix)) {
            continue;
        }
        const QV::Result result = motions.Add(entry.left(dot).toStdWString());
        if (QV::Failed(result)) {
            return result;
        }
    }
    return QV::kOk;
}

} // namespace MV
