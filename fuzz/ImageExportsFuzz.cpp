// SPDX-License-Identifier: MIT
// Exported function names of PE and ELF images: any bytes give a list or the library's own
// exception, and the same answer through a memory stream and through one that gives a few
// bytes per read.
#include <kx/rtl/StringList.h>
#include <kx/uKxWindows.h>

#include "FuzzSupport.h"

using namespace kx;

namespace {

std::string Names(TStream* S) {
  kxfuzz::TOwned<TStringList> List(TStringList::Create());
  KxGetExportedFunctionNames(S, List.get());
  std::string All;
  for (int32_t I = 0; I < List->Count(); ++I) {
    KX_FUZZ_CHECK(!List->Strings(I).empty());
    All += List->Strings(I) + '\n';
  }
  return All;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  const std::string Bytes(reinterpret_cast<const char*>(Data) + 1, Size - 1);
  const int32_t MaxMove = 1 + Data[0];
  auto Memory = kxfuzz::MemoryOf(Bytes);
  auto Short = kxfuzz::ShortReaderOf(Bytes, MaxMove);
  const auto Whole = kxfuzz::Try([&] { return Names(Memory.get()); });
  const auto Pieces = kxfuzz::Try([&] { return Names(Short.get()); });
  KX_FUZZ_CHECK(Whole == Pieces);
  return 0;
}
