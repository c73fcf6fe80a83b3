// SPDX-License-Identifier: MIT
// Code pages on POSIX: the locale's charset as a code-page number, and the Win32 conversion
// pair rendered over ICU. UTF-8 runs through ICU's UTF-8 macros behind an ASCII fast path;
// single-byte code pages through tables read once from their ICU converter; everything else
// through ICU converters. The Win32 contract is kept: its argument checks, the flags each code
// page accepts, default characters, WC_COMPOSITECHECK and its companions.
#include "platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>
#include <unordered_map>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kx::platform {

namespace {

constexpr uint32_t CP_ACP_ = 0;
constexpr uint32_t CP_OEMCP_ = 1;
constexpr uint32_t CP_MACCP_ = 2;
constexpr uint32_t CP_THREAD_ACP_ = 3;
constexpr uint32_t CP_SYMBOL_ = 42;
constexpr uint32_t CP_UTF7_ = 65000;
constexpr uint32_t CP_UTF8_ = 65001;
constexpr uint32_t CP_GB18030_ = 54936;

// The ICU converter behind each Windows code page, by canonical name: aliases such as
// "windows-936" name more than one converter. Code pages of the Windows list that are missing
// here have no converter in ICU's data (Johab, the CJK, Arabic, Hebrew, Thai, Romanian,
// Icelandic and Croatian Mac code pages, the IA5 variants, T.61, ISO 6937, Europa, the Taiwanese
// DBCS 20000-20005 and the EBCDIC code pages 20423, 20833, 20880, 20905 and 20924): they are
// refused like code pages Windows does not have.
struct TConverterName {
  uint16_t CodePage;
  const char* Name;
};
constexpr TConverterName ConverterNames[] = {
    {37, "ibm-37_P100-1995"},
    {437, "ibm-437_P100-1995"},
    {500, "ibm-500_P100-1995"},
    {708, "ibm-1089_P100-1995"},
    {720, "ibm-720_P100-1997"},
    {737, "ibm-737_P100-1997"},
    {775, "ibm-775_P100-1996"},
    {850, "ibm-850_P100-1995"},
    {852, "ibm-852_P100-1995"},
    {855, "ibm-855_P100-1995"},
    {857, "ibm-857_P100-1995"},
    {858, "ibm-858_P100-1997"},
    {860, "ibm-860_P100-1995"},
    {861, "ibm-861_P100-1995"},
    {862, "ibm-862_P100-1995"},
    {863, "ibm-863_P100-1995"},
    {864, "ibm-864_X110-1999"},
    {865, "ibm-865_P100-1995"},
    {866, "ibm-866_P100-1995"},
    {869, "ibm-869_P100-1995"},
    {870, "ibm-870_P100-1995"},
    {874, "windows-874-2000"},
    {875, "ibm-875_P100-1995"},
    {932, "ibm-943_P15A-2003"},
    {936, "windows-936-2000"},
    {949, "windows-949-2000"},
    {950, "windows-950-2000"},
    {1026, "ibm-1026_P100-1995"},
    {1047, "ibm-1047_P100-1995"},
    {1140, "ibm-1140_P100-1997"},
    {1141, "ibm-1141_P100-1997"},
    {1142, "ibm-1142_P100-1997"},
    {1143, "ibm-1143_P100-1997"},
    {1144, "ibm-1144_P100-1997"},
    {1145, "ibm-1145_P100-1997"},
    {1146, "ibm-1146_P100-1997"},
    {1147, "ibm-1147_P100-1997"},
    {1148, "ibm-1148_P100-1997"},
    {1149, "ibm-1149_P100-1997"},
    {1250, "ibm-5346_P100-1998"},
    {1251, "ibm-5347_P100-1998"},
    {1252, "ibm-5348_P100-1997"},
    {1253, "ibm-5349_P100-1998"},
    {1254, "ibm-5350_P100-1998"},
    {1255, "ibm-9447_P100-2002"},
    {1256, "ibm-9448_X100-2005"},
    {1257, "ibm-9449_P100-2002"},
    {1258, "ibm-5354_P100-1998"},
    {10000, "macos-0_2-10.2"},
    {10006, "macos-6_2-10.4"},
    {10007, "macos-7_3-10.2"},
    // Mac Cyrillic took in the Ukrainian letters; ICU names it x-MacUkraine too.
    {10017, "macos-7_3-10.2"},
    {10029, "macos-29-10.2"},
    {10081, "macos-35-10.2"},
    {20127, "US-ASCII"},
    {20273, "ibm-273_P100-1995"},
    {20277, "ibm-277_P100-1995"},
    {20278, "ibm-278_P100-1995"},
    {20280, "ibm-280_P100-1995"},
    {20284, "ibm-284_P100-1995"},
    {20285, "ibm-285_P100-1995"},
    {20290, "ibm-290_P100-1995"},
    {20297, "ibm-297_P100-1995"},
    {20420, "ibm-420_X120-1999"},
    {20424, "ibm-424_P100-1995"},
    {20838, "ibm-838_P100-1995"},
    {20866, "ibm-878_P100-1996"},
    {20871, "ibm-871_P100-1995"},
    {20932, "euc-jp-2007"},
    {20936, "ibm-1383_P110-1999"},
    {20949, "ibm-970_P110_P110-2006_U2"},
    {21025, "ibm-1025_P100-1995"},
    {21866, "ibm-1168_P100-2002"},
    {28591, "ISO-8859-1"},
    {28592, "ibm-912_P100-1995"},
    {28593, "ibm-913_P100-2000"},
    {28594, "ibm-914_P100-1995"},
    {28595, "ibm-915_P100-1995"},
    {28596, "ibm-1089_P100-1995"},
    {28597, "ibm-9005_X110-2007"},
    {28598, "ibm-5012_P100-1999"},
    {28599, "ibm-920_P100-1995"},
    {28603, "ibm-921_P100-1995"},
    {28605, "ibm-923_P100-1998"},
    // Logical Hebrew: the bytes of ISO-8859-8, read in logical order.
    {38598, "ibm-5012_P100-1999"},
    {50220, "ISO_2022,locale=ja,version=0"},
    {50221, "ISO_2022,locale=ja,version=1"},
    {50225, "ISO_2022,locale=ko,version=0"},
    {50227, "ISO_2022,locale=zh,version=0"},
    {51932, "euc-jp-2007"},
    {51936, "ibm-1383_P110-1999"},
    {51949, "ibm-970_P110_P110-2006_U2"},
    {52936, "HZ"},
    {54936, "gb18030"},
    {57002, "ISCII,version=0"},
    {57003, "ISCII,version=1"},
    {57004, "ISCII,version=5"},
    {57005, "ISCII,version=6"},
    {57006, "ISCII,version=1"},
    {57007, "ISCII,version=4"},
    {57008, "ISCII,version=7"},
    {57009, "ISCII,version=8"},
    {57010, "ISCII,version=3"},
    {57011, "ISCII,version=2"},
    {65000, "UTF-7"},
    {65001, "UTF-8"},
};
constexpr size_t ConverterCount = sizeof(ConverterNames) / sizeof(ConverterNames[0]);

int32_t ConverterIndex(uint32_t CodePage) {
  size_t Lo = 0, Hi = ConverterCount;
  while (Lo < Hi) {
    size_t Mid = (Lo + Hi) / 2;
    if (ConverterNames[Mid].CodePage < CodePage)
      Lo = Mid + 1;
    else
      Hi = Mid;
  }
  return Lo < ConverterCount && ConverterNames[Lo].CodePage == CodePage ? int32_t(Lo) : -1;
}

// The code pages Win32 converts only without flags.
bool RefusesFlags(uint32_t CodePage) {
  return CodePage == CP_SYMBOL_ || (CodePage >= 50220 && CodePage <= 50229) ||
         (CodePage >= 57002 && CodePage <= 57011) || CodePage == CP_UTF7_;
}

bool FlagsAcceptedToWide(uint32_t CodePage, uint32_t Flags) {
  if (RefusesFlags(CodePage)) return Flags == 0;
  if (CodePage == CP_UTF8_ || CodePage == CP_GB18030_) return (Flags & ~MB_ERR_INVALID_CHARS_) == 0;
  // Precomposed output is what the converters give; composite and glyph output are not
  // rendered here.
  return (Flags & ~(MB_PRECOMPOSED_ | MB_ERR_INVALID_CHARS_)) == 0;
}

bool FlagsAcceptedFromWide(uint32_t CodePage, uint32_t Flags) {
  if (RefusesFlags(CodePage)) return Flags == 0;
  if (CodePage == CP_UTF8_ || CodePage == CP_GB18030_) return (Flags & ~WC_ERR_INVALID_CHARS_) == 0;
  constexpr uint32_t Known =
      WC_COMPOSITECHECK_ | WC_DISCARDNS_ | WC_SEPCHARS_ | WC_DEFAULTCHAR_ | WC_NO_BEST_FIT_CHARS_;
  if (Flags & ~Known) return false;
  // The three companions only qualify WC_COMPOSITECHECK.
  if ((Flags & (WC_DISCARDNS_ | WC_SEPCHARS_ | WC_DEFAULTCHAR_)) && !(Flags & WC_COMPOSITECHECK_))
    return false;
  return true;
}

uint32_t CodePageOfCharset(std::string Charset) {
  for (auto& C : Charset) C = static_cast<char>(std::toupper(static_cast<unsigned char>(C)));
  if (Charset == "UTF-8" || Charset == "UTF8") return 65001;
  if (Charset == "ISO-8859-1" || Charset == "ISO8859-1") return 28591;
  if (Charset == "ANSI_X3.4-1968" || Charset == "US-ASCII" || Charset == "ASCII") return 20127;
  if (Charset.rfind("CP", 0) == 0) return static_cast<uint32_t>(std::atoi(Charset.c_str() + 2));
  if (Charset.rfind("ISO-8859-", 0) == 0) return 28590 + std::atoi(Charset.c_str() + 9);
  if (Charset.rfind("ISO8859-", 0) == 0) return 28590 + std::atoi(Charset.c_str() + 8);
  if (Charset == "EUC-JP" || Charset == "EUCJP") return 20932;
  if (Charset == "EUC-KR" || Charset == "EUCKR") return 51949;
  if (Charset == "SHIFT_JIS" || Charset == "SJIS") return 932;
  if (Charset == "GBK" || Charset == "GB2312") return 936;
  if (Charset == "GB18030") return 54936;
  if (Charset == "BIG5" || Charset == "BIG5-HKSCS") return 950;
  if (Charset == "KOI8-R") return 20866;
  if (Charset == "KOI8-U") return 21866;
  if (Charset == "TIS-620") return 874;
  return 65001;
}

uint32_t LocaleCodePage() {
  // From the locale variables the user set (not the C locale the process may still be in);
  // without one, UTF-8 as on any current Linux.
  static uint32_t CodePage = [] {
    for (const char* Var : {"LC_ALL", "LC_CTYPE", "LANG"}) {
      const char* V = std::getenv(Var);
      if (!V || !*V) continue;
      const char* Dot = std::strchr(V, '.');
      if (!Dot) return 65001u;
      std::string Charset(Dot + 1);
      Charset = Charset.substr(0, Charset.find('@'));
      return CodePageOfCharset(Charset);
    }
    return 65001u;
  }();
  return CodePage;
}

// The special numbers Win32 reads as "the code page of this process".
uint32_t ResolveCodePage(uint32_t CodePage) {
  switch (CodePage) {
  case CP_ACP_:
  case CP_THREAD_ACP_:
    return LocaleCodePage();
  case CP_OEMCP_:
    return 437;
  case CP_MACCP_:
    return 10000;
  default:
    return CodePage;
  }
}

// ---- single-byte code pages -------------------------------------------------------------

// Both directions of a single-byte converter, read once from ICU. The Unicode side covers the
// BMP; surrogates have no byte, so each half of a pair becomes one default character, as on
// Windows.
struct TSingleByteTable {
  char16_t ToWide[256];
  uint8_t ToWideValid[256];
  uint8_t FromWide[65536];
  // Per BMP code unit: 1 round-trip mapping, 2 best-fit (ICU fallback) mapping.
  uint8_t FromWideKind[65536];
  uint8_t DefaultChar;
  // Every byte is a character (no input is invalid).
  bool AllValid;
  // 00-7F and U+0000-U+007F map to each other one to one, which the fast paths rely on.
  bool AsciiSame;
};
constexpr uint8_t MapExact = 1;
constexpr uint8_t MapBestFit = 2;

bool IsSingleByte(UConverter* Cnv) {
  UConverterType Type = ucnv_getType(Cnv);
  return (Type == UCNV_SBCS || Type == UCNV_LATIN_1 || Type == UCNV_US_ASCII) &&
         ucnv_getMaxCharSize(Cnv) == 1;
}

void ReadFromWide(UConverter* Cnv, const std::vector<UChar>& Units, bool Fallback,
                  TSingleByteTable& T) {
  UErrorCode Status = U_ZERO_ERROR;
  ucnv_resetFromUnicode(Cnv);
  ucnv_setFallback(Cnv, Fallback);
  ucnv_setFromUCallBack(Cnv, UCNV_FROM_U_CALLBACK_SKIP, nullptr, nullptr, nullptr, &Status);
  std::vector<char> Out(Units.size());
  std::vector<int32_t> Offsets(Units.size());
  char* Target = Out.data();
  const UChar* Source = Units.data();
  ucnv_fromUnicode(Cnv, &Target, Out.data() + Out.size(), &Source, Units.data() + Units.size(),
                   Offsets.data(), true, &Status);
  if (U_FAILURE(Status)) return;
  for (ptrdiff_t I = 0; I < Target - Out.data(); ++I) {
    UChar U = Units[size_t(Offsets[size_t(I)])];
    if (T.FromWideKind[U] != 0) continue;
    T.FromWide[U] = static_cast<uint8_t>(Out[size_t(I)]);
    T.FromWideKind[U] = Fallback ? MapBestFit : MapExact;
  }
}

TSingleByteTable* BuildSingleByteTable(UConverter* Cnv) {
  auto* T = new TSingleByteTable{};
  UErrorCode Status = U_ZERO_ERROR;
  ucnv_setToUCallBack(Cnv, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &Status);
  for (int B = 0; B < 256; ++B) {
    char Byte = static_cast<char>(B);
    UChar U[2];
    Status = U_ZERO_ERROR;
    ucnv_resetToUnicode(Cnv);
    int32_t Len = ucnv_toUChars(Cnv, U, 2, &Byte, 1, &Status);
    if (U_SUCCESS(Status) && Len == 1) {
      T->ToWide[B] = U[0];
      T->ToWideValid[B] = 1;
    } else {
      T->ToWide[B] = u'?';
    }
  }
  std::vector<UChar> Units;
  Units.reserve(0x10000 - 0x800);
  for (uint32_t U = 0; U < 0x10000; ++U)
    if (U < 0xD800 || U > 0xDFFF) Units.push_back(static_cast<UChar>(U));
  ReadFromWide(Cnv, Units, false, *T);
  ReadFromWide(Cnv, Units, true, *T);
  // IBM's PC tables swap three controls (1A, 1C, 7F) that Microsoft's keep in place.
  if (T->ToWide[0x1A] == 0x1C && T->ToWide[0x1C] == 0x7F && T->ToWide[0x7F] == 0x1A) {
    for (uint8_t B : {0x1A, 0x1C, 0x7F}) {
      T->ToWide[B] = B;
      T->FromWide[B] = B;
      T->FromWideKind[B] = MapExact;
    }
  }
  // Windows reads US-ASCII bytes above 7F without their high bit.
  if (ucnv_getType(Cnv) == UCNV_US_ASCII) {
    for (int B = 0x80; B < 0x100; ++B) {
      T->ToWide[B] = char16_t(B & 0x7F);
      T->ToWideValid[B] = 1;
    }
  }
  T->DefaultChar = T->FromWideKind[u'?'] ? T->FromWide[u'?'] : uint8_t('?');
  T->AllValid = true;
  T->AsciiSame = true;
  for (int B = 0; B < 256; ++B) {
    T->AllValid = T->AllValid && T->ToWideValid[B];
    if (B < 0x80)
      T->AsciiSame = T->AsciiSame && T->ToWideValid[B] && T->ToWide[B] == B &&
                     T->FromWideKind[B] == MapExact && T->FromWide[B] == B;
  }
  return T;
}

// ---- ICU converters ------------------------------------------------------------------------

// Tables are immutable once built and shared by all threads; they live as long as the process.
std::atomic<TSingleByteTable*> SingleByteTables[ConverterCount];

// One open converter per code page and thread: ICU converters are not thread-safe.
struct TConverterCache {
  std::unordered_map<uint32_t, UConverter*> Map;
  ~TConverterCache() {
    for (auto& [Cp, Cnv] : Map)
      if (Cnv) ucnv_close(Cnv);
  }
  UConverter* Get(uint32_t CodePage, int32_t Index) {
    auto It = Map.find(CodePage);
    if (It != Map.end()) return It->second;
    UErrorCode Status = U_ZERO_ERROR;
    UConverter* Cnv = ucnv_open(ConverterNames[Index].Name, &Status);
    if (U_FAILURE(Status)) {
      if (Cnv) ucnv_close(Cnv);
      Cnv = nullptr;
    }
    if (Cnv && !ucnv_isFixedWidth(Cnv, &Status) && ucnv_getMinCharSize(Cnv) == 1 &&
        ucnv_getType(Cnv) != UCNV_ISO_2022 && ucnv_getType(Cnv) != UCNV_HZ &&
        ucnv_getType(Cnv) != UCNV_UTF7 && ucnv_getType(Cnv) != UCNV_ISCII) {
      // Windows puts '?' for what the code page cannot hold; ICU's own choice is often 1A.
      UChar Question = u'?';
      char Bytes[8];
      Status = U_ZERO_ERROR;
      int32_t Len = ucnv_fromUChars(Cnv, Bytes, sizeof Bytes, &Question, 1, &Status);
      if (U_SUCCESS(Status) && Len > 0 && Len <= 4) {
        Status = U_ZERO_ERROR;
        ucnv_setSubstChars(Cnv, Bytes, static_cast<int8_t>(Len), &Status);
      }
    }
    Map.emplace(CodePage, Cnv);
    return Cnv;
  }
};

UConverter* Converter(uint32_t CodePage, int32_t Index) {
  thread_local TConverterCache Cache;
  return Cache.Get(CodePage, Index);
}

const TSingleByteTable* SingleByteTable(uint32_t CodePage, int32_t Index) {
  TSingleByteTable* T = SingleByteTables[Index].load(std::memory_order_acquire);
  if (T) return T;
  UConverter* Cnv = Converter(CodePage, Index);
  if (!Cnv || !IsSingleByte(Cnv)) return nullptr;
  // The converter is this thread's; its settings are put back by each conversion.
  TSingleByteTable* Built = BuildSingleByteTable(Cnv);
  TSingleByteTable* Expected = nullptr;
  if (!SingleByteTables[Index].compare_exchange_strong(Expected, Built,
                                                       std::memory_order_acq_rel)) {
    delete Built;
    return Expected;
  }
  return Built;
}

enum TKind { kdUnknown, kdRefused, kdSymbol, kdUtf8, kdSingleByte, kdIcu };

struct TCodePage {
  TKind Kind = kdUnknown;
  UConverter* Cnv = nullptr;
  const TSingleByteTable* Table = nullptr;
};

TCodePage Lookup(uint32_t CodePage) {
  TCodePage R;
  if (CodePage == 1200 || CodePage == 1201 || CodePage == 12000 || CodePage == 12001) {
    R.Kind = kdRefused;
    return R;
  }
  if (CodePage == CP_SYMBOL_) {
    R.Kind = kdSymbol;
    return R;
  }
  if (CodePage == CP_UTF8_) {
    R.Kind = kdUtf8;
    return R;
  }
  int32_t Index = ConverterIndex(CodePage);
  if (Index < 0) return R;
  R.Table = SingleByteTable(CodePage, Index);
  if (R.Table) {
    R.Kind = kdSingleByte;
    return R;
  }
  R.Cnv = Converter(CodePage, Index);
  if (R.Cnv) R.Kind = kdIcu;
  return R;
}

// ---- results -------------------------------------------------------------------------------

int32_t Fail(uint32_t Code) {
  SetLastError(Code);
  return 0;
}

// A conversion's output: either counting (no buffer) or writing into a bounded buffer.
template <class C>
struct TSink {
  C* Dst;
  size_t Cap;
  size_t Len = 0;
  bool Overflow = false;
  bool Put(C Unit) {
    if (Dst) {
      if (Len >= Cap) return Overflow = true, false;
      Dst[Len] = Unit;
    }
    ++Len;
    return true;
  }
};

// ---- UTF-8 ---------------------------------------------------------------------------------

// The number of ASCII bytes at S, looking at up to 16 (8 without SSE2) and never past N; when
// Dst is given, the bytes looked at are widened into it (those past the ASCII run too: the
// caller overwrites them), so Dst must have room for all of them.
inline int32_t AsciiRun(const uint8_t* S, int32_t N, char16_t* Dst) {
#if defined(__SSE2__)
  if (N >= 16) {
    __m128i V = _mm_loadu_si128(reinterpret_cast<const __m128i*>(S));
    if (Dst) {
      const __m128i Zero = _mm_setzero_si128();
      _mm_storeu_si128(reinterpret_cast<__m128i*>(Dst), _mm_unpacklo_epi8(V, Zero));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(Dst + 8), _mm_unpackhi_epi8(V, Zero));
    }
    unsigned Mask = unsigned(_mm_movemask_epi8(V));
    return Mask ? std::countr_zero(Mask) : 16;
  }
#endif
  if (N >= 8) {
    uint64_t V;
    std::memcpy(&V, S, 8);
    if (Dst)
      for (int K = 0; K < 8; ++K) Dst[K] = S[K];
    uint64_t High = V & 0x8080808080808080ull;
    return High ? std::countr_zero(High) / 8 : 8;
  }
  return 0;
}

