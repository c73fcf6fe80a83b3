// SPDX-License-Identifier: MIT
// Checks that a call raises E with exactly the given message, reported at the caller's line.
#pragma once

#include <kx/rtl/Exceptions.h>

#include <gtest/gtest.h>

#include <string_view>

namespace kxtest {

// The file and line default to the call site (the builtins behind std::source_location,
// which not every standard library here has yet).
template <class E = kx::Exception, class F>
void ExpectMessage(F&& Call, std::string_view Message, const char* File = __builtin_FILE(),
                   int Line = __builtin_LINE()) {
  try {
    Call();
    ADD_FAILURE_AT(File, Line) << "no exception, expected \"" << Message << "\"";
  } catch (const E& Ex) {
    if (Ex.Message() != Message)
      ADD_FAILURE_AT(File, Line) << "message \"" << Ex.Message() << "\", expected \"" << Message
                                 << "\"";
  }
}

} // namespace kxtest
