// SPDX-License-Identifier: MIT
// The command line: CLI11 parses it (subcommands, per-subcommand --help, usage errors), then
// one subcommand runs. Every failure ends as one line on standard error.
#include "Commands.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>

namespace kxtool {

namespace {

constexpr int UsageError = 2;

// gzip's level flags "-1" to "-9" read as negative numbers to a parser; they are taken out
// first (up to a "--"), the last one winning.
int TakeLevel(std::vector<std::string>& Args) {
  int Level = -1;
  for (auto It = Args.begin(); It != Args.end();) {
    if (*It == "--") break;
    if (It->size() == 2 && (*It)[0] == '-' && (*It)[1] >= '1' && (*It)[1] <= '9') {
      Level = (*It)[1] - '0';
      It = Args.erase(It);
    } else {
      ++It;
    }
  }
  return Level;
}

void AddTextCodec(CLI::App& App, const char* Name, const char* What, TTextCodecOptions& O,
                  bool Wraps) {
  CLI::App* C = App.add_subcommand(Name, What);
  C->add_flag("-d,--decode", O.Decode, "decode data");
  if (Wraps)
    C->add_option("-w,--wrap", O.Wrap,
                  "wrap encoded lines after COLS characters (default 76); "
                  "0 disables line wrapping")
        ->check(CLI::NonNegativeNumber);
  C->add_option("file", O.File, "the input (standard input when absent or -)");
}

} // namespace

int Run(const std::vector<std::string>& ArgsIn, TToolIO& IO) {
  std::vector<std::string> Args = ArgsIn;
  const int LevelFlag = TakeLevel(Args);

  CLI::App App{"kx: the kxcommon codecs, digests and compression streams"};
  App.name("kx");
  App.require_subcommand(1, 1);

  TTextCodecOptions B64, B64Url, Hex;
  B64Url.Codec = TTextCodec::Base64Url;
  Hex.Codec = TTextCodec::Hex;
  AddTextCodec(App, "base64", "Base64 encode or decode (as coreutils base64)", B64, true);
  AddTextCodec(App, "base64url", "URL-safe Base64 without padding; decoding takes either alphabet",
               B64Url, true);
  AddTextCodec(App, "hex", "upper-case hexadecimal (as basenc --base16)", Hex, true);

  std::vector<std::string> UUArgs;
  CLI::App* UUEnc = App.add_subcommand("uuencode", "uuencode FILE (or standard input) as NAME");
  UUEnc->add_option("args", UUArgs, "[FILE] NAME")->required()->expected(1, 2);
  std::string UUFile, UUOut;
  CLI::App* UUDec = App.add_subcommand(
      "uudecode", "decode uuencoded text into the file its begin line names, or -o OUTPUT");
  UUDec->add_option("file", UUFile, "the input (standard input when absent or -)");
  UUDec->add_option("-o,--output-file", UUOut,
                    "write here instead (- or /dev/stdout: "
                    "standard output)");

  bool MD5Check = false, Sha1Check = false;
  std::vector<std::string> MD5Files, Sha1Files;
  CLI::App* MD5 = App.add_subcommand("md5sum", "print or check MD5 checksums (as coreutils)");
  MD5->add_flag("-c,--check", MD5Check, "read checksums from the FILEs and check them");
  MD5->add_option("files", MD5Files, "the files (standard input when none or -)");
  CLI::App* Sha1 = App.add_subcommand("sha1sum", "print or check SHA-1 checksums (as coreutils)");
  Sha1->add_flag("-c,--check", Sha1Check, "read checksums from the FILEs and check them");
  Sha1->add_option("files", Sha1Files, "the files (standard input when none or -)");

  TCompressOptions Gz, Gunzip, Zl, Raw;
  Gunzip.Decompress = true;
  Zl.Framing = TFraming::Zlib;
  Raw.Framing = TFraming::Deflate;
  struct TCompressCommand {
    const char* Name;
    const char* What;
    TCompressOptions* O;
  };
  const TCompressCommand CompressCommands[] = {
      {"gzip",
       "compress FILEs to FILE.gz (or standard input to standard output); -1..-9 "
       "choose the level",
       &Gz},
      {"gunzip", "decompress FILE.gz to FILE (or standard input to standard output)", &Gunzip},
      {"zlib", "compress or decompress zlib-framed data to standard output", &Zl},
      {"deflate", "compress or decompress raw deflate data to standard output", &Raw}};
  std::vector<CLI::App*> CompressApps;
  for (const TCompressCommand& C : CompressCommands) {
    CLI::App* Sub = App.add_subcommand(C.Name, C.What);
    Sub->add_flag("-d,--decompress", C.O->Decompress, "decompress");
    Sub->add_flag("-c,--stdout", C.O->ToStdOut, "write to standard output, keep the input");
    Sub->add_flag("-k,--keep", C.O->Keep, "keep the input files");
    Sub->add_option("files", C.O->Files, "the files (standard input when none or -)");
    Sub->footer("-1 (fastest) to -9 (best) choose the compression level; 6 by default.");
    CompressApps.push_back(Sub);
  }

  TIconvOptions Conv;
  CLI::App* IconvApp =
      App.add_subcommand("iconv", "convert text between code pages (numbers or charset names)");
  IconvApp->add_option("-f,--from-code", Conv.From, "the input's code page or charset");
  IconvApp->add_option("-t,--to-code", Conv.To, "the output's code page or charset");
  IconvApp->add_flag("-l,--list", Conv.List, "list the code pages that have charset names");
  IconvApp->add_option("file", Conv.File, "the input (standard input when absent or -)");

  TMimeSource MimeBy = TMimeSource::Auto;
  std::vector<std::string> MimeFiles;
  CLI::App* MimeApp = App.add_subcommand(
      "mime", "print each file's MIME type (as file --mime-type): by content where the "
              "platform can tell, else by name");
  const std::map<std::string, TMimeSource> MimeSources{
      {"auto", TMimeSource::Auto}, {"name", TMimeSource::Name}, {"content", TMimeSource::Content}};
  MimeApp
      ->add_option("-b,--by", MimeBy,
                   "auto (default), name (the extension only; the file need not exist) or "
                   "content")
      ->transform(CLI::CheckedTransformer(MimeSources).description(""))
      ->type_name("auto|name|content");
  MimeApp->add_option("files", MimeFiles, "the files (- for standard input, by content)")
      ->required();

  TDateOptions DateO;
  CLI::App* DateApp =
      App.add_subcommand("date", "convert instants between ISO 8601, the LUO layout and Unix time");
  const std::map<std::string, TDateForm> DateForms{{"auto", TDateForm::Auto},
                                                   {"iso", TDateForm::Iso},
                                                   {"luo", TDateForm::Luo},
                                                   {"unix", TDateForm::Unix}};
  DateApp
      ->add_option("-f,--from", DateO.From,
                   "the values' form: auto (default: digits are Unix time, a leading letter "
                   "the LUO layout, anything else ISO 8601), iso, luo or unix")
      ->transform(CLI::CheckedTransformer(DateForms).description(""))
      ->type_name("auto|iso|luo|unix");
  DateApp->add_option("-t,--to", DateO.To, "the form to write: iso (default), luo or unix")
      ->transform(CLI::CheckedTransformer(DateForms).description(""))
      ->type_name("iso|luo|unix");
  DateApp->add_flag("-u,--utc", DateO.Utc,
                    "read and write wall-clock times as UTC rather than local time");
  DateApp->add_flag("-m,--msec", DateO.MSec, "write milliseconds in ISO 8601 output");
  DateApp->add_option("values", DateO.Values,
                      "the values (one a line from standard input when none)");
  DateApp->footer(
      "ISO 8601 output carries its zone (Z or +hh:mm), so it reads back as the same instant; "
      "ISO input without one, and LUO input, are local time (UTC with --utc). Unix time is "
      "whole seconds, optionally after @ (a negative one as @-N or after --); converting to it "
      "rounds to the nearest second.");

  std::string Command = Args.empty() ? std::string() : Args.front();
  try {
    std::vector<std::string> Reversed(Args.rbegin(), Args.rend());
    App.parse(Reversed);
  } catch (const CLI::CallForHelp&) {
    WriteText(IO.Out, App.help());
    return 0;
  } catch (const CLI::CallForAllHelp&) {
    WriteText(IO.Out, App.help("", CLI::AppFormatMode::All));
    return 0;
  } catch (const CLI::ParseError& E) {
    const std::string Who =
        App.get_subcommands().empty() ? "kx" : "kx " + App.get_subcommands().front()->get_name();
    WriteText(IO.Err, Who + ": " + OneLine(E.what()) + " (--help for usage)\n");
    return UsageError;
  }

  CLI::App* Sub = App.get_subcommands().front();
  const std::string Name = Sub->get_name();
  try {
    if (LevelFlag > 0) {
      const bool Takes =
          std::find(CompressApps.begin(), CompressApps.end(), Sub) != CompressApps.end();
      if (!Takes) throw TToolError{"-" + std::to_string(LevelFlag) + " is for the compressors", 2};
    }
    if (Sub == App.get_subcommand("base64")) return TextCodec(B64, IO);
    if (Sub == App.get_subcommand("base64url")) return TextCodec(B64Url, IO);
    if (Sub == App.get_subcommand("hex")) return TextCodec(Hex, IO);
    if (Sub == UUEnc) return UUEncode(UUArgs, IO);
    if (Sub == UUDec) return UUDecode(UUFile, UUOut, IO);
    if (Sub == MD5) return DigestSum(TDigest::MD5, MD5Check, MD5Files, IO);
    if (Sub == Sha1) return DigestSum(TDigest::SHA1, Sha1Check, Sha1Files, IO);
    if (Sub == IconvApp) return Iconv(Conv, IO);
    if (Sub == MimeApp) return Mime(MimeBy, MimeFiles, IO);
    if (Sub == DateApp) {
      if (DateO.To == TDateForm::Auto) throw TToolError{"--to takes iso, luo or unix", 2};
      return DateConvert(DateO, IO);
    }
    for (size_t I = 0; I < CompressApps.size(); ++I) {
      if (Sub != CompressApps[I]) continue;
      CompressCommands[I].O->Level = LevelFlag;
      return Compress(*CompressCommands[I].O, IO);
    }
    throw TToolError{"unknown subcommand " + Name, UsageError};
  } catch (const TToolError& E) {
    WriteText(IO.Err, "kx " + Name + ": " + OneLine(E.Message) + "\n");
    return E.Status;
  } catch (const kx::Exception& E) {
    WriteText(IO.Err, "kx " + Name + ": " + OneLine(E.Message()) + "\n");
    return 1;
  } catch (const std::exception& E) {
    WriteText(IO.Err, "kx " + Name + ": " + OneLine(E.what()) + "\n");
    return 1;
  }
}

} // namespace kxtool