// Ill-formed sequences (each maximal subpart, as ICU reads them) become U+FFFD, or fail the
// conversion when Strict. Checked is false when Cap is at least N: no byte yields more than
// one code unit, so the output never outruns the input and needs no room checks.
template <bool Write, bool Checked>
int32_t Utf8ToWideImpl(const uint8_t* S, int32_t N, char16_t* Dst, int32_t Cap, bool Strict) {
  int32_t I = 0, O = 0;
  while (I < N) {
    if (S[I] < 0x80) {
      // A run of ASCII, many bytes at a time where there is room for them.
      if (!Write || !Checked || Cap - O >= 16) {
        int32_t Run = AsciiRun(S + I, N - I, Write ? Dst + O : nullptr);
        if (Run > 0) {
          I += Run;
          O += Run;
          continue;
        }
      }
      if (Write) {
        if (Checked && O >= Cap) return Fail(ERROR_INSUFFICIENT_BUFFER_);
        Dst[O] = S[I];
      }
      ++I, ++O;
      continue;
    }
    UChar32 C;
    U8_NEXT(S, I, N, C);
    if (C < 0) {
      if (Strict) return Fail(ERROR_NO_UNICODE_TRANSLATION_);
      C = 0xFFFD;
    }
    if (C <= 0xFFFF) {
      if (Write) {
        if (Checked && O >= Cap) return Fail(ERROR_INSUFFICIENT_BUFFER_);
        Dst[O] = static_cast<char16_t>(C);
      }
      ++O;
    } else {
      if (Write) {
        if (Checked && Cap - O < 2) return Fail(ERROR_INSUFFICIENT_BUFFER_);
        Dst[O] = U16_LEAD(C);
        Dst[O + 1] = U16_TRAIL(C);
      }
      O += 2;
    }
  }
  return O;
}

