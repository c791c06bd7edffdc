// Stand-in for the ZBrush-side GoZ programs. Each run records that it was started, with
// what, and which objects the exchange files offered it, as one JSON line in the process log
// (MVGOZ_PROCESS_LOG, else processes.jsonl beside the program). When the host asks for it
// (MVGOZ_ZBRUSH_RETURN), the program that hands objects to ZBrush also plays ZBrush's way
// back: it "sculpts" the sent meshes, writes the returned .GoZ files and object list, and runs
// the return launcher, which tells the host through its local socket (MVGOZ_HOST_SOCKET).

#include "CGoZStandInFile.h"
#include "CZBrushReturn.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#ifndef MVGOZ_STANDIN_NAME
#define MVGOZ_STANDIN_NAME "GoZStandIn"
#endif
#ifndef MVGOZ_STANDIN_RETURN_LAUNCHER
#define MVGOZ_STANDIN_RETURN_LAUNCHER 0
#endif
// The program that hands the sent objects to ZBrush; it plays ZBrush's return.
#ifndef MVGOZ_STANDIN_ZBRUSH
#define MVGOZ_STANDIN_ZBRUSH 0
#endif

extern char** environ;

using MV::Host::CGoZStandInFile;
using MV::Host::CZBrushReturn;

namespace {

std::string JsonString(const std::string& text)
{
    // Valid UTF-8 passes through; any other byte is written as its Latin-1 character so
    // that the line stays valid JSON whatever the exchange files hold.
    std::string out = "\"";
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const size_t size = text.size();
    size_t i = 0;
    while (i < size) {
        const unsigned char c = bytes[i];
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
            ++i;
            continue;
        }
        if (c < 0x20) {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
            out += buffer;
            ++i;
            continue;
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
            ++i;
            continue;
        }
        size_t length = 0;
        if ((c & 0xE0) == 0xC0 && c >= 0xC2) {
            length = 2;
        } else if ((c & 0xF0) == 0xE0) {
            length = 3;
        } else if ((c & 0xF8) == 0xF0 && c <= 0xF4) {
            length = 4;
        }
        bool valid = length > 0 && i + length <= size;
        for (size_t k = 1; valid && k < length; ++k) {
            valid = (bytes[i + k] & 0xC0) == 0x80;
        }
        if (valid) {
            out.append(text, i, length);
            i += length;
        } else {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
            out += buffer;
            ++i;
        }
    }
    out += '"';
    return out;
}

std::string JsonArray(const std::vector<std::string>& items)
{
    std::string out = "[";
    for (size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            out += ",";
        }
        out += JsonString(items[i]);
    }
    out += "]";
    return out;
}

std::string OwnPath(const char* argv0)
{
    char buffer[4096];
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (length > 0) {
        return std::string(buffer, static_cast<size_t>(length));
    }
    return argv0 != nullptr ? argv0 : "";
}

std::string FolderOf(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

std::string CurrentDirectory()
{
    std::vector<char> buffer(4096);
    while (getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE || buffer.size() > (1u << 20)) {
            return "";
        }
        buffer.resize(buffer.size() * 2);
    }
    return buffer.data();
}

// Environment names are case-insensitive on the system these programs stand in for.
bool FindEnvironment(const char* name, std::string& value)
{
    const size_t nameLength = std::strlen(name);
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const char* text = *entry;
        const char* eq = std::strchr(text, '=');
        if (eq == nullptr || static_cast<size_t>(eq - text) != nameLength) {
            continue;
        }
        if (strncasecmp(text, name, nameLength) == 0) {
            value = eq + 1;
            return true;
        }
    }
    return false;
}

std::string Trim(const std::string& text)
{
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) {
        return "";
    }
    const size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

bool SameKey(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && strncasecmp(a.c_str(), b.c_str(), a.size()) == 0;
}

// "key = value" lines; the key compares without case, a quoted value loses its quotes.
bool ReadKey(const std::string& path, const std::string& key, std::string& value)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::string line;
    while (std::getline(in, line)) {
        const std::string trimmed = Trim(line);
        const size_t eq = trimmed.find('=');
        if (eq == std::string::npos || !SameKey(Trim(trimmed.substr(0, eq)), key)) {
            continue;
        }
        std::string found = Trim(trimmed.substr(eq + 1));
        if (found.size() >= 2 && found.front() == '"' && found.back() == '"') {
            found = found.substr(1, found.size() - 2);
        }
        value = found;
        return true;
    }
    return false;
}

