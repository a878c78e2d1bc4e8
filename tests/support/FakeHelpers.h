// What the unit tests on the fake port share: the fixtures, every endpoint,
// the address they hand to the calls and the texts they compare logs with.
#pragma once

#include <string>

#include "Endpoints.h"
#include "velmar/fake/FakeTest.h"

namespace fake = velmar::fake;
namespace utils = velmar::utils;

// The device cloud's address the tests hand to the calls that take one.
inline constexpr char kBase[] = "https://cloud.test";

// "Error (code: N, message: ...)", as a status prints.
inline std::string errorText(utils::ErrorType status) {
    return "Error (code: " + std::to_string(status) +
           ", message: " + utils::ErrorCode::getErrorMessage(status) + ")";
}

// What `call` printed to standard output (the action log prints its progress).
template <typename F>
std::string stdoutOf(F call) {
    ::testing::internal::CaptureStdout();
    call();
    return ::testing::internal::GetCapturedStdout();
}
