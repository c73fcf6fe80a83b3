// SPDX-License-Identifier: MIT
#pragma once
// Format with the runtime's semantics: %[index:][-][width][.precision]type.

#include <kx/rtl/Strings.h>

#include <initializer_list>
#include <type_traits>

namespace kx {

// One argument of an "array of const": a tagged value that keeps its kind.
class KX_API TVarRec {
public:
  enum TKind : uint8_t {
    vtInteger,
    vtInt64,
    vtBoolean,
    vtChar,
    vtWideChar,
    vtExtended,
    vtString,
    vtUnicodeString,
    vtPointer
  };

  TVarRec(bool Value) : FKind(vtBoolean) { FData.Int = Value; }
  TVarRec(char Value) : FKind(vtChar) { FData.Int = static_cast<unsigned char>(Value); }
  TVarRec(char16_t Value) : FKind(vtWideChar) { FData.Int = Value; }
  template <class T>
  requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
           !std::is_same_v<T, char16_t>) TVarRec(T Value)
      : FKind(sizeof(T) <= 4 ? vtInteger : vtInt64) {
    if constexpr (std::is_unsigned_v<T> && sizeof(T) == 4)
      FData.Int = static_cast<int32_t>(Value); // 32-bit cardinals travel as integers
    else
      FData.Int = static_cast<int64_t>(Value);
  }
  template <class T>
  requires std::is_floating_point_v<T> TVarRec(T Value) : FKind(vtExtended) {
    FData.Float = static_cast<double>(Value);
  }
  TVarRec(const char* Value) : FKind(vtString), FText(Value ? std::string_view(Value) : "") {}
  TVarRec(const AnsiString& Value) : FKind(vtString), FText(Value) {}
  TVarRec(std::string_view Value) : FKind(vtString), FText(Value) {}
  TVarRec(const char16_t* Value)
      : FKind(vtUnicodeString), FWide(Value ? std::u16string_view(Value) : u"") {}
  TVarRec(const UnicodeString& Value) : FKind(vtUnicodeString), FWide(Value) {}
  TVarRec(std::u16string_view Value) : FKind(vtUnicodeString), FWide(Value) {}
  TVarRec(const void* Value) : FKind(vtPointer) { FData.Ptr = Value; }
  TVarRec(std::nullptr_t) : FKind(vtPointer) { FData.Ptr = nullptr; }

  TKind Kind() const { return FKind; }
  int64_t AsInt() const { return FData.Int; }
  double AsFloat() const { return FData.Float; }
  const void* AsPointer() const { return FData.Ptr; }
  std::string_view AsText() const { return FText; }
  std::u16string_view AsWide() const { return FWide; }

private:
  TKind FKind;
  union {
    int64_t Int;
    double Float;
    const void* Ptr;
  } FData{};
  std::string_view FText;
  std::u16string_view FWide;
};

using TVarRecs = std::initializer_list<TVarRec>;

// Raises EConvertError when a directive does not fit its argument or one is missing.
KX_API AnsiString Format(std::string_view Fmt, TVarRecs Args);
KX_API UnicodeString Format(std::u16string_view Fmt, TVarRecs Args);
// The same over an argument array held elsewhere.
KX_API AnsiString Format(std::string_view Fmt, const TVarRec* Args, size_t Count);

} // namespace kx