int32_t Utf8ToWide(const uint8_t* S, size_t N, char16_t* Dst, size_t Cap, bool Strict) {
  // One code unit per byte at most, so the count fits as the source length does.
  if (!Dst) return Utf8ToWideImpl<false, false>(S, int32_t(N), nullptr, 0, Strict);
  if (Cap >= N) return Utf8ToWideImpl<true, false>(S, int32_t(N), Dst, int32_t(Cap), Strict);
  return Utf8ToWideImpl<true, true>(S, int32_t(N), Dst, int32_t(Cap), Strict);
}

// Unpaired surrogates become U+FFFD, or fail the conversion when Strict.
int32_t WideToUtf8(const char16_t* S, size_t N, char* Dst, size_t Cap, bool Strict) {
  size_t I = 0, O = 0;
  while (I < N) {
    // ASCII runs, four code units at a time.
    while (I + 4 <= N && (!Dst || O + 4 <= Cap)) {
      uint64_t V;
      std::memcpy(&V, S + I, 8);
      if (V & 0xFF80FF80FF80FF80ull) break;
      if (Dst)
        for (size_t K = 0; K < 4; ++K) Dst[O + K] = static_cast<char>(S[I + K]);
      I += 4;
      O += 4;
    }
    if (I >= N) break;
    UChar32 C;
    int32_t Pos = 0;
    int32_t Avail = N - I > 2 ? 2 : int32_t(N - I);
    U16_NEXT(S + I, Pos, Avail, C);
    I += size_t(Pos);
    if (U_IS_SURROGATE(C)) {
      if (Strict) return Fail(ERROR_NO_UNICODE_TRANSLATION_);
      C = 0xFFFD;
    }
    size_t Bytes = U8_LENGTH(C);
    if (Dst) {
      if (O + Bytes > Cap) return Fail(ERROR_INSUFFICIENT_BUFFER_);
      uint8_t* P = reinterpret_cast<uint8_t*>(Dst);
      size_t At = O;
      U8_APPEND_UNSAFE(P, At, C);
    }
    O += Bytes;
    if (O > size_t(INT32_MAX)) return Fail(ERROR_INVALID_PARAMETER_);
  }
  return int32_t(O);
}

