#pragma once

#include "CBridgeInstaller.h"
#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CScene.h"
#include "FMToZBrushDlg.h"
#include "GoZPaths.h"
#include "ZBrushToFMDlg.h"

#include <QByteArray>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QResource>
#include <QTableWidget>
#include <QThread>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

QT_BEGIN_NAMESPACE
inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toPercentEncoding(" /:._-\"").constData() << '"';
}
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE

namespace MV {
namespace Test {

inline QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

inline void WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

// A sandbox with ZBrush and the installed bridge, a reference host over a scene, and the
// send dialog linked to a receive dialog, all in this process.
class SendFixture : public ::testing::Test
{
public:
    static QString PluginFolder() { return QStringLiteral(MVGOZ_PLUGIN_DIR "/"); }

    void Start(const QByteArray& sceneJson, bool installZBrush = true)
    {
        QString error;
        m_kSandbox.SetInstallZBrush(installZBrush);
        ASSERT_EQ(m_kSandbox.Create(error), QV::kOk) << error.toStdString();
        auto scene = std::make_unique<Host::CScene>();
        ASSERT_EQ(scene->Parse(sceneJson, error), QV::kOk) << error.toStdString();
        m_pHost = std::make_unique<Host::CReferenceHost>(std::move(scene));
        ASSERT_EQ(m_pHost->WriteRegistryFile(m_kSandbox.RegistryFilePath(), error), QV::kOk) << error.toStdString();
        ASSERT_TRUE(QResource::registerResource(PluginFolder() + QStringLiteral("MVGoZBrush.rcc")));
        m_bResource = true;
        if (installZBrush) {
            ASSERT_EQ(CBridgeInstaller(Root(), PluginFolder()).Install(QDir::currentPath()),
                      CBridgeInstaller::EStatus::Installed);
        }
        m_pReceive = std::make_unique<ZBrushToFMDlg>(nullptr);
        ASSERT_EQ(m_pReceive->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
        m_pDialog = std::make_unique<FMToZBrushDlg>(nullptr);
        ASSERT_EQ(m_pDialog->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
        m_pDialog->SetReceiveDialog(m_pReceive.get());
    }

    void TearDown() override
    {
        m_pDialog.reset();
        m_pReceive.reset();
        if (m_bResource) {
            QResource::unregisterResource(PluginFolder() + QStringLiteral("MVGoZBrush.rcc"));
        }
    }

    void Pick(const QStringList& ids)
    {
        QString error;
        ASSERT_EQ(m_pHost->SetPicks(ids, error), QV::kOk) << error.toStdString();
    }

    void SetAvatar(const QString& id)
    {
        QString error;
        ASSERT_EQ(m_pHost->SetCurrentAvatar(id, error), QV::kOk) << error.toStdString();
    }

    // Shows the dialog as the GoZ command does, without the modal loop.
    void Open()
    {
        m_pDialog->hide();
        m_pDialog->show();
    }

    QString Root() const { return GoZPaths::PixologicRoot(); }
    QString Project() const { return Root() + QLatin1String(GoZPaths::kProjectsDefault); }
    QString App() const { return Root() + QLatin1String(GoZPaths::kFigmoraApp); }
    QTableWidget* Table() const { return m_pDialog->Ui().qtFMGoZToZBrushTableWidget; }
    QString Cell(int row, int column) const
    {
        if (column == 1) {
            auto* combo = qobject_cast<QComboBox*>(Table()->cellWidget(row, 1));
            return combo != nullptr ? combo->currentText() : QStringLiteral("<no combo>");
        }
        QTableWidgetItem* item = Table()->item(row, column);
        return item != nullptr ? item->text() : QStringLiteral("<no item>");
    }
    QComboBox* RowCombo(int row) const { return qobject_cast<QComboBox*>(Table()->cellWidget(row, 1)); }

    QList<Host::CCallRecord> Calls(const char* operation) const
    {
        return m_pHost->CallLog().Of(QLatin1String(operation));
    }

    // The stand-in programs run detached; wait until count of them have logged their run.
    QJsonArray WaitForProcesses(int count) const
    {
        QElapsedTimer timer;
        timer.start();
        QJsonArray entries;
        while (timer.elapsed() < 10000) {
            entries = QJsonArray();
            const QList<QByteArray> lines = ReadFile(m_kSandbox.ProcessLogPath()).split('\n');
            for (const QByteArray& line : lines) {
                const QJsonDocument doc = QJsonDocument::fromJson(line);
                if (doc.isObject()) {
                    entries.append(doc.object());
                }
            }
            if (entries.size() >= count) {
                break;
            }
            QThread::msleep(20);
        }
        return entries;
    }

    Host::CSandbox m_kSandbox;
    std::unique_ptr<Host::CReferenceHost> m_pHost;
    std::unique_ptr<ZBrushToFMDlg> m_pReceive;
    std::unique_ptr<FMToZBrushDlg> m_pDialog;
    bool m_bResource = false;
};

} // namespace Test
} // namespace MV
