// SPDX-License-Identifier: MIT
// Sets the process code page (what code page 0 means) for one scope and puts the old one back.
#pragma once

#include <kx/rtl/Strings.h>

#include <cstdint>

namespace kxtest {

class TSystemCodePage {
public:
  explicit TSystemCodePage(uint32_t CodePage) : FSaved(kx::KxSystemCodePage()) {
    kx::KxSetSystemCodePage(CodePage);
  }
  ~TSystemCodePage() { kx::KxSetSystemCodePage(FSaved); }
  TSystemCodePage(const TSystemCodePage&) = delete;
  TSystemCodePage& operator=(const TSystemCodePage&) = delete;

private:
  uint32_t FSaved;
};

} // namespace kxtest