// ---- the symbol code page -----------------------------------------------------------------

int32_t SymbolToWide(const uint8_t* S, size_t N, char16_t* Dst, size_t Cap) {
  if (Dst && N > Cap) return Fail(ERROR_INSUFFICIENT_BUFFER_);
  if (Dst)
    for (size_t I = 0; I < N; ++I) Dst[I] = S[I] < 0x20 ? S[I] : char16_t(0xF000 + S[I]);
  return int32_t(N);
}

int32_t WideToSymbol(const char16_t* S, size_t N, char* Dst, size_t Cap) {
  for (size_t I = 0; I < N; ++I)
    if (S[I] >= 0x20 && (S[I] < 0xF020 || S[I] > 0xF0FF))
      return Fail(ERROR_NO_UNICODE_TRANSLATION_);
  if (Dst && N > Cap) return Fail(ERROR_INSUFFICIENT_BUFFER_);
  if (Dst)
    for (size_t I = 0; I < N; ++I) Dst[I] = static_cast<char>(S[I] & 0xFF);
  return int32_t(N);
}

// ---- composition (WC_COMPOSITECHECK) -------------------------------------------------------

const UNormalizer2* Nfc() {
  static const UNormalizer2* N = [] {
    UErrorCode Status = U_ZERO_ERROR;
    const UNormalizer2* R = unorm2_getNFCInstance(&Status);
    return U_SUCCESS(Status) ? R : nullptr;
  }();
  return N;
}

