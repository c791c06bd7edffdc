#include "CScript.h"

#include "CReferenceHost.h"
#include "CZBrushReturn.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

#include <cmath>
#include <limits>

namespace MV {
namespace Host {

namespace {

enum class EArgType
{
    String,
    StringOrNull,
    Bool,
    Count,     // integer >= 0
    Ordinal,   // integer >= 1
    Integer,
    StringList,
    IntegerList,
    Code,
    ObjectOrNull,
};

struct CArgRule
{
    const char* m_szKey;
    EArgType m_eType;
    bool m_bRequired;
};

struct CStepRule
{
    const char* m_szName;
    QList<CArgRule> m_kArgs;
};

const QList<CStepRule>& Rules()
{
    static const QList<CStepRule> rules = {
        {"select", {{"ids", EArgType::StringList, true}}},
        {"pick", {{"ids", EArgType::StringList, true}}},
        {"set_current_avatar", {{"id", EArgType::StringOrNull, true}}},
        {"set_playing", {{"playing", EArgType::Bool, true}}},
        {"set_expression_editing", {{"id", EArgType::String, true}, {"editing", EArgType::Bool, true}}},
        {"set_blend_shape_editing", {{"id", EArgType::String, true}, {"editing", EArgType::Bool, true}}},
        {"raise_data_changed", {{"edit_blend_shape", EArgType::Bool, false}}},
        {"raise_expression_goz", {}},
        {"raise_goz_data_updated", {}},
        {"raise_load_expression_motion", {}},
        {"trigger", {{"action", EArgType::String, true}}},
        {"snapshot_actions", {}},
        {"answer_messages", {{"button", EArgType::Integer, false}, {"buttons", EArgType::IntegerList, false}}},
        {"fail",
         {{"operation", EArgType::String, true}, {"code", EArgType::Code, true}, {"nth", EArgType::Ordinal, false}}},
        {"clear_failures", {{"operation", EArgType::String, false}}},
        {"clear_log", {}},
        {"record_usage", {}},
        {"wait_processes", {{"count", EArgType::Count, true}, {"timeout_ms", EArgType::Count, false}}},
        {"click",
         {{"widget", EArgType::String, true}, {"fallback", EArgType::String, false}, {"dialog", EArgType::String, false}}},
        {"set_checked",
         {{"widget", EArgType::String, true}, {"checked", EArgType::Bool, true}, {"dialog", EArgType::String, false}}},
        {"set_combo_index",
         {{"widget", EArgType::String, true}, {"index", EArgType::Count, true}, {"dialog", EArgType::String, false}}},
        {"table_combo_choose",
         {{"table", EArgType::String, true},
          {"row", EArgType::Count, true},
          {"column", EArgType::Count, true},
          {"text", EArgType::String, true},
          {"dialog", EArgType::String, false}}},
        {"table_set_checked",
         {{"table", EArgType::String, true},
          {"row", EArgType::Count, true},
          {"column", EArgType::Count, true},
          {"checked", EArgType::Bool, true},
          {"dialog", EArgType::String, false}}},
        {"dump_table", {{"table", EArgType::String, true}, {"dialog", EArgType::String, false}}},
        {"dump_scene", {{"ids", EArgType::StringList, false}}},
        {"wait_goz_return", {{"timeout_ms", EArgType::Count, false}}},
        {"set_zbrush_return", {{"settings", EArgType::ObjectOrNull, true}}},
        {"dump_dialog", {{"dialog", EArgType::String, false}}},
        {"close_dialog", {{"dialog", EArgType::String, false}, {"reject", EArgType::Bool, false}}},
    };
    return rules;
}

const CStepRule* FindRule(const QString& name)
{
    for (const CStepRule& rule : Rules()) {
        if (name == QLatin1String(rule.m_szName)) {
            return &rule;
        }
    }
    return nullptr;
}

bool IsInteger(const QJsonValue& value, qint64 minimum)
{
    if (!value.isDouble()) {
        return false;
    }
    const double number = value.toDouble();
    return std::isfinite(number) && std::floor(number) == number && number >= static_cast<double>(minimum) &&
           number <= static_cast<double>(std::numeric_limits<int>::max());
}

QString CheckArg(const CArgRule& rule, const QJsonValue& value)
{
    switch (rule.m_eType) {
    case EArgType::String:
        return value.isString() ? QString() : QStringLiteral("must be a string");
    case EArgType::StringOrNull:
        return value.isString() || value.isNull() ? QString() : QStringLiteral("must be a string or null");
    case EArgType::Bool:
        return value.isBool() ? QString() : QStringLiteral("must be true or false");
    case EArgType::Count:
        return IsInteger(value, 0) ? QString() : QStringLiteral("must be an integer of 0 or more");
    case EArgType::Ordinal:
        return IsInteger(value, 1) ? QString() : QStringLiteral("must be an integer of 1 or more");
    case EArgType::Integer:
        return IsInteger(value, std::numeric_limits<int>::min()) ? QString() : QStringLiteral("must be an integer");
    case EArgType::StringList:
        if (value.isArray()) {
            bool ok = true;
            for (const QJsonValue& item : value.toArray()) {
                ok = ok && item.isString();
            }
            if (ok) {
                return QString();
            }
        }
        return QStringLiteral("must be an array of strings");
    case EArgType::IntegerList:
        if (value.isArray()) {
            bool ok = true;
            for (const QJsonValue& item : value.toArray()) {
                ok = ok && IsInteger(item, std::numeric_limits<int>::min());
            }
            if (ok) {
                return QString();
            }
        }
        return QStringLiteral("must be an array of integers");
    case EArgType::ObjectOrNull:
        return value.isObject() || value.isNull() ? QString() : QStringLiteral("must be an object or null");
    case EArgType::Code: {
        QV::Result code = QV::kOk;
        return CScript::ReadCode(value, code) ? QString()
                                              : QStringLiteral("must be a 32-bit result code (a number or \"0x...\")");
    }
    }
    return QStringLiteral("has an unknown type");
}

QString CheckStep(const QJsonObject& step, QString& name)
{
    const QJsonValue nameValue = step.value(QStringLiteral("step"));
    if (!nameValue.isString()) {
        return QStringLiteral("\"step\" must name the step");
    }
    name = nameValue.toString();
    const CStepRule* rule = FindRule(name);
    if (rule == nullptr) {
        return QStringLiteral("unknown step \"%1\"").arg(name);
    }
    for (auto it = step.constBegin(); it != step.constEnd(); ++it) {
        const QString key = it.key();
        if (key == QLatin1String("step") || key == QLatin1String("comment")) {
            continue;
        }
        if (key == QLatin1String("only_if_clicked")) {
            if (!it.value().isString()) {
                return QStringLiteral("\"only_if_clicked\" must be a string");
            }
            continue;
        }
        const CArgRule* arg = nullptr;
        for (const CArgRule& candidate : rule->m_kArgs) {
            if (key == QLatin1String(candidate.m_szKey)) {
                arg = &candidate;
            }
        }
        if (arg == nullptr) {
            return QStringLiteral("%1: unknown argument \"%2\"").arg(name, key);
        }
        const QString problem = CheckArg(*arg, it.value());
        if (!problem.isEmpty()) {
            return QStringLiteral("%1: \"%2\" %3").arg(name, key, problem);
        }
    }
    for (const CArgRule& arg : rule->m_kArgs) {
        if (arg.m_bRequired && !step.contains(QLatin1String(arg.m_szKey))) {
            return QStringLiteral("%1: missing \"%2\"").arg(name, QLatin1String(arg.m_szKey));
        }
    }
    if (name == QLatin1String("answer_messages") && !step.contains(QStringLiteral("button")) &&
        !step.contains(QStringLiteral("buttons"))) {
        return QStringLiteral("answer_messages: give \"button\" or \"buttons\"");
    }
    if ((name == QLatin1String("fail") || name == QLatin1String("clear_failures")) &&
        step.contains(QStringLiteral("operation")) &&
        !CReferenceHost::OperationNames().contains(step.value(QStringLiteral("operation")).toString())) {
        return QStringLiteral("%1: the host has no operation \"%2\"")
            .arg(name, step.value(QStringLiteral("operation")).toString());
    }
    if (name == QLatin1String("set_zbrush_return") && step.value(QStringLiteral("settings")).isObject()) {
        CZBrushReturn settings;
        QString problem;
        if (!CZBrushReturn::FromJson(step.value(QStringLiteral("settings")), settings, problem)) {
            return QStringLiteral("set_zbrush_return: \"settings\": ") + problem;
        }
    }
    return QString();
}

} // namespace

const QStringList& CScript::StepNames()
{
    static const QStringList names = [] {
        QStringList all;
        for (const CStepRule& rule : Rules()) {
            all << QLatin1String(rule.m_szName);
        }
        return all;
    }();
    return names;
}

bool CScript::ReadCode(const QJsonValue& value, QV::Result& code)
{
    if (value.isDouble()) {
        const double number = value.toDouble();
        if (!std::isfinite(number) || std::floor(number) != number || number < -2147483648.0 || number > 4294967295.0) {
            return false;
        }
        code = static_cast<QV::Result>(static_cast<quint32>(static_cast<qint64>(number)));
        return true;
    }
    if (value.isString()) {
        const QString text = value.toString().trimmed();
        if (!text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
            return false;
        }
        bool ok = false;
        const qulonglong number = text.mid(2).toULongLong(&ok, 16);
        if (!ok || number > 0xFFFFFFFFull) {
            return false;
        }
        code = static_cast<QV::Result>(static_cast<quint32>(number));
        return true;
    }
    return false;
}

QV::Result CScript::Parse(const QByteArray& json, QString& error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        error = QStringLiteral("not valid JSON at offset %1: %2").arg(parseError.offset).arg(parseError.errorString());
        return QV::kInvalidArg;
    }
    if (!document.isObject()) {
        error = QStringLiteral("the script must be a JSON object with a \"steps\" array");
        return QV::kInvalidArg;
    }
    const QJsonObject root = document.object();
    for (auto it = root.constBegin(); it != root.constEnd(); ++it) {
        if (it.key() != QLatin1String("steps") && it.key() != QLatin1String("watchdog_ms") &&
            it.key() != QLatin1String("comment")) {
            error = QStringLiteral("unknown script key \"%1\"").arg(it.key());
            return QV::kInvalidArg;
        }
    }
    int watchdog = kDefaultWatchdogMs;
    if (root.contains(QStringLiteral("watchdog_ms"))) {
        const QJsonValue value = root.value(QStringLiteral("watchdog_ms"));
        if (!IsInteger(value, 1) || value.toDouble() > kMaxWatchdogMs) {
            error = QStringLiteral("\"watchdog_ms\" must be an integer from 1 to %1").arg(kMaxWatchdogMs);
            return QV::kInvalidArg;
        }
        watchdog = value.toInt();
    }
    if (!root.value(QStringLiteral("steps")).isArray()) {
        error = QStringLiteral("\"steps\" must be an array");
        return QV::kInvalidArg;
    }
    const QJsonArray array = root.value(QStringLiteral("steps")).toArray();
    QList<CScriptStep> steps;
    for (int i = 0; i < array.size(); ++i) {
        if (!array.at(i).isObject()) {
            error = QStringLiteral("step %1: must be an object").arg(i);
            return QV::kInvalidArg;
        }
        CScriptStep step;
        step.m_iIndex = i;
        step.m_kArgs = array.at(i).toObject();
        const QString problem = CheckStep(step.m_kArgs, step.m_strName);
        if (!problem.isEmpty()) {
            error = QStringLiteral("step %1: %2").arg(i).arg(problem);
            return QV::kInvalidArg;
        }
        steps << step;
    }
    m_kSteps = steps;
    m_iWatchdogMs = watchdog;
    return QV::kOk;
}

} // namespace Host
} // namespace MV
