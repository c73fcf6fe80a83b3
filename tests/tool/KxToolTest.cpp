// SPDX-License-Identifier: MIT
// The kx subcommands run in process on memory streams (so under Wine too): output, exit
// status, one-line errors, and outputs that appear only when complete.
#include "Tool.h"

#include <kx/uKxZLib.h>
#include <kx/windows/ContentType.h>

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>

using namespace kx;

namespace {

struct TRun {
  int Status;
  std::string Out, Err;
};

std::string Text(TMemoryStream* S) {
  return std::string(static_cast<char*>(S->Memory()), size_t(S->Size()));
}

TRun Kx(std::vector<std::string> Args, const std::string& Input = {}) {
  TMemoryStream* In = TMemoryStream::Create();
  TMemoryStream* Out = TMemoryStream::Create();
  TMemoryStream* Err = TMemoryStream::Create();
  if (!Input.empty()) In->WriteBuffer(Input.data(), int32_t(Input.size()));
  In->SetPosition(0);
  kxtool::TToolIO IO;
  IO.In = In;
  IO.Out = Out;
  IO.Err = Err;
  TRun R{kxtool::Run(Args, IO), Text(Out), Text(Err)};
  In->Free();
  Out->Free();
  Err->Free();
  return R;
}

std::string Random(size_t N, uint32_t Start) {
  std::mt19937 Gen(Start);
  std::string S(N, '\0');
  for (char& C : S) C = char(Gen());
  return S;
}

std::string ReadFile(const std::string& Name) {
  std::ifstream F(Name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(F), std::istreambuf_iterator<char>());
}

bool Exists(const std::string& Name) {
  return std::ifstream(Name).good();
}

} // namespace

TEST(KxTool, TextCodecsWrapAndDecode) {
  EXPECT_EQ(Kx({"base64"}, "hello world").Out, "aGVsbG8gd29ybGQ=\n");
  EXPECT_EQ(Kx({"base64", "-w", "0"}, "hello world").Out, "aGVsbG8gd29ybGQ=");
  EXPECT_EQ(Kx({"base64"}, "").Out, "");
  const std::string Data = Random(1000, 1);
  const TRun Wrapped = Kx({"base64", "-w", "10"}, Data);
  EXPECT_EQ(Wrapped.Out.substr(10, 1), "\n");
  EXPECT_EQ(Kx({"base64", "-d"}, Wrapped.Out).Out, Data);
  EXPECT_EQ(Kx({"base64url", "-w", "0"}, "\xfb\xff").Out, "-_8");
  EXPECT_EQ(Kx({"base64url", "-d"}, "-_8").Out, "\xfb\xff");
  EXPECT_EQ(Kx({"hex"}, "\x0a\xff").Out, "0AFF\n");
  EXPECT_EQ(Kx({"hex", "-d"}, "0AFF\n").Out, "\x0a\xff");
}

TEST(KxTool, ErrorsAreOneLineWithTheirStatus) {
  for (auto [Args, Input] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"base64", "-d"}, "QQ=x"},
           {{"base64", "-d"}, "Q"},
           {{"hex", "-d"}, "ABC"},
           {{"hex", "-d"}, "0G"},
           {{"gunzip"}, "not gzip"},
           {{"gunzip"}, ""},
           {{"uudecode", "-o", "-"}, "no begin"},
           {{"iconv", "-f", "nonesuch", "-t", "latin1"}, "x"}}) {
    const TRun R = Kx(Args, Input);
    EXPECT_EQ(R.Status, 1) << Args[0] << " " << Input;
    EXPECT_EQ(R.Out, "");
    ASSERT_FALSE(R.Err.empty());
    EXPECT_EQ(R.Err.find('\n'), R.Err.size() - 1) << R.Err;
    EXPECT_EQ(R.Err.rfind("kx " + Args[0] + ": ", 0), 0u) << R.Err;
  }
  for (auto Args : std::vector<std::vector<std::string>>{{},
                                                         {"nonesuch"},
                                                         {"base64", "-w", "-3"},
                                                         {"base64", "--bogus"},
                                                         {"hex", "-5"},
                                                         {"uuencode"},
                                                         {"iconv", "-f", "utf-8"}}) {
    const TRun R = Kx(Args);
    EXPECT_EQ(R.Status, 2) << (Args.empty() ? "" : Args[0]);
    EXPECT_EQ(R.Err.find('\n'), R.Err.size() - 1) << R.Err;
  }
  const TRun Help = Kx({"gzip", "--help"});
  EXPECT_EQ(Help.Status, 0);
  EXPECT_NE(Help.Out.find("-1 (fastest)"), std::string::npos);
}