// The precomposed character of a base and a following nonspacing mark, 0 when there is none.
char16_t ComposePair(char16_t Base, char16_t Mark) {
  // Every second member of a canonical pair lies at or above U+0300.
  if (Mark < 0x300 || U16_IS_SURROGATE(Base) || U16_IS_SURROGATE(Mark) || !Nfc()) return 0;
  UChar32 C = unorm2_composePair(Nfc(), Base, Mark);
  return C > 0 && C <= 0xFFFF ? static_cast<char16_t>(C) : 0;
}

// What WC_COMPOSITECHECK does with the pair at S[I], S[I + 1]: the character to write for the
// pair (Mapped), the default character for it, or one of the pair's characters alone.
enum TCompose { cmNone, cmComposed, cmDefault, cmDropMark };

template <class CanMap>
TCompose CheckPair(const char16_t* S, size_t I, size_t N, uint32_t Flags, CanMap Mappable,
                   char16_t& Composed) {
  if (!(Flags & WC_COMPOSITECHECK_) || I + 1 >= N) return cmNone;
  Composed = ComposePair(S[I], S[I + 1]);
  if (!Composed) return cmNone;
  if (Mappable(Composed)) return cmComposed;
  if (Flags & WC_DEFAULTCHAR_) return cmDefault;
  if (Flags & WC_DISCARDNS_) return cmDropMark;
  // WC_SEPCHARS, the default: both characters as they are.
  return cmNone;
}

