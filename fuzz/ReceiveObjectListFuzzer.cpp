#include "CGoZReturnReader.h"
#include "FuzzQt.h"
#include "FuzzSupport.h"
#include "GoZPaths.h"

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

std::wstring Latin1(const std::string& bytes)
{
    std::wstring wide;
    for (const char c : bytes) {
        wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    }
    return wide;
}

} // namespace

// Input: the object list ZBrush hands back. Every word that can name a GoZ file comes back
// as "<word>.GoZ" in order; a word too long for the name buffer or holding a NUL byte is
// skipped whole, never cut into another name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string list(reinterpret_cast<const char*>(data), size);
    Check(WriteFile(ListPath(), list), "the object list can be written");

    const MV::CGoZReturnReader reader;
    QV::CArrayList<std::wstring> files;
    Check(reader.ReadGoZMesh(files) == QV::kOk, "a readable object list reads");

    std::vector<std::wstring> expected;
    for (const std::string& word : Words(list)) {
        if (word.size() <= MV::CGoZReturnReader::kMaxObjectNameBytes && word.find('\0') == std::string::npos) {
            expected.push_back(Latin1(word) + L".GoZ");
        }
    }
    Check(files.GetCount() == static_cast<int>(expected.size()), "one file name a word that fits");
    for (int i = 0; i < files.GetCount(); ++i) {
        Check(files[i] == expected[static_cast<std::size_t>(i)], "each fitting word comes back whole, in order");
    }
    return 0;
}
