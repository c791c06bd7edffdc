#pragma once

#include "DoctorFindings.h"

#include <cstddef>
#include <filesystem>

// The checks behind mvgoz-doctor: look at the GoZ folders, the registry and the exchange
// files the way the plug-in and ZBrush's side use them, change nothing, and say what stops
// a round trip.
namespace MV {
namespace Doctor {

struct CDoctorOptions
{
    // Instead of the PUBLIC variable.
    bool m_bHasPublicOverride = false;
    std::filesystem::path m_kPublicOverride;
    // The receive side always reads returned meshes below this fixed folder (deliberately not
    // the computed root); tests point it at their sandbox.
    std::filesystem::path m_kReturnRoot = std::filesystem::path("C:/Users/Public/Pixologic/");
};

// Exchange files are a few hundred bytes; anything this large is not one.
constexpr std::size_t kMaxKeyFileBytes = 1024 * 1024;
constexpr std::size_t kMaxObjectListBytes = 64 * 1024 * 1024;
// The plug-in reads each value into 1024 bytes, and each returned name into 100 with ".GoZ".
constexpr std::size_t kMaxValueBytes = 1023;
constexpr std::size_t kMaxObjectNameBytes = 95;

// Runs every check and adds the problems. Never throws.
CDoctorFindings RunChecks(const CDoctorOptions& options);

// The problems that follow from the facts in findings (replaces m_kProblems).
void DeriveProblems(CDoctorFindings& findings);

} // namespace Doctor
} // namespace MV
