// SPDX-License-Identifier: MIT
#pragma once
// The subcommands, each given its parsed options. They raise TToolError or the library's
// exceptions; Run turns either into one line on standard error.

#include "Support.h"

#include <string>
#include <vector>

namespace kxtool {

enum class TTextCodec { Base64, Base64Url, Hex };

struct TTextCodecOptions {
  TTextCodec Codec = TTextCodec::Base64;
  bool Decode = false;
  int Wrap = 76;
  std::string File;
};
int TextCodec(const TTextCodecOptions& O, TToolIO& IO);

// uuencode [FILE] NAME; uudecode [FILE] [-o OUTPUT].
int UUEncode(const std::vector<std::string>& Args, TToolIO& IO);
int UUDecode(const std::string& File, const std::string& Output, TToolIO& IO);

enum class TDigest { MD5, SHA1 };
int DigestSum(TDigest Kind, bool Check, const std::vector<std::string>& Files, TToolIO& IO);

enum class TFraming { Gzip, Zlib, Deflate };
struct TCompressOptions {
  TFraming Framing = TFraming::Gzip;
  bool Decompress = false;
  bool ToStdOut = false;
  bool Keep = false;
  int Level = -1; // zlib's default
  std::vector<std::string> Files;
};
int Compress(const TCompressOptions& O, TToolIO& IO);

struct TIconvOptions {
  std::string From, To, File;
  bool List = false;
};
int Iconv(const TIconvOptions& O, TToolIO& IO);

// mime FILE...: the type by content where the platform can tell, else by name.
enum class TMimeSource { Auto, Name, Content };
int Mime(TMimeSource Source, const std::vector<std::string>& Files, TToolIO& IO);

// date [--from FORM] [--to FORM] [--utc] [VALUE...]: values from the arguments, or one a line
// from standard input.
enum class TDateForm { Auto, Iso, Luo, Unix };
struct TDateOptions {
  TDateForm From = TDateForm::Auto;
  TDateForm To = TDateForm::Iso;
  bool Utc = false;
  bool MSec = false;
  std::vector<std::string> Values;
};
int DateConvert(const TDateOptions& O, TToolIO& IO);

} // namespace kxtool