// ---- single-byte conversions ---------------------------------------------------------------

int32_t SingleByteToWide(const TSingleByteTable& T, const uint8_t* S, size_t N, char16_t* Dst,
                         size_t Cap, bool Strict) {
  if (Strict && !T.AllValid)
    for (size_t I = 0; I < N; ++I)
      if (!T.ToWideValid[S[I]]) return Fail(ERROR_NO_UNICODE_TRANSLATION_);
  if (!Dst) return int32_t(N);
  if (N > Cap) return Fail(ERROR_INSUFFICIENT_BUFFER_);
  size_t I = 0;
  // Sixteen bytes at a time: widened when all are ASCII, else looked up one by one.
  while (N - I >= 16) {
    if (!T.AsciiSame || AsciiRun(S + I, 16, Dst + I) != 16)
      for (size_t K = 0; K < 16; ++K) Dst[I + K] = T.ToWide[S[I + K]];
    I += 16;
  }
  for (; I < N; ++I) Dst[I] = T.ToWide[S[I]];
  return int32_t(N);
}

// How many of the 16 code units at S are ASCII, from the first; their bytes (and garbage for
// the rest, which the caller overwrites) go to Dst.
inline int32_t NarrowAsciiRun(const char16_t* S, char* Dst) {
#if defined(__SSE2__)
  __m128i A = _mm_loadu_si128(reinterpret_cast<const __m128i*>(S));
  __m128i B = _mm_loadu_si128(reinterpret_cast<const __m128i*>(S + 8));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(Dst), _mm_packus_epi16(A, B));
  // A unit is ASCII when none of its bits above the lowest seven is set.
  const __m128i High = _mm_set1_epi16(static_cast<short>(0xFF80));
  const __m128i Zero = _mm_setzero_si128();
  __m128i Ascii = _mm_packs_epi16(_mm_cmpeq_epi16(_mm_and_si128(A, High), Zero),
                                  _mm_cmpeq_epi16(_mm_and_si128(B, High), Zero));
  unsigned Other = ~unsigned(_mm_movemask_epi8(Ascii)) & 0xFFFFu;
  return Other ? std::countr_zero(Other) : 16;
#else
  int32_t Run = 0;
  while (Run < 16 && S[Run] < 0x80) {
    Dst[Run] = static_cast<char>(S[Run]);
    ++Run;
  }
  return Run;
#endif
}

