#pragma once

#include <cstdint>

namespace QV {

// One signed 32-bit code: negative is a failure, any other value a success.
using Result = std::int32_t;

constexpr Result kOk = 0;
constexpr Result kNothingDone = 1;
constexpr Result kFail = static_cast<Result>(0x80000000u);
constexpr Result kInvalidArg = static_cast<Result>(0x80000003u);
constexpr Result kOutOfRange = static_cast<Result>(0x80000004u);
constexpr Result kOutOfMemory = static_cast<Result>(0x80000005u);

constexpr bool Succeeded(Result r) { return r >= 0; }
constexpr bool Failed(Result r) { return r < 0; }

} // namespace QV
