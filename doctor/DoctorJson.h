#pragma once

#include "DoctorFindings.h"

#include <string>

namespace MV {
namespace Doctor {

// The findings as one JSON object (keys in docs/doctor.md), ending with a line feed.
std::string RenderJson(const CDoctorFindings& findings);

} // namespace Doctor
} // namespace MV
