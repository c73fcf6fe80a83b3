// SPDX-License-Identifier: MIT
// The kx executable against the peer tools on the same bytes: 0 bytes, 1 byte and a large run
// of random data (8 MiB; KX_PEER_MIB=50 for the full check). Skipped where a peer (or a POSIX
// shell, as under Wine) is absent.
#include "support/ExternalTool.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>

namespace {

std::string Random(size_t N, uint32_t Start) {
  std::mt19937_64 Gen(Start);
  std::string S(N, '\0');
  for (size_t I = 0; I + 8 <= N; I += 8) {
    const uint64_t V = Gen();
    std::memcpy(&S[I], &V, 8);
  }
  for (size_t I = N / 8 * 8; I < N; ++I) S[I] = char(Gen());
  return S;
}

std::string ReadFile(const std::string& Name) {
  std::ifstream F(Name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(F), std::istreambuf_iterator<char>());
}

// Runs a shell command; its standard output, or nullopt-like empty with Ok false.
struct TShell {
  bool Ok;
  std::string Out;
};

TShell Shell(const kxtest::TTempFolder& Dir, const std::string& Command) {
  const std::string OutFile = Dir.Name("shell.out");
  const std::string Full = Command + " > '" + OutFile + "'";
  const int Rc = std::system(Full.c_str());
  return {Rc == 0, ReadFile(OutFile)};
}

class PeerTools : public ::testing::Test {
protected:
  void SetUp() override {
    if (!kxtest::ExternalToolPresent("sh")) GTEST_SKIP() << "no POSIX shell";
    Kx = std::string("'") + KX_TOOL_PATH + "'";
    const char* Mib = std::getenv("KX_PEER_MIB");
    const size_t Big = size_t(Mib ? std::max(1, std::atoi(Mib)) : 8) << 20;
    Inputs = {{"empty", ""}, {"one", "\x7f"}, {"big", Random(Big, 50)}};
    for (auto& [Name, Bytes] : Inputs) Files.push_back(Dir.WriteFile(Name, Bytes));
  }
  void Need(const char* Tool) {
    if (!kxtest::ExternalToolPresent(Tool)) GTEST_SKIP() << "tool absent: " << Tool;
  }
  // Both shell commands give the same bytes for every input; {} stands for the input file,
  // KX for the kx executable, LIST for a scratch file.
  void Same(const std::string& Ours, const std::string& Theirs,
            bool (*Takes)(size_t Size) = nullptr) {
    for (size_t I = 0; I < Files.size(); ++I) {
      const std::string& F = Files[I];
      if (Takes && !Takes(Inputs[I].second.size())) continue;
      const auto Sub = [&](std::string C) {
        const std::pair<std::string, std::string> Marks[] = {
            {"{}", "'" + F + "'"}, {"KX", Kx}, {"LIST", "'" + Dir.Name("list") + "'"}};
        for (const auto& [Mark, Value] : Marks)
          for (size_t At; (At = C.find(Mark)) != std::string::npos;)
            C.replace(At, Mark.size(), Value);
        return C;
      };
      const TShell A = Shell(Dir, Sub(Ours));
      const TShell B = Shell(Dir, Sub(Theirs));
      ASSERT_TRUE(A.Ok) << Sub(Ours);
      ASSERT_TRUE(B.Ok) << Sub(Theirs);
      EXPECT_TRUE(A.Out == B.Out) << Sub(Ours) << " vs " << Sub(Theirs) << " (" << A.Out.size()
                                  << " / " << B.Out.size() << " bytes)";
    }
  }

  kxtest::TTempFolder Dir;
  std::string Kx;
  std::vector<std::pair<std::string, std::string>> Inputs;
  std::vector<std::string> Files;
};

} // namespace

TEST_F(PeerTools, Base64AndBasenc) {
  Need("base64");
  Need("basenc");
  Same("KX base64 {}", "base64 {}");
  Same("KX base64 -w 0 < {}", "base64 -w 0 {}");
  Same("KX base64 {} | base64 -d", "cat {}");
  Same("base64 {} | KX base64 -d", "cat {}");
  Same("KX hex {}", "basenc --base16 {}");
  Same("KX hex {} | basenc --base16 -d", "cat {}");
  Same("basenc --base16 {} | KX hex -d", "cat {}");
  // Theirs pads; ours does not.
  Same("KX base64url -w 0 {}", "basenc --base64url -w 0 {} | tr -d =");
  Same("basenc --base64url {} | KX base64url -d", "cat {}");
}

TEST_F(PeerTools, DigestsMatchCoreutils) {
  Need("md5sum");
  Need("sha1sum");
  Same("KX md5sum {}", "md5sum {}");
  Same("KX sha1sum {}", "sha1sum {}");
  Same("KX md5sum < {}", "md5sum < {}");
  Same("KX sha1sum < {}", "sha1sum < {}");
  // Each checks the other's list.
  Same("md5sum {} > LIST && KX md5sum -c LIST", "md5sum {} > LIST && md5sum -c LIST");
  Same("KX sha1sum {} > LIST && sha1sum -c LIST", "sha1sum {} > LIST && sha1sum -c LIST");
}