int32_t WideToSingleByte(const TSingleByteTable& T, uint32_t Flags, const char16_t* S, size_t N,
                         char* Dst, size_t Cap) {
  const bool Composite = (Flags & WC_COMPOSITECHECK_) != 0;
  // Only composition changes the length: without a mark that could compose, it is N.
  if (!Dst) {
    bool Marks = false;
    for (size_t I = 1; Composite && I < N && !Marks; ++I) Marks = S[I] >= 0x300;
    if (!Marks) return int32_t(N);
  }
  const uint8_t Allowed = (Flags & WC_NO_BEST_FIT_CHARS_) ? MapExact : (MapExact | MapBestFit);
  auto Mappable = [&](char16_t U) { return (T.FromWideKind[U] & Allowed) != 0; };
  auto Byte = [&](char16_t U) { return Mappable(U) ? T.FromWide[U] : T.DefaultChar; };
  TSink<char> Out{Dst, Cap};
  for (size_t I = 0; I < N; ++I) {
    if (Dst && T.AsciiSame && N - I >= 16 && Cap - Out.Len >= 16) {
      int32_t Run = NarrowAsciiRun(S + I, Dst + Out.Len);
      // The last of the run may compose with a mark that follows it.
      if (Composite && Run > 0 && I + size_t(Run) < N && S[I + size_t(Run)] >= 0x300) --Run;
      if (Run > 0) {
        I += size_t(Run) - 1;
        Out.Len += size_t(Run);
        continue;
      }
    }
    char16_t Composed = 0;
    TCompose Action = Composite && I + 1 < N && S[I + 1] >= 0x300
                          ? CheckPair(S, I, N, Flags, Mappable, Composed)
                          : cmNone;
    bool Ok;
    switch (Action) {
    case cmComposed:
      Ok = Out.Put(static_cast<char>(T.FromWide[Composed]));
      ++I;
      break;
    case cmDefault:
      Ok = Out.Put(static_cast<char>(T.DefaultChar));
      ++I;
      break;
    case cmDropMark:
      Ok = Out.Put(static_cast<char>(Byte(S[I])));
      ++I;
      break;
    default:
      Ok = Out.Put(static_cast<char>(Byte(S[I])));
      break;
    }
    if (!Ok) return Fail(ERROR_INSUFFICIENT_BUFFER_);
  }
  return int32_t(Out.Len);
}

// ---- ICU conversions -----------------------------------------------------------------------

int32_t ReportStatus(UErrorCode Status) {
  if (Status == U_BUFFER_OVERFLOW_ERROR) return Fail(ERROR_INSUFFICIENT_BUFFER_);
  if (Status == U_INVALID_CHAR_FOUND || Status == U_ILLEGAL_CHAR_FOUND ||
      Status == U_TRUNCATED_CHAR_FOUND || Status == U_ILLEGAL_ESCAPE_SEQUENCE ||
      Status == U_UNSUPPORTED_ESCAPE_SEQUENCE)
    return Fail(ERROR_NO_UNICODE_TRANSLATION_);
  return Fail(ERROR_INVALID_PARAMETER_);
}

int32_t IcuToWide(UConverter* Cnv, const char* S, size_t N, char16_t* Dst, size_t Cap,
                  bool Strict) {
  UErrorCode Status = U_ZERO_ERROR;
  ucnv_setToUCallBack(Cnv, Strict ? UCNV_TO_U_CALLBACK_STOP : UCNV_TO_U_CALLBACK_SUBSTITUTE,
                      nullptr, nullptr, nullptr, &Status);
  ucnv_resetToUnicode(Cnv);
  int32_t Len = ucnv_toUChars(Cnv, reinterpret_cast<UChar*>(Dst), Dst ? int32_t(Cap) : 0, S,
                              int32_t(N), &Status);
  if (!Dst && Status == U_BUFFER_OVERFLOW_ERROR) return Len;
  if (U_FAILURE(Status)) return ReportStatus(Status);
  return Len;
}

bool IcuMaps(UConverter* Cnv, char16_t U) {
  UErrorCode Status = U_ZERO_ERROR;
  ucnv_setFromUCallBack(Cnv, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &Status);
  ucnv_resetFromUnicode(Cnv);
  char Buf[16];
  UChar Unit = U;
  ucnv_fromUChars(Cnv, Buf, sizeof Buf, &Unit, 1, &Status);
  return U_SUCCESS(Status);
}

// Windows writes one default character per code unit it cannot convert, so a surrogate pair
// gets two; ICU's own substitution writes one per code point.
void U_CALLCONV SubstitutePerUnit(const void*, UConverterFromUnicodeArgs* Args, const UChar*,
                                  int32_t Length, UChar32, UConverterCallbackReason Reason,
                                  UErrorCode* Error) {
  if (Reason > UCNV_IRREGULAR) return;
  *Error = U_ZERO_ERROR;
  for (int32_t I = 0; I < Length && U_SUCCESS(*Error); ++I) ucnv_cbFromUWriteSub(Args, 0, Error);
}

int32_t WideToIcu(UConverter* Cnv, uint32_t Flags, const char16_t* S, size_t N, char* Dst,
                  size_t Cap) {
  UErrorCode Status = U_ZERO_ERROR;
  ucnv_setFallback(Cnv, !(Flags & WC_NO_BEST_FIT_CHARS_));
  // WC_COMPOSITECHECK works on the text before the converter sees it.
  std::u16string Prepared;
  if (Flags & WC_COMPOSITECHECK_) {
    auto Mappable = [&](char16_t U) { return IcuMaps(Cnv, U); };
    Prepared.reserve(N);
    for (size_t I = 0; I < N; ++I) {
      char16_t Composed = 0;
      TCompose Action =
          I + 1 < N && S[I + 1] >= 0x300 ? CheckPair(S, I, N, Flags, Mappable, Composed) : cmNone;
      switch (Action) {
      case cmComposed:
        Prepared += Composed;
        ++I;
        break;
      case cmDefault:
        Prepared += u'?';
        ++I;
        break;
      case cmDropMark:
        Prepared += S[I];
        ++I;
        break;
      default:
        Prepared += S[I];
        break;
      }
    }
    S = Prepared.data();
    N = Prepared.size();
  }
  const bool Strict = (Flags & WC_ERR_INVALID_CHARS_) != 0;
  Status = U_ZERO_ERROR;
  ucnv_setFromUCallBack(Cnv, Strict ? UCNV_FROM_U_CALLBACK_STOP : SubstitutePerUnit, nullptr,
                        nullptr, nullptr, &Status);
  ucnv_resetFromUnicode(Cnv);
  int32_t Len = ucnv_fromUChars(Cnv, Dst, Dst ? int32_t(Cap) : 0, reinterpret_cast<const UChar*>(S),
                                int32_t(N), &Status);
  if (Status == U_STRING_NOT_TERMINATED_WARNING) Status = U_ZERO_ERROR;
  if (!Dst && Status == U_BUFFER_OVERFLOW_ERROR) return Len;
  if (U_FAILURE(Status)) return ReportStatus(Status);
  return Len;
}