TEST(KxTool, DigestsAndChecking) {
  kxtest::TTempFolder Dir;
  const std::string A = Dir.WriteFile("a.txt", "abc");
  const std::string E = Dir.WriteFile("e.txt", "");
  const TRun Sums = Kx({"md5sum", A, E});
  EXPECT_EQ(Sums.Out, "900150983cd24fb0d6963f7d28e17f72  " + A +
                          "\nd41d8cd98f00b204e9800998ecf8427e  " + E + "\n");
  const TRun Sha = Kx({"sha1sum", A, E, "-"}, "abc");
  EXPECT_EQ(Sha.Out, "a9993e364706816aba3e25717850c26c9cd0d89d  " + A +
                         "\nda39a3ee5e6b4b0d3255bfef95601890afd80709  " + E +
                         "\na9993e364706816aba3e25717850c26c9cd0d89d  -\n");
  const std::string List = Dir.WriteFile("list", Sums.Out);
  EXPECT_EQ(Kx({"md5sum", "-c", List}).Out, A + ": OK\n" + E + ": OK\n");
  Dir.WriteFile("a.txt", "abd");
  const TRun Bad = Kx({"md5sum", "-c", List});
  EXPECT_EQ(Bad.Status, 1);
  EXPECT_EQ(Bad.Out, A + ": FAILED\n" + E + ": OK\n");
  EXPECT_EQ(Bad.Err, "kx md5sum: WARNING: 1 computed checksum did NOT match\n");
  const TRun Missing = Kx({"sha1sum", Dir.Name("missing")});
  EXPECT_EQ(Missing.Status, 1);
  EXPECT_EQ(Kx({"sha1sum", "-c"}, "nonsense\n").Status, 1);
}

TEST(KxTool, CompressionReplacesFilesOnlyWhenComplete) {
  kxtest::TTempFolder Dir;
  const std::string Data = Random(300000, 2) + std::string(300000, 'z');
  const std::string F = Dir.WriteFile("data.bin", Data);
  ASSERT_EQ(Kx({"gzip", "-9", F}).Status, 0);
  EXPECT_FALSE(Exists(F));
  ASSERT_TRUE(Exists(F + ".gz"));
  const std::string Packed = ReadFile(F + ".gz");
  EXPECT_EQ(uint8_t(Packed[0]), 0x1f);
  EXPECT_EQ(Kx({"gzip", "-d", "-c", F + ".gz"}).Out, Data);
  ASSERT_EQ(Kx({"gunzip", "-k", F + ".gz"}).Status, 0);
  EXPECT_EQ(ReadFile(F), Data);
  EXPECT_TRUE(Exists(F + ".gz"));
  // A truncated file leaves no output behind, and the input stays.
  const std::string Cut = Dir.WriteFile("cut.bin.gz", Packed.substr(0, Packed.size() / 2));
  const TRun R = Kx({"gunzip", Cut});
  EXPECT_EQ(R.Status, 1);
  EXPECT_EQ(R.Err, "kx gunzip: " + Cut + ": unexpected end of file\n");
  EXPECT_FALSE(Exists(Dir.Name("cut.bin")));
  EXPECT_TRUE(Exists(Cut));
  for (const auto& Entry : std::filesystem::directory_iterator(Dir.Path()))
    EXPECT_EQ(Entry.path().string().find(".tmp"), std::string::npos) << Entry.path();
  EXPECT_EQ(Kx({"gunzip", F}).Status, 1); // no .gz suffix
}

