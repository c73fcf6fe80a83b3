// SPDX-License-Identifier: MIT
#pragma once
// The byte-order-mark rule shared by the stream readers of uKxClasses.

#include <kx/rtl/Streams.h>

namespace kx::detail {

// The code page to read the rest of Stream in: SourceCodePage when one is given (>= 0), else
// that of the mark at the position (which the stream is moved behind), else 0. A mark that
// contradicts a given code page raises "The specified encoding does not match the BOM of the
// stream!".
uint16_t StreamSourceCodePage(TStream* Stream, bool DetectBOM, int32_t SourceCodePage);

// Frees a stream on the way out when asked to.
struct TFreeOnExit {
  TObject* Obj;
  explicit TFreeOnExit(TObject* AObj) : Obj(AObj) {}
  TFreeOnExit(const TFreeOnExit&) = delete;
  TFreeOnExit& operator=(const TFreeOnExit&) = delete;
  ~TFreeOnExit() {
    if (Obj) Obj->Free();
  }
};

// The bytes from a stream's position to its end, which the stream is then moved to: in place
// for memory streams, else read into a block that is freed with this object.
struct TStreamRest {
  void* Buf = nullptr;
  int64_t Count = 0;
  bool Owned = false;
  explicit TStreamRest(TStream* Stream);
  ~TStreamRest();
  TStreamRest(const TStreamRest&) = delete;
  TStreamRest& operator=(const TStreamRest&) = delete;
};

} // namespace kx::detail
