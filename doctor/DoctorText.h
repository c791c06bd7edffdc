#pragma once

#include "DoctorFindings.h"

#include <string>

namespace MV {
namespace Doctor {

// The findings in plain sentences, one fact a line, then the problems with what to do.
std::string RenderText(const CDoctorFindings& findings);

} // namespace Doctor
} // namespace MV