TEST(KxTool, FramingsAndMembers) {
  const std::string Data = Random(70000, 3);
  for (const char* Cmd : {"gzip", "zlib", "deflate"}) {
    const TRun Packed = Kx({Cmd, "-1"}, Data);
    ASSERT_EQ(Packed.Status, 0) << Cmd;
    EXPECT_EQ(Kx({Cmd, "-d"}, Packed.Out).Out, Data) << Cmd;
  }
  EXPECT_EQ(uint8_t(Kx({"zlib"}, "x").Out[0]), 0x78);
  // gzip members one after another decompress as one; other trailing bytes warn.
  const std::string Two = Kx({"gzip"}, "one ").Out + Kx({"gzip"}, "two").Out;
  EXPECT_EQ(Kx({"gunzip"}, Two).Out, "one two");
  const TRun Trailing = Kx({"gunzip"}, Kx({"gzip"}, "data").Out + "junk");
  EXPECT_EQ(Trailing.Status, 2);
  EXPECT_EQ(Trailing.Out, "data");
}

TEST(KxTool, UUAndIconv) {
  const TRun Enc = Kx({"uuencode", "cat.txt"}, "Cat");
  EXPECT_EQ(Enc.Out, "begin 644 cat.txt\r\n#0V%T\r\n`\r\nend\r\n");
  EXPECT_EQ(Kx({"uudecode", "-o", "-"}, Enc.Out).Out, "Cat");
  kxtest::TTempFolder Dir;
  const std::string Target = Dir.Name("out.bin");
  const std::string Text = "begin 600 " + Target + "\n#86)C\n`\nend\n";
  ASSERT_EQ(Kx({"uudecode"}, Text).Status, 0);
  EXPECT_EQ(ReadFile(Target), "abc");
  EXPECT_EQ(Kx({"iconv", "-f", "UTF-8", "-t", "ISO-8859-1"}, "caf\xc3\xa9").Out, "caf\xe9");
  EXPECT_EQ(Kx({"iconv", "-f", "1252", "-t", "utf-16"}, "\x80").Out, std::string("\xac\x20", 2));
  EXPECT_EQ(Kx({"iconv", "-f", "utf-16", "-t", "65001"}, std::string("\xac\x20", 2)).Out,
            "\xe2\x82\xac");
}

TEST(KxTool, DateConvertsOneInstantBetweenForms) {
  // The same instant in each form, read back from each form.
  EXPECT_EQ(Kx({"date", "-u", "1700000000"}).Out, "2023-11-14T22:13:20Z\n");
  EXPECT_EQ(Kx({"date", "-u", "-t", "luo", "@1700000000"}).Out, "NOV 14 2023 10:13:20:000PM\n");
  EXPECT_EQ(Kx({"date", "-t", "unix", "2023-11-14T22:13:20Z"}).Out, "1700000000\n");
  EXPECT_EQ(Kx({"date", "-u", "-t", "unix", "NOV 14 2023 10:13:20:000PM"}).Out, "1700000000\n");
  // An offset names the instant whatever --utc says; milliseconds only when asked for.
  for (const char* Zone : {"-u", "--msec"}) {
    const TRun R = Kx({"date", Zone, "-t", "unix", "2023-11-15T00:43:20.250+02:30"});
    EXPECT_EQ(R.Out, "1700000000\n") << Zone;
  }
  EXPECT_EQ(Kx({"date", "-u", "-m", "2023-11-15T00:43:20.250+02:30"}).Out,
            "2023-11-14T22:13:20.250Z\n");
  // Before 1899 the time of day is no longer a plain fraction: offsets still move forward.
  EXPECT_EQ(Kx({"date", "-u", "-t", "unix", "1800-06-15T18:30:00Z"}).Out, "-5350339800\n");
  EXPECT_EQ(Kx({"date", "-u", "-5350339800"}).Out, "1800-06-15T18:30:00Z\n");
  EXPECT_EQ(Kx({"date", "-u", "-t", "unix", "1800-06-15T20:30:00+02:00"}).Out, "-5350339800\n");
  EXPECT_EQ(Kx({"date", "-u", "-t", "luo", "--", "-5350339800"}).Out,
            "JUN 15 1800  6:30:00:000PM\n");
  EXPECT_EQ(Kx({"date", "-u", "-t", "unix", "JUN 15 1800  6:30:00:000PM"}).Out, "-5350339800\n");
  EXPECT_EQ(Kx({"date", "-u", "-62135596800", "253402300799"}).Out,
            "0001-01-01T00:00:00Z\n9999-12-31T23:59:59Z\n");
  // Local time writes its offset, so the text reads back as the same instant.
  const TRun Local = Kx({"date", "1700000000"});
  ASSERT_EQ(Local.Status, 0);
  EXPECT_EQ(Kx({"date", "-t", "unix"}, Local.Out).Out, "1700000000\n");
  const TRun Luo = Kx({"date", "-t", "luo", "1700000000"});
  EXPECT_EQ(Kx({"date", "-t", "unix"}, Luo.Out).Out, "1700000000\n");
}

