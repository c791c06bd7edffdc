#pragma once

#include <QString>

#include <memory>

class QTranslator;

namespace MV {

// The plug-in's translation for the host's language, installed into the application while
// the plug-in is loaded. The texts in the code are the keys; without a translation they show as they are.
class CPluginTranslator
{
public:
    // Where the build puts the .qm files inside MVGoZBrush.rcc.
    static const QString& Folder();

    CPluginTranslator();
    ~CPluginTranslator();
    CPluginTranslator(const CPluginTranslator&) = delete;
    CPluginTranslator& operator=(const CPluginTranslator&) = delete;

    // Replaces the installed translation with MVGoZBrush_<language>.qm from Folder(): "pt-BR"
    // looks for pt_BR, then pt. An empty language, or one without a file, leaves none installed.
    bool Install(const QString& language);
    void Remove();
    bool IsInstalled() const { return static_cast<bool>(m_pTranslator); }

private:
    // Its data may point into the registered resource: it goes before the resource does.
    std::unique_ptr<QTranslator> m_pTranslator;
};

} // namespace MV
