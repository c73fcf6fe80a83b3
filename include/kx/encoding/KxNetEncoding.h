// SPDX-License-Identifier: MIT
#pragma once
// The shared codec instances, and the codec for each binary-to-text encoding choice.

#include <kx/classes/BinEncoding.h>
#include <kx/encoding/Base64Encoding.h>
#include <kx/encoding/HexEncoding.h>
#include <kx/encoding/URLEncoding.h>

namespace kx {

inline constexpr const char* SNetEncodingNotSupported =
    "The specified NetEncoding is not supported!";

// Class functions only. Each instance is made on first request and lives until the unit
// shuts down; callers must not free it. Callers that may race on first use should ask for
// the instances up front.
class KX_API TKxNetEncoding {
public:
  TKxNetEncoding() = delete;

  static TKxBase64Encoding* Base64Ex();
  static TKxBase64UrlEncoding* Base64Url();
  static TKxHexEncoding* Hex();
  static TURLEncoding* URL();
  // beBase64: Base64Ex, beHexEncoded: Hex, beBase64Url: Base64Url; any other value raises
  // "The specified NetEncoding is not supported!".
  static TNetEncodingEx* GetEncoding(TKxBinEncoding Encoding);
};

} // namespace kx
