// SPDX-License-Identifier: MIT
// Splitting a string into a list.
#include <kx/classes/KxStringList.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxStringList, TStringList, "uKxClasses")

void TKxStringList::Tokenize(const AnsiString& S, AnsiChar ADelimiter) {
  SetDelimiter(ADelimiter);
  BeginUpdate();
  try {
    Clear();
    size_t Start = 0;
    for (size_t I = 0; I <= S.size(); ++I) {
      if (I < S.size() && S[I] != ADelimiter) continue;
      if (I > Start) Add(S.substr(Start, I - Start));
      Start = I + 1;
    }
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

} // namespace kx
