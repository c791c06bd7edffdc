#include "DoctorJson.h"

#include "DoctorStrings.h"

#include <string>
#include <vector>

namespace MV {
namespace Doctor {

namespace {

// Writes nested objects and arrays with two-space indents; commas and line ends are its business.
class CJsonWriter
{
public:
    void Open(const char* key, char bracket)
    {
        Key(key);
        m_strOut.push_back(bracket);
        m_kFirst.push_back(true);
    }

    void Close(char bracket)
    {
        const bool empty = m_kFirst.back();
        m_kFirst.pop_back();
        if (!empty) {
            m_strOut.push_back('\n');
            Indent();
        }
        m_strOut.push_back(bracket);
    }

    void Raw(const char* key, const std::string& json)
    {
        Key(key);
        m_strOut += json;
    }

    void String(const char* key, const std::string& text) { Raw(key, JsonQuote(text)); }
    void Number(const char* key, unsigned long long value) { Raw(key, std::to_string(value)); }
    void Signed(const char* key, long value) { Raw(key, std::to_string(value)); }
    void Bool(const char* key, bool value) { Raw(key, value ? "true" : "false"); }
    void Null(const char* key) { Raw(key, "null"); }

    std::string Text() const { return m_strOut + "\n"; }

private:
    // key is null inside arrays and for the outermost object.
    void Key(const char* key)
    {
        if (!m_kFirst.empty()) {
            m_strOut += m_kFirst.back() ? "\n" : ",\n";
            m_kFirst.back() = false;
            Indent();
        }
        if (key != nullptr) {
            m_strOut += JsonQuote(key) + ": ";
        }
    }

    void Indent() { m_strOut.append(m_kFirst.size() * 2, ' '); }