TEST(KxTool, DateReadsLinesAndReportsEachBadValue) {
  const TRun R = Kx({"date", "-u", "-f", "unix"}, "0\n\n  86400 \r\n12x\n99999999999999\n1\n");
  EXPECT_EQ(R.Status, 1);
  EXPECT_EQ(R.Out, "1970-01-01T00:00:00Z\n1970-01-02T00:00:00Z\n1970-01-01T00:00:01Z\n");
  EXPECT_EQ(std::count(R.Err.begin(), R.Err.end(), '\n'), 2) << R.Err;
  EXPECT_EQ(R.Err.rfind("kx date: 12x: ", 0), 0u) << R.Err;
  for (const char* Bad : {"2023-13-01", "2023-11", "12:00:00", "FOO 14 2023 10:13:20:000PM",
                          "10000-01-01", "-253402300800"}) {
    const TRun E = Kx({"date", "-u", "--", Bad});
    EXPECT_EQ(E.Status, 1) << Bad;
    EXPECT_EQ(E.Out, "") << Bad;
    EXPECT_EQ(std::count(E.Err.begin(), E.Err.end(), '\n'), 1) << Bad << ": " << E.Err;
  }
  EXPECT_EQ(Kx({"date", "--to", "auto", "0"}).Status, 2);
  EXPECT_EQ(Kx({"date", "--from", "rfc", "0"}).Status, 2);
}

TEST(KxTool, MimeByNameAndByContent) {
  kxtest::TTempFolder Dir;
  // A PNG's signature under a name that says nothing, and text under a name that says PNG.
  static const char Header[] = "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\0\x01\0\0\0\x01\x08\x06\0\0\0";
  const std::string Png = Dir.WriteFile("picture.dat", std::string(Header, sizeof Header - 1));
  const std::string Named = Dir.WriteFile("notes.png", "plain words\n");
  // The platform's own name for it: FindMimeFromData says image/x-png.
  const std::string PngType(KxGetMimeType(Header, sizeof Header - 1));
  EXPECT_TRUE(PngType == "image/png" || PngType == "image/x-png") << PngType;
  EXPECT_EQ(Kx({"mime", "--by", "name", "page.pdf", Named}).Out,
            "page.pdf: application/pdf\n" + Named + ": image/png\n");
  const TRun Content = Kx({"mime", Png});
  EXPECT_EQ(Content.Status, 0);
  EXPECT_EQ(Content.Out, Png + ": " + PngType + "\n");
  EXPECT_EQ(Kx({"mime", "-b", "content", "-"}, std::string(Header, sizeof Header - 1)).Out,
            "-: " + PngType + "\n");
  // A missing file is one line on standard error; the others are still listed.
  const TRun Missing = Kx({"mime", Dir.Name("absent.txt"), Png});
  EXPECT_EQ(Missing.Status, 1);
  EXPECT_EQ(Missing.Out, Png + ": " + PngType + "\n");
  EXPECT_EQ(std::count(Missing.Err.begin(), Missing.Err.end(), '\n'), 1) << Missing.Err;
  EXPECT_EQ(Kx({"mime"}).Status, 2);
  EXPECT_EQ(Kx({"mime", "-b", "magic", Png}).Status, 2);
}
