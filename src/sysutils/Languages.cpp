// SPDX-License-Identifier: MIT
// The language records of uKxSysUtils.
#include <kx/rtl/Lists.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/Languages.h>

#include "platform/Platform.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace kx {

namespace {

// The built-in locale identifiers, in ascending order.
constexpr uint16_t LocaleIDs[] = {
    0x0401, 0x0402, 0x0403, 0x0405, 0x0406, 0x0407, 0x0408, 0x0409, 0x040B, 0x040C, 0x040D, 0x040E,
    0x040F, 0x0410, 0x0411, 0x0412, 0x0413, 0x0414, 0x0415, 0x0416, 0x0417, 0x0418, 0x0419, 0x041A,
    0x041B, 0x041C, 0x041D, 0x041E, 0x041F, 0x0420, 0x0421, 0x0422, 0x0423, 0x0424, 0x0425, 0x0426,
    0x0427, 0x0428, 0x0429, 0x042A, 0x042B, 0x042C, 0x042D, 0x042E, 0x042F, 0x0430, 0x0431, 0x0432,
    0x0433, 0x0434, 0x0435, 0x0436, 0x0437, 0x0438, 0x0439, 0x043A, 0x043B, 0x043E, 0x043F, 0x0440,
    0x0441, 0x0442, 0x0443, 0x0444, 0x0445, 0x0446, 0x0447, 0x0448, 0x0449, 0x044A, 0x044B, 0x044C,
    0x044D, 0x044E, 0x044F, 0x0450, 0x0451, 0x0452, 0x0453, 0x0454, 0x0455, 0x0456, 0x0457, 0x0458,
    0x0459, 0x045A, 0x045B, 0x045C, 0x045D, 0x045E, 0x0460, 0x0461, 0x0462, 0x0463, 0x0464, 0x0465,
    0x0466, 0x0468, 0x046A, 0x046C, 0x046D, 0x046E, 0x046F, 0x0470, 0x0472, 0x0473, 0x0474, 0x0475,
    0x0477, 0x0478, 0x047A, 0x047C, 0x047E, 0x0480, 0x0481, 0x0482, 0x0483, 0x0484, 0x0485, 0x0487,
    0x0488, 0x0491, 0x0801, 0x0804, 0x0807, 0x0809, 0x080A, 0x080C, 0x0810, 0x0813, 0x0814, 0x0816,
    0x0818, 0x0819, 0x081D, 0x0820, 0x082C, 0x082E, 0x0832, 0x083B, 0x083C, 0x083E, 0x0843, 0x0845,
    0x0846, 0x0849, 0x0850, 0x0859, 0x085D, 0x085F, 0x0860, 0x0861, 0x0867, 0x0873, 0x0C01, 0x0C07,
    0x0C09, 0x0C0A, 0x0C0C, 0x0C3B, 0x0C50, 0x1001, 0x1007, 0x1009, 0x100A, 0x100C, 0x101A, 0x103B,
    0x1401, 0x1407, 0x1409, 0x140A, 0x140C, 0x141A, 0x143B, 0x1801, 0x1809, 0x180A, 0x180C, 0x181A,
    0x183B, 0x1C01, 0x1C09, 0x1C0A, 0x1C1A, 0x1C3B, 0x2001, 0x2009, 0x200A, 0x200C, 0x201A, 0x203B,
    0x2401, 0x240A, 0x240C, 0x241A, 0x243B, 0x2801, 0x2809, 0x280A, 0x280C, 0x281A, 0x2C01, 0x2C09,
    0x2C0A, 0x2C0C, 0x2C1A, 0x3001, 0x3009, 0x300A, 0x300C, 0x301A, 0x3401, 0x3409, 0x340A, 0x340C,
    0x3801, 0x380A, 0x380C, 0x3C01, 0x3C09, 0x3C0A, 0x3C0C, 0x4001, 0x4009, 0x400A, 0x4409, 0x440A,
    0x4809, 0x480A, 0x4C0A, 0x500A, 0x540A,
};
static_assert(std::size(LocaleIDs) == KxLanguageCount);

// A primary language's default sub-language (SUBLANG_DEFAULT) is 1, in bits 10 to 15.
constexpr uint16_t PrimaryLanguageMask = 0x03FF;
constexpr uint16_t DefaultSubLanguage = 1 << 10;

// Filled by the start-up step and only read afterwards.
std::vector<TKxLanguage>* Languages = nullptr;

TKxLanguage MakeRecord(uint16_t LocaleID, const AnsiString& Name) {
  TKxLanguage R;
  R.LocaleID = LocaleID;
  R.Name = Name;
  const size_t First = Name.find('-');
  R.Language = Name.substr(0, First);
  R.Region = First == AnsiString::npos ? AnsiString() : Name.substr(Name.rfind('-') + 1);
  return R;
}

const std::vector<TKxLanguage>& List() {
  static const std::vector<TKxLanguage> Empty;
  return Languages ? *Languages : Empty;
}

template <class Pred>
const TKxLanguage* FindFirst(Pred&& Match) {
  const auto& L = List();
  const auto It = std::find_if(L.begin(), L.end(), Match);
  return It == L.end() ? nullptr : &*It;
}

} // namespace

TKxLanguage KxGetLanguage(uint16_t LocaleID) {
  const TKxLanguage* R = FindFirst([&](const TKxLanguage& L) { return L.LocaleID == LocaleID; });
  if (!R) throw Exception(SNoLanguageForLocale, {int32_t(LocaleID)});
  return *R;
}

TKxLanguage KxGetLanguage(const AnsiString& Name) {
  AnsiString Wanted = Name;
  std::replace(Wanted.begin(), Wanted.end(), '_', '-');
  const TKxLanguage* R = FindFirst([&](const TKxLanguage& L) { return SameText(L.Name, Wanted); });
  if (!R && Wanted.find('-') == AnsiString::npos && !Wanted.empty()) {
    R = FindFirst([&](const TKxLanguage& L) {
      return SameText(L.Language, Wanted) &&
             (L.LocaleID & ~PrimaryLanguageMask) == DefaultSubLanguage;
    });
    if (!R) R = FindFirst([&](const TKxLanguage& L) { return SameText(L.Language, Wanted); });
  }
  if (!R) throw Exception(SNoLanguage, {Name});
  return *R;
}

TKxLanguage KxGetLanguage(const AnsiString& Language, const AnsiString& Region) {
  const TKxLanguage* R = FindFirst([&](const TKxLanguage& L) {
    return SameText(L.Language, Language) && SameText(L.Region, Region);
  });
  if (!R) throw Exception(SNoLanguageRegion, {Language, Region});
  return *R;
}

int32_t KxGetLanguageCount() {
  return int32_t(List().size());
}

TKxLanguage KxGetLanguageByIndex(int32_t Index) {
  const auto& L = List();
  if (Index < 0 || size_t(Index) >= L.size()) throw EListError(SListIndexError, {Index});
  return L[size_t(Index)];
}

namespace detail {

void FillLanguages() {
  auto* Filled = new std::vector<TKxLanguage>();
  Filled->reserve(std::size(LocaleIDs));
  for (uint16_t Id : LocaleIDs) {
    AnsiString Name;
    // An identifier the platform does not know (an old Windows) has no record.
    if (platform::LocaleName(Id, Name)) Filled->push_back(MakeRecord(Id, Name));
  }
  delete Languages;
  Languages = Filled;
}

void ClearLanguages() {
  delete Languages;
  Languages = nullptr;
}

} // namespace detail

} // namespace kx
