#include "CPluginTranslator.h"

#include <QCoreApplication>
#include <QDebug>
#include <QTranslator>

namespace MV {

const QString& CPluginTranslator::Folder()
{
    static const QString folder = QStringLiteral(":/plugin/MVGoZBrush/translations");
    return folder;
}

CPluginTranslator::CPluginTranslator() = default;

CPluginTranslator::~CPluginTranslator()
{
    Remove();
}

bool CPluginTranslator::Install(const QString& language)
{
    Remove();
    if (language.isEmpty()) {
        return false;
    }
    // The language becomes part of a file name: nothing that could leave the folder.
    for (const QChar c : language) {
        if (c.unicode() > 0x7F || !(c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('-'))) {
            qWarning().noquote() << "MVGoZBrush ignores the host language" << language << "- not a language code";
            return false;
        }
    }
    QString name = QStringLiteral("MVGoZBrush_") + language;
    name.replace(QLatin1Char('-'), QLatin1Char('_'));
    auto translator = std::make_unique<QTranslator>();
    // QTranslator drops "_"-separated parts from the end until a file matches; the bare
    // "MVGoZBrush" it would try last does not exist.
    if (!translator->load(name, Folder()) || translator->isEmpty()) {
        qDebug().noquote() << "MVGoZBrush has no translation for the language" << language << "- texts stay as they are";
        return false;
    }
    if (!QCoreApplication::installTranslator(translator.get())) {
        qWarning().noquote() << "MVGoZBrush could not install its translation for" << language;
        return false;
    }
    m_pTranslator = std::move(translator);
    return true;
}

void CPluginTranslator::Remove()
{
    if (m_pTranslator) {
        QCoreApplication::removeTranslator(m_pTranslator.get());
        m_pTranslator.reset();
    }
}

} // namespace MV
