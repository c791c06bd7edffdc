#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>
#include <utility>
#include <vector>

// Sets or removes environment variables for one test and puts the old state back after it.
class CEnvironmentGuard
{
public:
    ~CEnvironmentGuard()
    {
        for (auto it = m_kSaved.crbegin(); it != m_kSaved.crend(); ++it) {
            it->second ? qputenv(it->first.constData(), *it->second) : qunsetenv(it->first.constData());
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
        m_kSaved.emplace_back(name, qEnvironmentVariableIsSet(name) ? std::optional<QByteArray>(qgetenv(name))
                                                                    : std::nullopt);
    }

    std::vector<std::pair<QByteArray, std::optional<QByteArray>>> m_kSaved;
};
