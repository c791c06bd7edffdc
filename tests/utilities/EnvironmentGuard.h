#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QtGlobal>

// Sets or removes environment variables for one test and puts the old state back after it.
class CEnvironmentGuard
{
public:
    CEnvironmentGuard() = default;
    CEnvironmentGuard(const CEnvironmentGuard&) = delete;
    CEnvironmentGuard& operator=(const CEnvironmentGuard&) = delete;

    ~CEnvironmentGuard()
    {
        for (auto it = m_kSaved.crbegin(); it != m_kSaved.crend(); ++it) {
            if (it->second.isNull()) {
                qunsetenv(it->first.constData());
            } else {
                qputenv(it->first.constData(), it->second);
            }
        }
    }

    void Set(const char* name, const QByteArray& value)
    {
        Save(name);
        qputenv(name, value);
    }

    void Unset(const char* name)
    {
        Save(name);
        qunsetenv(name);
    }

private:
    void Save(const char* name)
    {
        // A null array marks "was not set"; an empty value is kept as a non-null empty one.
        QByteArray old;
        if (qEnvironmentVariableIsSet(name)) {
            old = qgetenv(name);
            if (old.isNull()) {
                old = QByteArray("");
            }
        }
        m_kSaved.append(qMakePair(QByteArray(name), old));
    }

    QList<QPair<QByteArray, QByteArray>> m_kSaved;
};