// The source length Win32 would take, or -1 when the arguments are refused.
template <class C>
int64_t SourceLength(const C* Src, int32_t SrcLen) {
  if (!Src || SrcLen == 0 || SrcLen < -1) return -1;
  if (SrcLen > 0) return SrcLen;
  size_t N = 0;
  while (Src[N]) ++N;
  return int64_t(N) + 1;
}

} // namespace

uint32_t SystemCodePage() {
  return LocaleCodePage();
}

bool IsValidCodePage(uint32_t CodePage) {
  TKind Kind = Lookup(CodePage).Kind;
  return Kind == kdUtf8 || Kind == kdSingleByte || Kind == kdIcu;
}

uint32_t CodePageMaxCharSize(uint32_t CodePage) {
  TCodePage Cp = Lookup(ResolveCodePage(CodePage));
  switch (Cp.Kind) {
  case kdUtf8:
    return 4;
  case kdSingleByte:
    return 1;
  case kdIcu:
    // UTF-7 spends up to five bytes on one character.
    return CodePage == CP_UTF7_ ? 5 : uint32_t(ucnv_getMaxCharSize(Cp.Cnv));
  default:
    return 0;
  }
}

int32_t MultiByteToWide(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen,
                        char16_t* Dst, int32_t DstLen) {
  int64_t N = SourceLength(Src, SrcLen);
  if (N < 0 || DstLen < 0 || (DstLen > 0 && !Dst)) return Fail(ERROR_INVALID_PARAMETER_);
  CodePage = ResolveCodePage(CodePage);
  TCodePage Cp = Lookup(CodePage);
  if (Cp.Kind == kdUnknown || Cp.Kind == kdRefused) return Fail(ERROR_INVALID_PARAMETER_);
  if (!FlagsAcceptedToWide(CodePage, Flags)) return Fail(ERROR_INVALID_FLAGS_);
  if (DstLen == 0) Dst = nullptr;
  const bool Strict = (Flags & MB_ERR_INVALID_CHARS_) != 0;
  const auto* Bytes = reinterpret_cast<const uint8_t*>(Src);
  switch (Cp.Kind) {
  case kdUtf8:
    return Utf8ToWide(Bytes, size_t(N), Dst, size_t(DstLen), Strict);
  case kdSymbol:
    return SymbolToWide(Bytes, size_t(N), Dst, size_t(DstLen));
  case kdSingleByte:
    return SingleByteToWide(*Cp.Table, Bytes, size_t(N), Dst, size_t(DstLen), Strict);
  default:
    return IcuToWide(Cp.Cnv, Src, size_t(N), Dst, size_t(DstLen), Strict);
  }
}

int32_t MultiByteToWideBound(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen) {
  int64_t N = SourceLength(Src, SrcLen);
  if (N < 0) return Fail(ERROR_INVALID_PARAMETER_);
  uint32_t Resolved = ResolveCodePage(CodePage);
  TCodePage Cp = Lookup(Resolved);
  if (Cp.Kind == kdUnknown || Cp.Kind == kdRefused) return Fail(ERROR_INVALID_PARAMETER_);
  if (!FlagsAcceptedToWide(Resolved, Flags)) return Fail(ERROR_INVALID_FLAGS_);
  // One code unit per byte at most for these; the converters of the others are asked.
  if (Cp.Kind == kdUtf8 || Cp.Kind == kdSymbol || Cp.Kind == kdSingleByte) return int32_t(N);
  return MultiByteToWide(CodePage, Flags, Src, SrcLen, nullptr, 0);
}

int32_t WideToMultiByte(uint32_t CodePage, uint32_t Flags, const char16_t* Src, int32_t SrcLen,
                        char* Dst, int32_t DstLen) {
  int64_t N = SourceLength(Src, SrcLen);
  if (N < 0 || DstLen < 0 || (DstLen > 0 && !Dst)) return Fail(ERROR_INVALID_PARAMETER_);
  CodePage = ResolveCodePage(CodePage);
  TCodePage Cp = Lookup(CodePage);
  if (Cp.Kind == kdUnknown || Cp.Kind == kdRefused) return Fail(ERROR_INVALID_PARAMETER_);
  if (!FlagsAcceptedFromWide(CodePage, Flags)) return Fail(ERROR_INVALID_FLAGS_);
  if (DstLen == 0) Dst = nullptr;
  switch (Cp.Kind) {
  case kdUtf8:
    return WideToUtf8(Src, size_t(N), Dst, size_t(DstLen), (Flags & WC_ERR_INVALID_CHARS_) != 0);
  case kdSymbol:
    return WideToSymbol(Src, size_t(N), Dst, size_t(DstLen));
  case kdSingleByte:
    return WideToSingleByte(*Cp.Table, Flags, Src, size_t(N), Dst, size_t(DstLen));
  default:
    return WideToIcu(Cp.Cnv, Flags, Src, size_t(N), Dst, size_t(DstLen));
  }
}

} // namespace kx::platform
