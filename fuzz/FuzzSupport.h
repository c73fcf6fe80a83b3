// SPDX-License-Identifier: MIT
// What every fuzz target shares: the library started once, property checks that abort with
// a message, and the streams the same input is read through.
#pragma once

#include <kx/Package.h>
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Streams.h>

#include "support/ShortReadStream.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

// A property that does not hold is a finding: report it and abort, which libFuzzer records
// together with the input.
#define KX_FUZZ_CHECK(Cond)                                                                        \
  do {                                                                                             \
    if (!(Cond)) {                                                                                 \
      std::fprintf(stderr, "%s:%d: property failed: %s\n", __FILE__, __LINE__, #Cond);             \
      std::abort();                                                                                \
    }                                                                                              \
  } while (0)

namespace kxfuzz {

// The library's start-up runs when its shared object loads; linked statically, the target
// runs it itself.
inline void Start() {
  static const bool Started = (kx::KxInitialize(), true);
  (void)Started;
}

// The outcome of a call: its value, or the class and message of the library exception it
// raised. Anything else (a standard exception, a crash) is left to escape: only the
// library's own exceptions are acceptable answers to bad input.
template <class T>
struct TOutcome {
  std::optional<T> Value;
  std::string Error;

  bool operator==(const TOutcome&) const = default;
};

template <class F>
auto Try(F&& Call) -> TOutcome<decltype(Call())> {
  TOutcome<decltype(Call())> Result;
  try {
    Result.Value.emplace(Call());
  } catch (const kx::Exception& E) {
    Result.Error = std::string(E.ClassName()) + ": " + std::string(E.Message());
  }
  return Result;
}

// Frees a library object at the end of a scope.
struct TFree {
  void operator()(kx::TObject* Object) const {
    if (Object) Object->Free();
  }
};
template <class T>
using TOwned = std::unique_ptr<T, TFree>;

// A memory stream holding Bytes, at position 0.
inline TOwned<kx::TBytesStream> MemoryOf(const std::string& Bytes) {
  return TOwned<kx::TBytesStream>(kx::TBytesStream::Create(kx::TBytes(Bytes.begin(), Bytes.end())));
}

// The same bytes behind a stream that gives at most MaxMove bytes per call and is no memory
// stream, so readers must take their streaming path.
inline TOwned<kxtest::TShortReadStream> ShortReaderOf(const std::string& Bytes, int32_t MaxMove) {
  return TOwned<kxtest::TShortReadStream>(kxtest::TShortReadStream::Create(Bytes, MaxMove));
}

} // namespace kxfuzz