bool ReadLines(const std::string& path, std::vector<std::string>& lines)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty()) {
            lines.push_back(line);
        }
    }
    return true;
}

bool AppendLine(const std::string& path, const std::string& line)
{
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (fd < 0) {
        return false;
    }
    // One write per record: concurrent runs append whole lines, never interleaved pieces.
    const std::string record = line + "\n";
    const ssize_t written = write(fd, record.data(), record.size());
    const bool closed = close(fd) == 0;
    return written == static_cast<ssize_t>(record.size()) && closed;
}


// Marks this process as running in the host's folder for the run; the host waits for the
// folder to empty before it ends the run, so no stand-in outlives it.
class CRunningMark
{
public:
    CRunningMark()
    {
        std::string folder;
        if (FindEnvironment("MVGOZ_RUNNING_DIR", folder) && !folder.empty()) {
            m_strPath = folder + "/" + std::to_string(static_cast<long long>(getpid()));
            const int fd = open(m_strPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            if (fd >= 0) {
                close(fd);
            } else {
                m_strPath.clear();
            }
        }
    }
    ~CRunningMark()
    {
        if (!m_strPath.empty()) {
            unlink(m_strPath.c_str());
        }
    }
    CRunningMark(const CRunningMark&) = delete;
    CRunningMark& operator=(const CRunningMark&) = delete;

private:
    std::string m_strPath;
};

QString ToQ(const std::string& text)
{
    return QString::fromLocal8Bit(text.data(), static_cast<int>(text.size()));
}

std::string FromQ(const QString& text)
{
    return text.toLocal8Bit().toStdString();
}

std::string JsonValue(const QJsonValue& value)
{
    // Compact JSON of one value: wrapped in an array and unwrapped again.
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2).toStdString();
}

// The number of log entries of program that were started during step.
int LoggedEntries(const std::string& logPath, const char* program, const QJsonValue& step)
{
    QFile log(ToQ(logPath));
    if (!log.open(QIODevice::ReadOnly)) {
        return 0;
    }
    int count = 0;
    for (const QByteArray& line : log.readAll().split('\n')) {
        const QJsonObject entry = QJsonDocument::fromJson(line).object();
        if (entry.value(QStringLiteral("program")).toString() == QLatin1String(program) &&
            entry.value(QStringLiteral("step")) == step) {
            ++count;
        }
    }
    return count;
}

QString BaseNameOfLine(const QString& line)
{
    QString name = line;
    name.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return name.mid(name.lastIndexOf(QLatin1Char('/')) + 1);
}

