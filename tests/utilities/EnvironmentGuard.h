#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <optional>
#include <utility>
#include <vector>

// Sets (value) or removes (nullopt) environment variables for one test; puts them back after it.
class CEnvironmentGuard
{
public:
    ~CEnvironmentGuard()
    {
        for (auto it = m_kSaved.crbegin(); it != m_kSaved.crend(); ++it) {
            Put(it->first.constData(), it->second);
        }
    }

    void Set(const char* name, const std::optional<QByteArray>& value)
    {
        m_kSaved.emplace_back(name, qEnvironmentVariableIsSet(name) ? std::optional<QByteArray>(qgetenv(name))
                                                                    : std::nullopt);
        Put(name, value);
    }
    void Unset(const char* name) { Set(name, std::nullopt); }

private:
    static void Put(const char* name, const std::optional<QByteArray>& value)
    {
        value ? qputenv(name, *value) : qunsetenv(name);
    }

    std::vector<std::pair<QByteArray, std::optional<QByteArray>>> m_kSaved;
};
