// SPDX-License-Identifier: MIT
// A program that uses kxcommon from outside: checks that the headers match the library it
// loaded and that the library's start-up ran (also when linked statically).
#include <kx/KxVersion.h>
#include <kx/uKxClasses.h>
#include <kx/uKxSysUtils.h>
#include <kx/uKxThreads.h>

#include <cstdio>
#include <cstring>

int main() {
  int Failures = 0;
  auto Check = [&](bool Ok, const char* What) {
    std::printf("%s: %s\n", Ok ? "ok" : "FAILED", What);
    if (!Ok) ++Failures;
  };

  Check(std::strcmp(kx::KxVersion(), KX_VERSION_STRING) == 0, "headers and library agree");
  // Filled by a start-up step, so a static link that dropped the start-up shows 0 here.
  Check(kx::KxGetLanguageCount() == kx::KxLanguageCount, "start-up filled the language list");
  Check(kx::KxGetLanguage(uint16_t(0x0407)).Name == "de-DE", "language record for 0x0407");

  kx::TKxCriticalSection* Lock = kx::TKxCriticalSection::Create();
  Check(Lock->TryEnter(0) && Lock->IsLocked(), "critical section entered");
  Lock->Leave();
  Lock->Free();

  std::printf("kxcommon %s: %s\n", kx::KxVersion(), Failures ? "FAILED" : "all checks passed");
  return Failures ? 1 : 0;
}
