// SPDX-License-Identifier: MIT
// TKxFileStream: text written to a file as raw bytes.
#include <kx/classes/FileStream.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxFileStream, TFileStream, "uKxClasses")

void TKxFileStream::WriteString(const AnsiString& S) {
  if (!S.empty()) Write(S.data(), int32_t(S.size()));
}

void TKxFileStream::WriteString(const UnicodeString& S) {
  if (!S.empty()) Write(S.data(), int32_t(S.size() * 2));
}

} // namespace kx