    std::string m_strOut;
    std::vector<bool> m_kFirst;
};

void EntryFields(CJsonWriter& out, const CEntry& entry)
{
    out.String("path", entry.m_strPath);
    out.String("kind", KindWord(entry.m_eKind));
}

void Entry(CJsonWriter& out, const char* key, const CEntry& entry)
{
    out.Open(key, '{');
    EntryFields(out, entry);
    out.Close('}');
}

void Key(CJsonWriter& out, const char* name, const CKeyFinding& key)
{
    out.Open(name, '{');
    out.Bool("found", key.m_bFound);
    if (key.m_bFound) {
        out.String("value", key.m_strValue);
    } else {
        out.Null("value");
    }
    out.Number("valueBytes", key.m_nValueBytes);
    if (key.m_bHasTarget) {
        Entry(out, "target", key.m_kTarget);
    } else {
        out.Null("target");
    }
    out.Close('}');
}

void Where(CJsonWriter& out, const CDoctorFindings& f)
{
    out.Open("publicFolder", '{');
    out.String("path", f.m_strPublicFolder);
    out.String("source", SourceWord(f.m_ePublicSource));
    if (f.m_ePublicSource == EPublicSource::Variable) {
        out.String("variable", f.m_strPublicVariable);
    } else {
        out.Null("variable");
    }
    out.Close('}');
    Entry(out, "pixologicRoot", f.m_kRoot);
    out.Open("returnRoot", '{');
    EntryFields(out, f.m_kReturnRoot);
    out.String("sameAsRoot", CheckWord(f.m_eReturnRootSame));
    out.Close('}');
    out.Open("zbrush", '{');
    Entry(out, "fromApp", f.m_kZBrushFromApp);
    out.Close('}');
}

void ApplicationFolder(CJsonWriter& out, const CDoctorFindings& f)
{
    out.Open("applicationFolder", '{');
    EntryFields(out, f.m_kAppFolder);

    out.Open("launcher", '{');
    EntryFields(out, f.m_kLauncher);
    if (f.m_bLauncherTimeKnown) {
        out.String("modified", f.m_strLauncherTime);
    } else {
        out.Null("modified");
    }
    out.Bool("stale", f.m_bLauncherStale);
    out.Close('}');

    out.Open("config", '{');
    EntryFields(out, f.m_kConfig);
    out.String("read", ReadWord(f.m_eConfigRead));
    out.String("writable", CheckWord(f.m_eConfigWritable));
    Key(out, "PATH", f.m_kConfigPath);
    out.Close('}');

    out.Open("info", '{');
    EntryFields(out, f.m_kInfo);
    out.String("read", ReadWord(f.m_eInfoRead));
    out.Open("keys", '{');
    for (const CKeyFinding& key : f.m_kInfoKeys) {
        Key(out, key.m_strKey.c_str(), key);
    }
    out.Close('}');
    out.Close('}');

    out.Close('}');
}

void Registry(CJsonWriter& out, const CDoctorFindings& f)
{
    out.Open("registry", '{');
    out.String("key", "HKEY_LOCAL_MACHINE\\" + f.m_strRegistryKey);
    out.String("value", f.m_strRegistryValueName);
    out.Signed("result", f.m_nRegistryResult);
    if (f.m_nRegistryResult == 0) {
        out.String("data", f.m_strRegistryData);
        out.Bool("fitsConfig", f.m_bRegistryFitsConfig);
        Entry(out, "program", f.m_kRegistryProgram);
    } else {
        out.Null("data");
        out.Null("fitsConfig");
        out.Null("program");
    }
    out.Close('}');
}

void Folders(CJsonWriter& out, const CDoctorFindings& f)
{
    out.Open("folders", '[');
    for (const CFolderAccess& folder : f.m_kFolders) {
        out.Open(nullptr, '{');
        out.String("name", folder.m_strName);
        EntryFields(out, folder.m_kFolder);
        out.String("userWritable", CheckWord(folder.m_eUser));
        out.String("everyoneWritable", CheckWord(folder.m_eEveryone));
        out.String("detail", folder.m_strUserDetail.empty() ? folder.m_strEveryoneDetail : folder.m_strUserDetail);
        out.Close('}');
    }
    out.Close(']');
}

void Exchange(CJsonWriter& out, const CDoctorFindings& f)
{
    out.Open("lastExchange", '{');
    Entry(out, "projects", f.m_kProjects);
    if (f.m_eObjectListRead == EReadState::NotTried) {
        out.Null("objectList");
    } else {
        Entry(out, "objectList", f.m_kObjectList);
    }
    out.String("read", ReadWord(f.m_eObjectListRead));
    out.String("writable", CheckWord(f.m_eObjectListWritable));
    out.Number("listed", f.m_nListedNames);
    out.Number("found", f.m_nFoundNames);
    out.Number("missing", f.m_nMissingNames);
    out.Number("skipped", f.m_nSkippedNames);
    out.Number("projectFiles", f.m_nProjectFiles);
    out.Number("unlistedFiles", f.m_nUnlistedFiles);
    out.Open("missingNames", '[');
    for (const std::string& name : f.m_kMissingNames) {
        out.String(nullptr, name);
    }
    out.Close(']');
    out.Close('}');
}

void Problems(CJsonWriter& out, const CDoctorFindings& f)
{
    out.Open("problems", '[');
    for (const CProblem& problem : f.m_kProblems) {
        out.Open(nullptr, '{');
        out.String("id", problem.m_strId);
        out.String("severity", problem.m_eSeverity == ESeverity::Problem ? "problem" : "warning");
        out.String("text", problem.m_strText);
        out.Close('}');
    }
    out.Close(']');
}

} // namespace

std::string RenderJson(const CDoctorFindings& findings)
{
    CJsonWriter out;
    out.Open(nullptr, '{');
    out.Bool("canRoundTrip", findings.CanRoundTrip());
    out.Number("exitCode", static_cast<unsigned long long>(findings.ExitCode()));
    Where(out, findings);
    ApplicationFolder(out, findings);
    Registry(out, findings);
    Folders(out, findings);
    Exchange(out, findings);
    Problems(out, findings);
    out.Close('}');
    return out.Text();
}

} // namespace Doctor
} // namespace MV
