#include "DoctorFindings.h"

#include <algorithm>

namespace MV {
namespace Doctor {

bool CDoctorFindings::HasProblem(const std::string& id) const
{
    return std::any_of(m_kProblems.begin(), m_kProblems.end(),
                       [&id](const CProblem& problem) { return problem.m_strId == id; });
}

std::size_t CDoctorFindings::ProblemCount() const
{
    return static_cast<std::size_t>(std::count_if(m_kProblems.begin(), m_kProblems.end(), [](const CProblem& problem) {
        return problem.m_eSeverity == ESeverity::Problem;
    }));
}

std::string KindPhrase(EEntryKind kind, bool folderExpected)
{
    switch (kind) {
    case EEntryKind::Missing:
        return "does not exist";
    case EEntryKind::File:
        return folderExpected ? "is a file, not a folder" : "is there";
    case EEntryKind::Folder:
        return folderExpected ? "is there" : "is a folder, not a file";
    case EEntryKind::Other:
        return "is neither a file nor a folder";
    case EEntryKind::Unreachable:
        return "cannot be reached (no access to a folder above it, or a name the system refuses)";
    }
    return "is in an unknown state";
}

const char* KindWord(EEntryKind kind)
{
    switch (kind) {
    case EEntryKind::Missing:
        return "missing";
    case EEntryKind::File:
        return "file";
    case EEntryKind::Folder:
        return "folder";
    case EEntryKind::Other:
        return "other";
    case EEntryKind::Unreachable:
        return "unreachable";
    }
    return "unknown";
}

const char* CheckWord(ECheck check)
{
    switch (check) {
    case ECheck::Yes:
        return "yes";
    case ECheck::No:
        return "no";
    case ECheck::NotChecked:
        return "not checked";
    }
    return "not checked";
}

const char* ReadWord(EReadState state)
{
    switch (state) {
    case EReadState::NotTried:
        return "not tried";
    case EReadState::Read:
        return "read";
    case EReadState::Missing:
        return "missing";
    case EReadState::NotAFile:
        return "not a file";
    case EReadState::Unreadable:
        return "unreadable";
    case EReadState::TooLarge:
        return "too large";
    }
    return "not tried";
}

const char* SourceWord(EPublicSource source)
{
    switch (source) {
    case EPublicSource::Variable:
        return "variable";
    case EPublicSource::Default:
        return "default";
    case EPublicSource::Override:
        return "override";
    }
    return "default";
}

} // namespace Doctor
} // namespace MV
