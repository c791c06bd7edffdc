#include "CZBrushPanel.h"

#include "WindowLayout.h"
#include "WindowNames.h"

#include <QDir>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace MV {
namespace Host {

namespace {

constexpr int kTableRows = 5;

QLabel* Heading(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

QTableWidgetItem* Number(int value)
{
    auto* item = new QTableWidgetItem(value < 0 ? QStringLiteral("-") : QString::number(value));
    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

} // namespace

CZBrushPanel::CZBrushPanel(const QString& publicFolder, const CZBrushReturn& settings, QWidget* parent)
    : QWidget(parent), m_kStandIn(publicFolder), m_kSettings(settings)
{
    setObjectName(QLatin1String(WindowNames::kZBrushPanel));
    auto* layout = new QVBoxLayout(this);

    auto* folderHeading = Heading(QStringLiteral("Arrived in the GoZ project folder"), this);
    folderHeading->setToolTip(QDir::toNativeSeparators(m_kStandIn.ProjectFolder()));
    layout->addWidget(folderHeading);
    m_pFiles = new QTableWidget(this);
    m_pFiles->setObjectName(QLatin1String(WindowNames::kProjectFilesTable));
    SetUpListTable(m_pFiles, {QStringLiteral("File"), QStringLiteral("Kind"), QStringLiteral("Vertices"),
                              QStringLiteral("Faces")});
    KeepRoomForRows(m_pFiles, kTableRows);
    layout->addWidget(m_pFiles, 3);

    layout->addWidget(Heading(QStringLiteral("Meshes of the last send"), this));
    auto* hint = new QLabel(QStringLiteral("Ticked meshes come back sculpted."), this);
    hint->setWordWrap(true);
    layout->addWidget(hint);
    m_pSent = new QTableWidget(this);
    m_pSent->setObjectName(QLatin1String(WindowNames::kSentMeshesTable));
    SetUpListTable(m_pSent, {QStringLiteral("Mesh"), QStringLiteral("Vertices"), QStringLiteral("Faces")});
    KeepRoomForRows(m_pSent, kTableRows);
    layout->addWidget(m_pSent, 2);
    connect(m_pSent, &QTableWidget::itemChanged, this, [this] { UpdateButton(); });

    auto* scaleRow = new QHBoxLayout();
    auto* scaleLabel = new QLabel(QStringLiteral("Sculpt: scale by"), this);
    m_pScale = new QDoubleSpinBox(this);
    m_pScale->setObjectName(QLatin1String(WindowNames::kScaleSpinBox));
    m_pScale->setRange(0.05, 20.0);
    m_pScale->setSingleStep(0.05);
    m_pScale->setDecimals(2);
    m_pScale->setValue(m_kSettings.m_dScale);
    scaleLabel->setBuddy(m_pScale);
    scaleRow->addWidget(scaleLabel);
    scaleRow->addWidget(m_pScale);
    scaleRow->addStretch(1);
    layout->addLayout(scaleRow);

    m_pSculpt = new QPushButton(QStringLiteral("Sculpt and send back"), this);
    m_pSculpt->setObjectName(QLatin1String(WindowNames::kSculptButton));
    m_pSculpt->setToolTip(QStringLiteral("Writes the ticked meshes back as .GoZ files and runs the return launcher, "
                                         "which tells the host that GoZ data is ready"));
    connect(m_pSculpt, &QPushButton::clicked, this, &CZBrushPanel::SculptAndSendBack);
    layout->addWidget(m_pSculpt);

    m_pStatus = new QLabel(this);
    m_pStatus->setObjectName(QLatin1String(WindowNames::kZBrushStatusLabel));
    m_pStatus->setWordWrap(true);
    m_pStatus->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_pStatus);
    layout->addStretch(1);

    connect(&m_kStandIn, &CZBrushStandIn::LauncherFinished, this, [this](const QString& status) {
        SetStatus(m_pStatus->text() + QStringLiteral(" The return launcher ended (%1).").arg(status));
        UpdateButton();
    });
    Refresh();
}

QString CZBrushPanel::Signature() const
{
    QString signature;
    const QString list = m_kStandIn.ObjectListPath();
    for (const QFileInfo& entry : QDir(m_kStandIn.ProjectFolder()).entryInfoList(QDir::Files, QDir::Name) +
                                      QFileInfoList{QFileInfo(list)}) {
        signature += entry.fileName() + QLatin1Char('\t') + QString::number(entry.size()) + QLatin1Char('\t') +
                     QString::number(entry.lastModified().toMSecsSinceEpoch()) + QLatin1Char('\n');
    }
    return signature;
}

void CZBrushPanel::Refresh()
{
    const QString signature = Signature();
    if (signature == m_strSignature) {
        UpdateButton();
        return;
    }
    m_strSignature = signature;
    const QList<CProjectFile> files = m_kStandIn.ProjectFiles();
    FillFiles(files);
    FillSent(m_kStandIn.SentMeshes(), files);
    UpdateButton();
}

void CZBrushPanel::FillFiles(const QList<CProjectFile>& files)
{
    m_pFiles->setUpdatesEnabled(false);
    m_pFiles->setRowCount(files.size());
    for (int row = 0; row < files.size(); ++row) {
        const CProjectFile& file = files.at(row);
        auto* name = new QTableWidgetItem(file.m_strName);
        name->setToolTip(file.m_strProblem.isEmpty() ? file.m_kModified.toString(Qt::ISODate) : file.m_strProblem);
        m_pFiles->setItem(row, 0, name);
        m_pFiles->setItem(row, 1, new QTableWidgetItem(CProjectFile::KindText(file.m_eKind)));
        m_pFiles->setItem(row, 2, Number(file.m_iVertices));
        m_pFiles->setItem(row, 3, Number(file.m_iFaces));
    }
    m_pFiles->setUpdatesEnabled(true);
}

void CZBrushPanel::FillSent(const QStringList& sent, const QList<CProjectFile>& files)
{
    // A new send ticks every mesh again; the same send keeps the user's choice.
    const bool sameSend = sent == m_kShownSent;
    const QStringList chosen = ChosenMeshes();
    m_kShownSent = sent;
    if (!sameSend) {
        m_bOutcomeShown = false;
    }
    const QSignalBlocker blocker(m_pSent);
    m_pSent->setUpdatesEnabled(false);
    m_pSent->setRowCount(sent.size());
    for (int row = 0; row < sent.size(); ++row) {
        const QString& name = sent.at(row);
        int vertices = -1;
        int faces = -1;
        for (const CProjectFile& file : files) {
            if (file.m_eKind == CProjectFile::EKind::Sent && file.m_strName == name + QStringLiteral(".goz")) {
                vertices = file.m_iVertices;
                faces = file.m_iFaces;
            }
        }
        auto* item = new QTableWidgetItem(name);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        item->setCheckState(!sameSend || chosen.contains(name) ? Qt::Checked : Qt::Unchecked);
        m_pSent->setItem(row, 0, item);
        m_pSent->setItem(row, 1, Number(vertices));
        m_pSent->setItem(row, 2, Number(faces));
    }
    m_pSent->setUpdatesEnabled(true);
}

QStringList CZBrushPanel::ChosenMeshes() const
{
    QStringList chosen;
    for (int row = 0; row < m_pSent->rowCount(); ++row) {
        const QTableWidgetItem* item = m_pSent->item(row, 0);
        if (item != nullptr && item->checkState() == Qt::Checked) {
            chosen << item->text();
        }
    }
    return chosen;
}

void CZBrushPanel::UpdateButton()
{
    const bool ready = !ChosenMeshes().isEmpty() && !m_kStandIn.IsLauncherRunning();
    m_pSculpt->setEnabled(ready);
    if (m_bOutcomeShown) {
        return;
    }
    m_pStatus->setText(m_kShownSent.isEmpty()
                           ? QStringLiteral("Nothing was sent yet: select objects and use the plug-in's GoZ command.")
                           : QStringLiteral("%1 mesh(es) arrived from the host. Tick those that come back and press "
                                            "\"Sculpt and send back\".")
                                 .arg(m_kShownSent.size()));
}

void CZBrushPanel::SetStatus(const QString& text)
{
    m_pStatus->setText(text);
}

void CZBrushPanel::SculptAndSendBack()
{
    CZBrushReturn settings = m_kSettings;
    settings.m_dScale = m_pScale->value();
    const CSculptOutcome outcome = m_kStandIn.SculptAndSendBack(ChosenMeshes(), settings);
    QString text;
    if (outcome.m_kReturned.isEmpty() && !outcome.m_kProblems.isEmpty()) {
        text = QStringLiteral("Nothing sent back: %1.").arg(outcome.m_kProblems.join(QStringLiteral("; ")));
    } else {
        text = QStringLiteral("Sent back %1 (%2 file(s) written).")
                   .arg(outcome.m_kReturned.join(QStringLiteral(", ")))
                   .arg(outcome.m_kWritten.size());
        if (!outcome.m_kProblems.isEmpty()) {
            text += QStringLiteral(" Problems: %1.").arg(outcome.m_kProblems.join(QStringLiteral("; ")));
        }
        text += outcome.m_bLauncherStarted ? QStringLiteral(" The return launcher tells the host.")
                                           : QStringLiteral(" No return launcher ran, so the host hears nothing.");
    }
    SetStatus(text);
    m_bOutcomeShown = true;
    emit Report(QStringLiteral("ZBrush: ") + text);
    Refresh();
}

} // namespace Host
} // namespace MV
