// SPDX-License-Identifier: MIT
#pragma once
// The kx command line: the library's codecs, digests and compression streams as subcommands
// that behave like the peer tools (base64, basenc, uuencode, md5sum, gzip, iconv).

#include <kx/rtl/Streams.h>

#include <string>
#include <vector>

namespace kxtool {

// Where a run reads and writes; the streams are not owned.
struct TToolIO {
  kx::TStream* In = nullptr;
  kx::TStream* Out = nullptr;
  kx::TStream* Err = nullptr;
  // A progress bar may be drawn on Err.
  bool ErrIsTerminal = false;
};

// Runs one command line (Args without the program name): 0 on success, 1 for an error, 2 for
// a usage error (gzip's warnings, such as trailing garbage, also give 2).
int Run(const std::vector<std::string>& Args, TToolIO& IO);

// The standard streams of the process and whether standard error is a terminal: the one part
// that differs by platform.
kx::THandle StdHandle(int Which);
bool StdErrIsTerminal();

} // namespace kxtool
