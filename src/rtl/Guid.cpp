// SPDX-License-Identifier: MIT
// GUIDs in their braced text form.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Interfaces.h>

#include <cstdio>

namespace kx {

TGUID StringToGUID(std::string_view S) {
  auto Hex = [&](size_t At, int Digits) -> uint32_t {
    uint32_t V = 0;
    for (int I = 0; I < Digits; ++I) {
      char C = S[At + size_t(I)];
      uint32_t D = C >= '0' && C <= '9'   ? uint32_t(C - '0')
                   : C >= 'a' && C <= 'f' ? uint32_t(C - 'a' + 10)
                   : C >= 'A' && C <= 'F' ? uint32_t(C - 'A' + 10)
                                          : 16;
      if (D == 16) throw EConvertError(Format("'%s' is not a valid GUID value", {S}));
      V = V * 16 + D;
    }
    return V;
  };
  if (S.size() != 38 || S[0] != '{' || S[9] != '-' || S[14] != '-' || S[19] != '-' ||
      S[24] != '-' || S[37] != '}')
    throw EConvertError(Format("'%s' is not a valid GUID value", {S}));
  TGUID G{Hex(1, 8), uint16_t(Hex(10, 4)), uint16_t(Hex(15, 4)), {}};
  G.D4[0] = uint8_t(Hex(20, 2));
  G.D4[1] = uint8_t(Hex(22, 2));
  for (size_t I = 0; I < 6; ++I) G.D4[2 + I] = uint8_t(Hex(25 + 2 * I, 2));
  return G;
}

AnsiString GUIDToString(const TGUID& G) {
  char Buf[40];
  std::snprintf(Buf, sizeof Buf, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                unsigned(G.D1), unsigned(G.D2), unsigned(G.D3), G.D4[0], G.D4[1], G.D4[2], G.D4[3],
                G.D4[4], G.D4[5], G.D4[6], G.D4[7]);
  return Buf;
}

} // namespace kx
