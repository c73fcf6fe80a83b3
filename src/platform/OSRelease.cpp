// SPDX-License-Identifier: MIT
// os-release text: NAME=value lines with the shell's quoting, on every platform.
#include "platform/Environment.h"

namespace kx::platform {

namespace {

bool IsBlank(char C) {
  return C == ' ' || C == '\t';
}

// Without the characters up to the space at either end, as the runtime's Trim.
std::string_view Trimmed(std::string_view S) {
  while (!S.empty() && uint8_t(S.front()) <= uint8_t(' ')) S.remove_prefix(1);
  while (!S.empty() && uint8_t(S.back()) <= uint8_t(' ')) S.remove_suffix(1);
  return S;
}

bool OnlyBlanks(std::string_view S) {
  for (char C : S)
    if (!IsBlank(C)) return false;
  return true;
}

// '...' is taken as written; "..." and bare text take backslash escapes. A value ends at its
// closing quote (bare text at a blank) and only blanks may follow it.
bool Unquote(std::string_view Raw, AnsiString& Value) {
  Value.clear();
  size_t I = 0;
  char Quote = 0;
  if (!Raw.empty() && (Raw[0] == '"' || Raw[0] == '\'')) Quote = Raw[I++];
  for (; I < Raw.size(); ++I) {
    const char C = Raw[I];
    if (Quote && C == Quote) return OnlyBlanks(Raw.substr(I + 1));
    if (C == '\\' && Quote != '\'' && I + 1 < Raw.size()) {
      Value += Raw[++I];
      continue;
    }
    if (!Quote && IsBlank(C)) return OnlyBlanks(Raw.substr(I));
    Value += C;
  }
  return Quote == 0;
}

bool IsName(std::string_view S) {
  for (char C : S)
    if (!((C >= 'A' && C <= 'Z') || (C >= 'a' && C <= 'z') || (C >= '0' && C <= '9') || C == '_'))
      return false;
  return !S.empty();
}

} // namespace

void ParseOSRelease(const AnsiString& Text, std::vector<std::pair<AnsiString, AnsiString>>& Items) {
  const std::string_view All(Text);
  size_t Start = 0;
  while (Start < All.size()) {
    size_t End = All.find('\n', Start);
    if (End == std::string_view::npos) End = All.size();
    const std::string_view Line = Trimmed(All.substr(Start, End - Start));
    Start = End + 1;
    if (Line.empty() || Line[0] == '#') continue;
    const size_t Eq = Line.find('=');
    if (Eq == std::string_view::npos || !IsName(Line.substr(0, Eq))) continue;
    AnsiString Value;
    if (Unquote(Line.substr(Eq + 1), Value))
      Items.emplace_back(AnsiString(Line.substr(0, Eq)), Value);
  }
}

AnsiString OSReleaseValue(const std::vector<std::pair<AnsiString, AnsiString>>& Items,
                          std::string_view Name) {
  for (const auto& Item : Items)
    if (Item.first == Name) return Item.second;
  return AnsiString();
}

} // namespace kx::platform
