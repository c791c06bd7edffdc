#pragma once

#include "MVPluginQtExport.h"
#include "QVArrayList.h"

#include <QPointer>
#include <QString>

#include <memory>

class CMiravaInterface;
class CPluginDialog;
class CUiComponent;
class QMenu;
class QToolBar;
class QWidget;

// Loads plug-in forms at run time and hands their parts to the plug-in.
class MVPLUGINQT_EXPORT CWidgetBuilder
{
public:
    CWidgetBuilder();
    ~CWidgetBuilder();
    CWidgetBuilder(const CWidgetBuilder&) = delete;
    CWidgetBuilder& operator=(const CWidgetBuilder&) = delete;

    // Also derives the preset path: the text from the last '.' on becomes ".preset".
    void SetFormPath(const QString& path);
    QString GetFormPath() const { return m_strFormPath; }
    QString GetPresetPath() const { return m_strPresetPath; }
    void SetSecondPath(const QString& path) { m_strSecondPath = path; }
    QString GetSecondPath() const { return m_strSecondPath; }
    void SetLayoutIniPath(const QString& path) { m_strLayoutIniPath = path; }
    QString GetLayoutIniPath() const { return m_strLayoutIniPath; }

    // Loads the form, sets up ui from it and appends the form's tool bars and menu-bar menus.
    // The builder keeps the loaded form; tool bars and menus the host re-parents survive it.
    QV::Result InitToolbarAndMenuUi(CUiComponent* ui, QV::CArrayList<QPointer<QToolBar>>& toolBars,
                                    QV::CArrayList<QPointer<QMenu>>& menus, CMiravaInterface* host);

    // Loads the form into the dialog (its content fills the dialog), sets up ui and, when
    // applyLayout is set, applies the layout settings of the form's section.
    QV::Result InitUi(CPluginDialog* dialog, CUiComponent* ui, CMiravaInterface* host, bool applyLayout,
                      bool copyWindowTitle);

    QWidget* LoadedForm() const;

private:
    QString m_strFormPath;
    QString m_strPresetPath;
    QString m_strSecondPath;
    QString m_strLayoutIniPath;
    QPointer<QWidget> m_pForm;
    bool m_bOwnsForm = false;
};
