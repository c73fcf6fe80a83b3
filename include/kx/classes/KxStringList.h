// SPDX-License-Identifier: MIT
#pragma once
// A string list that can split a string on a delimiter.

#include <kx/rtl/StringList.h>

namespace kx {

class KX_API TKxStringList : public TStringList {
  KX_CLASS(TKxStringList, TStringList)
public:
  using TStringList::TStringList;
  // Sets Delimiter, clears the list and adds each non-empty field of S between delimiters:
  // empty fields are dropped, nothing is quoted or trimmed.
  void Tokenize(const AnsiString& S, AnsiChar ADelimiter);
};

} // namespace kx
