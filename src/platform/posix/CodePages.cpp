// Code pages on POSIX: the locale's charset as a code-page number, conversions through ICU.
#include "platform/Platform.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unordered_map>

namespace kx::platform {

namespace {

// ICU converter names for the code-page numbers of Windows.
std::string ConverterName(uint32_t CodePage) {
  switch (CodePage) {
  case 65001:
    return "UTF-8";
  case 65000:
    return "UTF-7";
  case 1200:
    return "UTF-16LE";
  case 1201:
    return "UTF-16BE";
  case 12000:
    return "UTF-32LE";
  case 12001:
    return "UTF-32BE";
  case 20127:
    return "US-ASCII";
  case 28591:
    return "ISO-8859-1";
  case 932:
    return "windows-932";
  case 936:
    return "windows-936";
  case 949:
    return "windows-949";
  case 950:
    return "windows-950";
  default:
    break;
  }
  if (CodePage >= 1250 && CodePage <= 1258) return "windows-" + std::to_string(CodePage);
  if (CodePage >= 28592 && CodePage <= 28605) return "ISO-8859-" + std::to_string(CodePage - 28590);
  return "cp" + std::to_string(CodePage);
}

// One open converter per code page and thread: ICU converters are not thread-safe.
struct TConverterCache {
  std::unordered_map<uint32_t, UConverter*> Map;
  ~TConverterCache() {
    for (auto& [Cp, Cnv] : Map) ucnv_close(Cnv);
  }
  UConverter* Get(uint32_t CodePage) {
    auto It = Map.find(CodePage);
    if (It != Map.end()) return It->second;
    UErrorCode Status = U_ZERO_ERROR;
    UConverter* Cnv = ucnv_open(ConverterName(CodePage).c_str(), &Status);
    if (U_FAILURE(Status)) {
      if (Cnv) ucnv_close(Cnv);
      Cnv = nullptr;
    }
    Map.emplace(CodePage, Cnv);
    return Cnv;
  }
};

UConverter* Converter(uint32_t CodePage) {
  thread_local TConverterCache Cache;
  return Cache.Get(CodePage == 0 ? SystemCodePage() : CodePage);
}

uint32_t CodePageOfCharset(std::string Charset) {
  for (auto& C : Charset) C = static_cast<char>(std::toupper(static_cast<unsigned char>(C)));
  if (Charset == "UTF-8" || Charset == "UTF8") return 65001;
  if (Charset == "ISO-8859-1" || Charset == "ISO8859-1") return 28591;
  if (Charset == "ANSI_X3.4-1968" || Charset == "US-ASCII" || Charset == "ASCII") return 20127;
  if (Charset.rfind("CP", 0) == 0) return static_cast<uint32_t>(std::atoi(Charset.c_str() + 2));
  if (Charset.rfind("ISO-8859-", 0) == 0) return 28590 + std::atoi(Charset.c_str() + 9);
  if (Charset == "EUC-JP" || Charset == "EUCJP") return 20932;
  if (Charset == "SHIFT_JIS" || Charset == "SJIS") return 932;
  if (Charset == "GBK" || Charset == "GB2312") return 936;
  if (Charset == "BIG5") return 950;
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

void ReportError(UErrorCode Status) {
  if (Status == U_BUFFER_OVERFLOW_ERROR)
    SetLastError(ERROR_INSUFFICIENT_BUFFER_);
  else if (Status == U_INVALID_CHAR_FOUND || Status == U_ILLEGAL_CHAR_FOUND ||
           Status == U_TRUNCATED_CHAR_FOUND)
    SetLastError(ERROR_NO_UNICODE_TRANSLATION_);
  else
    SetLastError(ERROR_INVALID_PARAMETER_);
}

} // namespace

uint32_t SystemCodePage() {
  return LocaleCodePage();
}

bool IsValidCodePage(uint32_t CodePage) {
  return Converter(CodePage) != nullptr;
}

int32_t MultiByteToWide(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen,
                        char16_t* Dst, int32_t DstLen) {
  UConverter* Cnv = Converter(CodePage);
  if (!Cnv || !Src || SrcLen < 0 || DstLen < 0) {
    SetLastError(ERROR_INVALID_PARAMETER_);
    return 0;
  }
  UErrorCode Status = U_ZERO_ERROR;
  ucnv_setToUCallBack(Cnv,
                      (Flags & MB_ERR_INVALID_CHARS_) ? UCNV_TO_U_CALLBACK_STOP
                                                      : UCNV_TO_U_CALLBACK_SUBSTITUTE,
                      nullptr, nullptr, nullptr, &Status);
  ucnv_resetToUnicode(Cnv);
  if (SrcLen == 0) return 0;
  int32_t Len =
      ucnv_toUChars(Cnv, reinterpret_cast<UChar*>(Dst), Dst ? DstLen : 0, Src, SrcLen, &Status);
  if (Status == U_BUFFER_OVERFLOW_ERROR && (!Dst || DstLen == 0)) return Len;
  if (U_FAILURE(Status)) return ReportError(Status), 0;
  return Len;
}

int32_t WideToMultiByte(uint32_t CodePage, uint32_t Flags, const char16_t* Src, int32_t SrcLen,
                        char* Dst, int32_t DstLen) {
  UConverter* Cnv = Converter(CodePage);
  if (!Cnv || !Src || SrcLen < 0 || DstLen < 0) {
    SetLastError(ERROR_INVALID_PARAMETER_);
    return 0;
  }
  UErrorCode Status = U_ZERO_ERROR;
  ucnv_setFromUCallBack(Cnv,
                        (Flags & WC_ERR_INVALID_CHARS_) ? UCNV_FROM_U_CALLBACK_STOP
                                                        : UCNV_FROM_U_CALLBACK_SUBSTITUTE,
                        nullptr, nullptr, nullptr, &Status);
  ucnv_resetFromUnicode(Cnv);
  if (SrcLen == 0) return 0;
  int32_t Len = ucnv_fromUChars(Cnv, Dst, Dst ? DstLen : 0, reinterpret_cast<const UChar*>(Src),
                                SrcLen, &Status);
  if ((Status == U_BUFFER_OVERFLOW_ERROR || Status == U_STRING_NOT_TERMINATED_WARNING) &&
      (!Dst || DstLen == 0))
    return Len;
  if (U_FAILURE(Status)) return ReportError(Status), 0;
  return Len;
}

} // namespace kx::platform
