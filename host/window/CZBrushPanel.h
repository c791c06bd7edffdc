#pragma once

#include "CZBrushReturn.h"
#include "CZBrushStandIn.h"

#include <QString>
#include <QStringList>
#include <QWidget>

class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace MV {
namespace Host {

// The ZBrush side at the window: what arrived in the GoZ project folder, the meshes of the
// last send to choose from, and the button that sculpts them and sends them back.
class CZBrushPanel : public QWidget
{
    Q_OBJECT
public:
    CZBrushPanel(const QString& publicFolder, const CZBrushReturn& settings, QWidget* parent = nullptr);

    // Lists the folder again when anything in it changed since the last look.
    void Refresh();
    // The sent meshes whose box is ticked, in send order.
    QStringList ChosenMeshes() const;
    CZBrushStandIn& StandIn() { return m_kStandIn; }

    QTableWidget* ProjectFilesTable() const { return m_pFiles; }
    QTableWidget* SentMeshesTable() const { return m_pSent; }
    QPushButton* SculptButton() const { return m_pSculpt; }
    QLabel* StatusLabel() const { return m_pStatus; }

    void SculptAndSendBack();

signals:
    // What the panel did, for the window's message list.
    void Report(const QString& text);

private:
    QString Signature() const;
    void FillFiles(const QList<CProjectFile>& files);
    void FillSent(const QStringList& sent, const QList<CProjectFile>& files);
    void UpdateButton();
    void SetStatus(const QString& text);

    CZBrushStandIn m_kStandIn;
    CZBrushReturn m_kSettings;
    QString m_strSignature;
    QStringList m_kShownSent;
    bool m_bOutcomeShown = false; // the status tells what the last sculpt did
    QTableWidget* m_pFiles = nullptr;
    QTableWidget* m_pSent = nullptr;
    QDoubleSpinBox* m_pScale = nullptr;
    QPushButton* m_pSculpt = nullptr;
    QLabel* m_pStatus = nullptr;
};

} // namespace Host
} // namespace MV
