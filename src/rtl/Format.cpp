// SPDX-License-Identifier: MIT
// Format: the runtime's directives, widths, precisions and argument indexes.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Format.h>

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kx {

namespace {

constexpr const char* SInvalidFormat = "Format '%s' invalid or incompatible with argument";
constexpr const char* SArgumentMissing = "No argument for format '%s'";

// The widest field and the longest precision a directive may ask for: beyond this a format
// is a mistake or an attack, and honouring it would build a string of gigabytes.
constexpr int64_t MaxFieldSize = int64_t(1) << 20;

[[noreturn]] void FormatError(const char* Msg, std::string_view Fmt) {
  throw EConvertError(Format(Msg, {Fmt}));
}

AnsiString Digits(uint64_t Value, unsigned Base) {
  char Buf[32];
  int Len = std::snprintf(Buf, sizeof Buf, Base == 16 ? "%" PRIX64 : "%" PRIu64, Value);
  return AnsiString(Buf, size_t(Len));
}

// Pads the digits with zeros up to the precision, as %d, %u and %x do.
AnsiString ZeroPad(AnsiString S, int Precision) {
  if (Precision > int(S.size())) S.insert(0, size_t(Precision) - S.size(), '0');
  return S;
}

// Scientific text of V with Precision significant digits: mantissa digits and exponent.
void Decompose(double V, int Precision, AnsiString& Mantissa, int& Exponent) {
  char Buf[64];
  std::snprintf(Buf, sizeof Buf, "%.*e", Precision - 1, std::fabs(V));
  const char* E = std::strchr(Buf, 'e');
  Exponent = std::atoi(E + 1);
  Mantissa.clear();
  for (const char* P = Buf; P < E; ++P)
    if (*P != '.') Mantissa += *P;
}

AnsiString ExponentText(int Exponent, int MinDigits, bool PlusSign) {
  AnsiString D = std::to_string(std::abs(Exponent));
  AnsiString R(1, 'E');
  if (Exponent < 0 || PlusSign) R += Exponent < 0 ? '-' : '+';
  if (int(D.size()) < MinDigits) R.append(size_t(MinDigits) - D.size(), '0');
  return R.append(D);
}

// "d.ddd" from the mantissa digits (GCC 12 misreports literal + string concatenations, so
// the pieces are appended).
void AppendMantissa(AnsiString& R, const AnsiString& M) {
  R += M[0];
  if (M.size() > 1) R.append(1, '.').append(M, 1);
}

AnsiString FormatExponent(double V, int Precision) {
  AnsiString M;
  int E;
  Decompose(V, Precision, M, E);
  AnsiString R = std::signbit(V) ? "-" : "";
  AppendMantissa(R, M);
  return R.append(ExponentText(E, 3, true));
}

AnsiString FormatGeneral(double V, int Precision) {
  if (V == 0) return "0";
  AnsiString M;
  int E;
  Decompose(V, Precision, M, E);
  while (M.size() > 1 && M.back() == '0') M.pop_back();
  AnsiString R = std::signbit(V) ? "-" : "";
  // Fixed notation while the integer digits fit the precision and the value is >= 0.00001.
  if (E < Precision && E >= -5) {
    if (E >= 0) {
      if (int(M.size()) <= E + 1)
        R += M + AnsiString(size_t(E + 1) - M.size(), '0');
      else
        R.append(M, 0, size_t(E + 1)).append(1, '.').append(M, size_t(E + 1));
    } else {
      R.append("0.").append(size_t(-E - 1), '0').append(M);
    }
    return R;
  }
  AppendMantissa(R, M);
  return R.append(ExponentText(E, 3, false));
}

AnsiString FormatFixed(double V, int Decimals, bool Thousands) {
  if (std::fabs(V) >= 1e18) return FormatGeneral(V, 18);
  char Buf[400];
  std::snprintf(Buf, sizeof Buf, "%.*f", Decimals, V);
  AnsiString S = Buf;
  if (S == "-0" || (S.rfind("-0.", 0) == 0 && S.find_first_not_of("-0.") == AnsiString::npos))
    S.erase(0, 1); // no negative zero after rounding
  if (Thousands) {
    size_t Start = S[0] == '-' ? 1 : 0;
    size_t Dot = S.find('.');
    if (Dot == AnsiString::npos) Dot = S.size();
    for (ptrdiff_t I = ptrdiff_t(Dot) - 3; I > ptrdiff_t(Start); I -= 3)
      S.insert(size_t(I), 1, ',');
  }
  return S;
}

template <class Char>
struct TFormatter {
  std::basic_string_view<Char> Fmt;
  const TVarRec* Args;
  size_t Count;
  std::basic_string<Char> Out;
  size_t NextArg = 0;

  std::string FmtForMessage() const {
    if constexpr (sizeof(Char) == 1)
      return std::string(Fmt);
    else
      return UnicodeToAnsi(Fmt);
  }
  [[noreturn]] void Invalid() const { FormatError(SInvalidFormat, FmtForMessage()); }

  const TVarRec& TakeArg() {
    if (NextArg >= Count) FormatError(SArgumentMissing, FmtForMessage());
    return Args[NextArg++];
  }

  void Append(std::string_view Ascii) { Out.append(Ascii.begin(), Ascii.end()); }

  // Reads a number or '*' (taken from the arguments); -1 when neither is there.
  int ReadNumber(size_t& I) {
    if (I < Fmt.size() && Fmt[I] == '*') {
      ++I;
      const TVarRec& A = TakeArg();
      if (A.Kind() != TVarRec::vtInteger || A.AsInt() > MaxFieldSize) Invalid();
      return int(A.AsInt());
    }
    if (I >= Fmt.size() || Fmt[I] < '0' || Fmt[I] > '9') return -1;
    int64_t N = 0;
    while (I < Fmt.size() && Fmt[I] >= '0' && Fmt[I] <= '9') {
      N = N * 10 + int(Fmt[I++] - '0');
      if (N > MaxFieldSize) Invalid();
    }
    return int(N);
  }

  std::basic_string<Char> Run() {
    size_t I = 0;
    while (I < Fmt.size()) {
      Char C = Fmt[I];
      if (C != '%') {
        Out += C;
        ++I;
        continue;
      }
      if (++I >= Fmt.size()) Invalid();
      if (Fmt[I] == '%') {
        Out += Char('%');
        ++I;
        continue;
      }
      int N = ReadNumber(I);
      if (I < Fmt.size() && Fmt[I] == ':') {
        if (N < 0) N = 0;
        NextArg = size_t(N);
        ++I;
        N = -1;
      }
      bool Left = false;
      if (N < 0 && I < Fmt.size() && Fmt[I] == '-') {
        Left = true;
        ++I;
      }
      int Width = N >= 0 ? N : ReadNumber(I);
      int Precision = -1;
      if (I < Fmt.size() && Fmt[I] == '.') {
        ++I;
        Precision = ReadNumber(I);
        if (Precision < 0) Precision = 0;
      }
      if (I >= Fmt.size()) Invalid();
      Char Type = Fmt[I++];
      // The letters are ASCII: a wider character is no directive, whatever its low byte.
      if constexpr (sizeof(Char) > 1)
        if (Type > 0x7F) Invalid();
      if (Type >= 'a' && Type <= 'z') Type = Char(Type - 'a' + 'A');
      std::basic_string<Char> Item = Convert(char(Type), Precision, TakeArg());
      if (Width > int(Item.size())) {
        std::basic_string<Char> Pad(size_t(Width) - Item.size(), Char(' '));
        Item = Left ? Item + Pad : Pad + Item;
      }
      Out += Item;
    }
    return std::move(Out);
  }

  static std::basic_string<Char> Widen(std::string_view Ascii) {
    return std::basic_string<Char>(Ascii.begin(), Ascii.end());
  }

  std::basic_string<Char> Text(const TVarRec& A) {
    switch (A.Kind()) {
    case TVarRec::vtString:
      if constexpr (sizeof(Char) == 1)
        return std::string(A.AsText());
      else
        return AnsiToUnicode(A.AsText());
    case TVarRec::vtUnicodeString:
      if constexpr (sizeof(Char) == 1)
        return UnicodeToAnsi(A.AsWide());
      else
        return std::u16string(A.AsWide());
    case TVarRec::vtChar:
      if constexpr (sizeof(Char) == 1)
        return std::string(1, char(A.AsInt()));
      else
        return AnsiToUnicode(std::string(1, char(A.AsInt())));
    case TVarRec::vtWideChar: {
      std::u16string W(1, char16_t(A.AsInt()));
      if constexpr (sizeof(Char) == 1)
        return UnicodeToAnsi(W);
      else
        return W;
    }
    default:
      Invalid();
    }
  }

  double Float(const TVarRec& A) {
    if (A.Kind() != TVarRec::vtExtended) Invalid();
    return A.AsFloat();
  }

  std::basic_string<Char> Convert(char Type, int Precision, const TVarRec& A) {
    bool IsInt = A.Kind() == TVarRec::vtInteger || A.Kind() == TVarRec::vtInt64;
    switch (Type) {
    case 'D': {
      if (!IsInt) Invalid();
      int64_t V = A.AsInt();
      AnsiString D = ZeroPad(Digits(V < 0 ? 0 - uint64_t(V) : uint64_t(V), 10), Precision);
      if (V < 0) D.insert(0, 1, '-');
      return Widen(D);
    }
    case 'U':
    case 'X': {
      if (!IsInt) Invalid();
      uint64_t V =
          A.Kind() == TVarRec::vtInteger ? uint64_t(uint32_t(A.AsInt())) : uint64_t(A.AsInt());
      return Widen(ZeroPad(Digits(V, Type == 'X' ? 16 : 10), Precision));
    }
    case 'S': {
      std::basic_string<Char> S = Text(A);
      if (Precision >= 0 && size_t(Precision) < S.size()) S.resize(size_t(Precision));
      return S;
    }
    case 'P': {
      if (A.Kind() != TVarRec::vtPointer) Invalid();
      return Widen(ZeroPad(Digits(uint64_t(uintptr_t(A.AsPointer())), 16), int(2 * sizeof(void*))));
    }
    case 'E':
    case 'F':
    case 'G':
    case 'N':
    case 'M': {
      double V = Float(A);
      if (std::isnan(V)) return Widen("NAN");
      if (std::isinf(V)) return Widen(V < 0 ? "-INF" : "INF");
      if (Type == 'E')
        return Widen(FormatExponent(V, Precision < 0 ? 15 : std::clamp(Precision, 1, 18)));
      if (Type == 'G')
        return Widen(FormatGeneral(V, Precision < 0 ? 15 : std::clamp(Precision, 1, 18)));
      int Decimals = Precision < 0 ? 2 : std::min(Precision, 18);
      if (Type == 'M') {
        AnsiString S = FormatFixed(std::fabs(V), Decimals, true);
        S.insert(0, V < 0 ? "-$" : "$");
        return Widen(S);
      }
      return Widen(FormatFixed(V, Decimals, Type == 'N'));
    }
    default:
      Invalid();
    }
  }
};

} // namespace

AnsiString Format(std::string_view Fmt, const TVarRec* Args, size_t Count) {
  return TFormatter<char>{Fmt, Args, Count, {}}.Run();
}

AnsiString Format(std::string_view Fmt, TVarRecs Args) {
  return Format(Fmt, Args.begin(), Args.size());
}

UnicodeString Format(std::u16string_view Fmt, TVarRecs Args) {
  return TFormatter<char16_t>{Fmt, Args.begin(), Args.size(), {}}.Run();
}

} // namespace kx
