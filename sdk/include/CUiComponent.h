#pragma once

#include "MVPluginQtExport.h"
#include "QVResult.h"

#include <QObject>
#include <QStringList>
#include <QWidget>

// Base of the generated UI classes: SetupUi looks the named objects up in a loaded form.
class MVPLUGINQT_EXPORT CUiComponent
{
public:
    CUiComponent();
    virtual ~CUiComponent();

    // Finds every named object below root; kFail when any is missing (see MissingNames()).
    virtual QV::Result SetupUi(QWidget* root) = 0;

    const QStringList& MissingNames() const { return m_kMissing; }

protected:
    // The root itself when it carries the name, else a child of type T (searched recursively).
    template <typename T>
    T* Find(QWidget* root, const char* name)
    {
        T* found = nullptr;
        if (root != nullptr) {
            if (root->objectName() == QLatin1String(name)) {
                found = qobject_cast<T*>(root);
            }
            if (found == nullptr) {
                found = root->findChild<T*>(QLatin1String(name));
            }
        }
        if (found == nullptr) {
            m_kMissing << QString::fromLatin1(name);
        }
        return found;
    }

    void ClearMissing() { m_kMissing.clear(); }
    QV::Result MissingResult() const { return m_kMissing.isEmpty() ? QV::kOk : QV::kFail; }

private:
    QStringList m_kMissing;
};