TEST_F(PeerTools, CompressionWithGzipZlibFlateAndPigz) {
  Need("gzip");
  Same("KX gzip -c {} | gzip -dc", "cat {}");
  Same("gzip -c {} | KX gunzip", "cat {}");
  Same("KX zlib -9 < {} | KX zlib -d", "cat {}");
  Same("KX deflate -1 < {} | KX deflate -d", "cat {}");
  if (kxtest::ExternalToolPresent("zlib-flate")) {
    Same("KX zlib < {} | zlib-flate -uncompress", "cat {}");
    // zlib-flate writes nothing at all for empty input.
    Same("zlib-flate -compress < {} | KX zlib -d", "cat {}", [](size_t N) { return N > 0; });
  }
  if (kxtest::ExternalToolPresent("pigz")) {
    Same("KX gzip -c {} | pigz -dc", "cat {}");
    Same("pigz -c {} | KX gunzip", "cat {}");
  }
}

TEST_F(PeerTools, UUWithSharutils) {
  Need("uuencode");
  Need("uudecode");
  // Theirs decodes with ours; ours decodes with theirs where the final chunk keeps all its
  // bytes (a single byte, for one, is counted but not written).
  Same("uuencode {} x | KX uudecode -o -", "cat {}");
  Same("KX uuencode {} x | uudecode -o /dev/stdout", "cat {}",
       [](size_t N) { return N % 45 % 3 != 1; });
}

TEST_F(PeerTools, IconvAgrees) {
  Need("iconv");
  const std::string Text = Dir.WriteFile("text.txt", "na\xc3\xafve caf\xc3\xa9 \xe2\x82\xac 5\n");
  for (auto [Ours, Theirs] : std::vector<std::pair<std::string, std::string>>{
           {"-f UTF-8 -t ISO-8859-15", "-f UTF-8 -t ISO-8859-15"},
           {"-f utf-8 -t windows-1252", "-f UTF-8 -t WINDOWS-1252"},
           {"-f 65001 -t utf-16", "-f UTF-8 -t UTF-16LE"}}) {
    const TShell A = Shell(Dir, Kx + " iconv " + Ours + " '" + Text + "'");
    const TShell B = Shell(Dir, "iconv " + Theirs + " '" + Text + "'");
    ASSERT_TRUE(A.Ok && B.Ok) << Ours;
    EXPECT_EQ(A.Out, B.Out) << Ours;
  }
  const TShell List = Shell(Dir, Kx + " iconv -l");
  EXPECT_NE(List.Out.find("65001 utf-8\n"), std::string::npos);
}

TEST_F(PeerTools, DateAgreesWithGnuDate) {
  Need("date");
  if (!Shell(Dir, "date --version | grep -q GNU").Ok) GTEST_SKIP() << "date is not GNU date";
  // Instants from year 1000 to 9999, half of them within a century of the epoch.
  std::mt19937_64 Gen(12);
  std::string Ours, Theirs;
  std::vector<int64_t> Seconds = {0, -1, 951782400 /* 2000-02-29 */, -30610224000 /* 1000 */,
                                  253402300799};
  while (Seconds.size() < 400) {
    const int64_t Low = Seconds.size() % 2 ? -2208988800 : -30610224000;
    const int64_t High = Seconds.size() % 2 ? 4102444800 : 253402300799;
    Seconds.push_back(Low + int64_t(Gen() % uint64_t(High - Low)));
  }
  for (int64_t S : Seconds) {
    Ours += std::to_string(S) + "\n";
    Theirs += "@" + std::to_string(S) + "\n";
  }
  const std::string OurList = Dir.WriteFile("ours.txt", Ours);
  const std::string TheirList = Dir.WriteFile("theirs.txt", Theirs);
  const auto Check = [&](const std::string& KxArgs, const std::string& Format) -> std::string {
    const TShell A = Shell(Dir, Kx + " date -u " + KxArgs + " < '" + OurList + "'");
    const TShell B = Shell(Dir, "LC_ALL=C date -u -f '" + TheirList + "' '+" + Format + "'");
    EXPECT_TRUE(A.Ok && B.Ok) << KxArgs;
    EXPECT_TRUE(A.Out == B.Out) << KxArgs << "\n"
                                << A.Out.substr(0, 200) << "\n"
                                << B.Out.substr(0, 200);
    return A.Out;
  };
  const std::string Iso = Check("", "%Y-%m-%dT%H:%M:%SZ");
  const std::string Luo = Check("-t luo", "%^b %e %Y %l:%M:%S:000%p");
  // And back to the numbers from either text.
  EXPECT_TRUE(Shell(Dir, Kx + " date -u -t unix < '" + Dir.WriteFile("iso.txt", Iso) + "'").Out ==
              Ours);
  EXPECT_TRUE(Shell(Dir, Kx + " date -u -t unix < '" + Dir.WriteFile("luo.txt", Luo) + "'").Out ==
              Ours);
}
