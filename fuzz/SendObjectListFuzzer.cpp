#include "CGoZSendPipeline.h"
#include "FuzzQt.h"
#include "FuzzSupport.h"
#include "GoZPaths.h"

#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <string>

using namespace MV::Fuzz;

namespace {

const std::string& ListPath()
{
    static const std::string s_strPath = [] {
        SilenceQt();
        EnterSandbox();
        const std::string folder = std::string(MV::GoZPaths::kFixedPixologicRoot) + MV::GoZPaths::kFigmoraApp;
        Check(MakeFolders(folder), "the GoZ application folder can be made");
        Check(WriteFile(folder + "GoZ_Info.txt", "GOZ_OBJECT_LIST = GoZ_ObjectList.txt\r\n"),
              "the information file can be written");
        return folder + "GoZ_ObjectList.txt";
    }();
    return s_strPath;
}

} // namespace

// Input: the previous object list, as the send side reads it back to tell which meshes it
// already sent. Every word comes back whole, in order, as "<word>.GoZ".
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string list(reinterpret_cast<const char*>(data), size);
    Check(WriteFile(ListPath(), list), "the object list can be written");

    MV::CGoZSendPipeline pipeline(nullptr, QString::fromLatin1(MV::GoZPaths::kFixedPixologicRoot));
    QV::Result result = QV::kFail;
    QStringList files;
    pipeline.ReadPreviousObjectList(result, files);
    Check(result == QV::kOk, "a readable object list reads");

    const std::vector<std::string> words = Words(list);
    Check(files.size() == static_cast<int>(words.size()), "one file name a word");
    for (int i = 0; i < files.size(); ++i) {
        const std::string& word = words[static_cast<std::size_t>(i)];
        Check(files.at(i) == QString::fromLatin1(word.data(), static_cast<int>(word.size())) + QStringLiteral(".GoZ"),
              "each word comes back whole, as a Latin-1 name with \".GoZ\"");
    }
    return 0;
}