// ZBrush's side of the way back: sculpt what was sent, hand it back, start the launcher.
QJsonObject PlayReturn(const CZBrushReturn& settings, const std::string& publicFolder, const std::string& appFolder,
                       const std::string& listFile, const std::vector<std::string>& sentLines,
                       const std::string& logPath, const QJsonValue& step, std::vector<std::string>& problems)
{
    // The make-object-path program reads the same object list; it must have read the sent one
    // before the returned one replaces it, or the log would depend on which ran first.
    if (!step.isNull()) {
        QElapsedTimer waited;
        waited.start();
        while (LoggedEntries(logPath, "GoZMakeObjectPath.exe", step) == 0 && waited.elapsed() < 5000) {
            QThread::msleep(10);
        }
        if (LoggedEntries(logPath, "GoZMakeObjectPath.exe", step) == 0) {
            problems.emplace_back("GoZMakeObjectPath.exe of this send did not log within 5 s");
        }
    }

    struct CReturned
    {
        QString m_strName;
        CGoZStandInFile m_kFile;
    };
    QList<CReturned> returned;
    for (const std::string& line : sentLines) {
        const QString sent = BaseNameOfLine(ToQ(line));
        if (!settings.m_bAllMeshes && !settings.m_kMeshes.contains(sent)) {
            continue;
        }
        CReturned item;
        item.m_strName = settings.m_kRenames.value(sent, sent);
        QString error;
        if (!CGoZStandInFile::Read(ToQ(line) + QStringLiteral(".goz"), item.m_kFile, error)) {
            problems.push_back("cannot sculpt " + FromQ(sent) + ": " + FromQ(error));
            continue;
        }
        item.m_kFile.SetValue(QStringLiteral("name"), item.m_strName);
        item.m_kFile.m_kMesh = settings.Sculpt(item.m_kFile.m_kMesh);
        returned << item;
    }
    for (const CZBrushReturn::CExtraMesh& extra : settings.m_kExtras) {
        CReturned item;
        item.m_strName = extra.m_strName;
        item.m_kFile.SetValue(QStringLiteral("name"), extra.m_strName);
        item.m_kFile.m_kMesh = extra.m_kMesh;
        returned << item;
    }

    const QString project = ToQ(publicFolder) + QStringLiteral("/Pixologic/GoZProjects/Default/");
    QJsonArray files;
    QByteArray objectList;
    for (const CReturned& item : returned) {
        QString state = QStringLiteral("written");
        QByteArray bytes = item.m_kFile.Write();
        if (settings.m_kMissing.contains(item.m_strName)) {
            state = QStringLiteral("missing");
        } else if (settings.m_kMalformed.contains(item.m_strName)) {
            state = QStringLiteral("malformed");
            bytes = "this is no mesh\n";
        } else if (settings.m_kTruncated.contains(item.m_strName)) {
            state = QStringLiteral("truncated");
            bytes = bytes.left(bytes.size() / 2);
        }
        QString error;
        if (state != QLatin1String("missing") &&
            !CGoZStandInFile::Save(project + item.m_strName + QStringLiteral(".GoZ"), bytes, error)) {
            problems.push_back(FromQ(error));
            state = QStringLiteral("not written");
        }
        files.append(QJsonObject{{QStringLiteral("name"), item.m_strName},
                                 {QStringLiteral("state"), state},
                                 {QStringLiteral("mesh"), item.m_kFile.m_kMesh.Summary()}});
        objectList += item.m_strName.toUtf8() + '\n';
    }
    QString error;
    if (!CGoZStandInFile::Save(ToQ(listFile), objectList, error)) {
        problems.push_back(FromQ(error));
    }

    QString launcher = QStringLiteral("not started (launch is false)");
    if (settings.m_bLaunch) {
        const QString program = ToQ(appFolder) + QStringLiteral("GoZBrushToFM.exe");
        if (!QFileInfo(program).isFile()) {
            launcher = QStringLiteral("missing");
            problems.push_back("no return launcher " + FromQ(program));
        } else {
            // Waited for, so that this program ends only after the host heard of the return.
            QProcess process;
            process.setProcessChannelMode(QProcess::ForwardedChannels);
            process.start(program, QStringList());
            if (!process.waitForStarted(10000)) {
                launcher = QStringLiteral("failed to start");
                problems.push_back("cannot start " + FromQ(program) + ": " + FromQ(process.errorString()));
            } else if (!process.waitForFinished(20000)) {
                process.kill();
                process.waitForFinished(5000);
                launcher = QStringLiteral("stopped after 20 s");
            } else {
                launcher = QStringLiteral("exit %1").arg(process.exitCode());
            }
        }
    }
    return QJsonObject{{QStringLiteral("files"), files}, {QStringLiteral("launcher"), launcher}};
}

// The return launcher tells the running host that GoZ data is ready; the host answers "ok".
std::string NotifyHost(const std::vector<std::string>& objectList, const QJsonValue& step)
{
    std::string socketName;
    if (!FindEnvironment("MVGOZ_HOST_SOCKET", socketName) || socketName.empty()) {
        return "no host socket";
    }
    // The first names only: the notice is one line the host takes whole, and the list itself
    // stays in its file for the plug-in.
    constexpr std::size_t kNamesInNotice = 1000;
    QJsonArray names;
    for (std::size_t i = 0; i < objectList.size() && i < kNamesInNotice; ++i) {
        names.append(ToQ(objectList[i]));
    }
    const QByteArray notice = QJsonDocument(QJsonObject{{QStringLiteral("notice"), QStringLiteral("GoZDataUpdated")},
                                                        {QStringLiteral("step"), step},
                                                        {QStringLiteral("object_list"), names},
                                                        {QStringLiteral("object_list_count"), double(objectList.size())}})
                                  .toJson(QJsonDocument::Compact) +
                              '\n';
    QLocalSocket socket;
    socket.connectToServer(ToQ(socketName));
    if (!socket.waitForConnected(5000)) {
        return "cannot reach the host: " + FromQ(socket.errorString());
    }
    socket.write(notice);
    if (!socket.waitForBytesWritten(5000)) {
        return "cannot write to the host: " + FromQ(socket.errorString());
    }
    QByteArray answer;
    QElapsedTimer waited;
    waited.start();
    while (!answer.contains('\n') && waited.elapsed() < 10000) {
        if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(100) &&
            socket.state() != QLocalSocket::ConnectedState) {
            break;
        }
        answer += socket.readAll();
    }
    socket.disconnectFromServer();
    return answer.trimmed() == "ok" ? "acknowledged" : "no answer from the host";
}

} // namespace

int main(int argc, char** argv)
{
    const CRunningMark running;
    QCoreApplication application(argc, argv);
    const std::string ownPath = OwnPath(argc > 0 ? argv[0] : nullptr);
    std::vector<std::string> args;
    for (int i = 1; i < argc; ++i) {
        args.emplace_back(argv[i]);
    }

    std::ostringstream json;
    json << "{\"program\":" << JsonString(MVGOZ_STANDIN_NAME) << ",\"path\":" << JsonString(ownPath)
         << ",\"args\":" << JsonArray(args) << ",\"cwd\":" << JsonString(CurrentDirectory());
    // The host's script step that started the send; the report orders the runs by it.
    QJsonValue step;
    std::string stepText;
    if (FindEnvironment("MVGOZ_STEP", stepText) && !stepText.empty()) {
        bool ok = false;
        const int number = ToQ(stepText).toInt(&ok);
        step = ok ? QJsonValue(number) : QJsonValue(ToQ(stepText));
    }
    json << ",\"step\":" << JsonValue(step);

    std::string logPath;
    if (!FindEnvironment("MVGOZ_PROCESS_LOG", logPath) || logPath.empty()) {
        logPath = FolderOf(ownPath) + "/processes.jsonl";
    }
    std::string appFolder;
    std::string listFile;
    std::vector<std::string> sentLines;
    bool listRead = false;

    std::string publicFolder;
    std::vector<std::string> problems;
    if (!FindEnvironment("PUBLIC", publicFolder)) {
        problems.emplace_back("PUBLIC is not set");
        json << ",\"info_file\":null,\"object_list_file\":null,\"object_list\":null";
    } else {
        appFolder = publicFolder + "/Pixologic/GoZApps/Figmora/";
        const std::string infoFile = appFolder + "GoZ_Info.txt";
        json << ",\"info_file\":" << JsonString(infoFile);
        std::string listName;
        if (!ReadKey(infoFile, "GOZ_OBJECT_LIST", listName)) {
            problems.emplace_back("no GOZ_OBJECT_LIST in " + infoFile);
            json << ",\"object_list_file\":null,\"object_list\":null";
        } else {
            // The value is appended to the folder as it stands, as the plug-in does.
            listFile = appFolder + listName;
            std::vector<std::string> lines;
            json << ",\"object_list_file\":" << JsonString(listFile);
            if (ReadLines(listFile, lines)) {
                listRead = true;
                sentLines = lines;
                json << ",\"object_list\":" << JsonArray(lines);
            } else {
                problems.emplace_back("cannot read " + listFile);
                json << ",\"object_list\":null";
            }
        }
    }

    if (MVGOZ_STANDIN_RETURN_LAUNCHER) {
        const std::string configFile = FolderOf(ownPath) + "/GoZ_Config.txt";
        std::string configPath;
        if (ReadKey(configFile, "PATH", configPath)) {
            json << ",\"config_path\":" << JsonString(configPath);
        } else {
            problems.emplace_back("no PATH in " + configFile);
            json << ",\"config_path\":null";
        }
    }
    if (MVGOZ_STANDIN_RETURN_LAUNCHER) {
        json << ",\"host_notice\":" << JsonString(NotifyHost(sentLines, step));
    }

    std::string returnFile;
    if (MVGOZ_STANDIN_ZBRUSH && FindEnvironment("MVGOZ_ZBRUSH_RETURN", returnFile) && !returnFile.empty() &&
        QFileInfo::exists(ToQ(returnFile))) {
        QFile file(ToQ(returnFile));
        CZBrushReturn settings;
        QString error;
        if (!file.open(QIODevice::ReadOnly)) {
            problems.push_back("cannot read " + returnFile);
        } else if (!CZBrushReturn::FromJson(QJsonDocument::fromJson(file.readAll()).object(), settings, error)) {
            problems.push_back(returnFile + ": " + FromQ(error));
        } else if (!listRead) {
            problems.emplace_back("nothing to return: the sent object list was not read");
        } else {
            json << ",\"return\":"
                 << JsonValue(PlayReturn(settings, publicFolder, appFolder, listFile, sentLines, logPath, step, problems));
        }
    }
    json << ",\"problems\":" << JsonArray(problems) << "}";
    if (!AppendLine(logPath, json.str())) {
        std::fprintf(stderr, "%s: cannot append to the process log %s: %s\n", MVGOZ_STANDIN_NAME, logPath.c_str(),
                     std::strerror(errno));
        return 1;
    }
    return 0;
}
