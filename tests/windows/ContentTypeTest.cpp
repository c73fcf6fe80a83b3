// SPDX-License-Identifier: MIT
// MIME types by content: well-known signatures, and on Linux the same answers as the file tool
// gives for real files.
#include <kx/uKxSysUtils.h>
#include <kx/uKxWindows.h>

#include "support/ExternalTool.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace kx;

namespace {

const std::string
    Png("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\x01\0\0\0\x01\x08\x02\0\0\0\x90\x77\x53"
        "\xDE",
        33);
const std::string Gif("GIF89a\x01\0\x01\0\x80\0\0\0\0\0\xFF\xFF\xFF!\xF9\x04\x01\0\0\0\0,\0\0\0\0"
                      "\x01\0\x01\0\0\x02\x02\x44\x01\0;",
                      43);
const std::string Pdf = "%PDF-1.4\n1 0 obj\n<< /Type /Catalog >>\nendobj\ntrailer\n<< /Root 1 0 R "
                        ">>\n%%EOF\n";

AnsiString Sniff(const std::string& Bytes) {
  return KxGetMimeType(Bytes.data(), int64_t(Bytes.size()));
}

} // namespace

TEST(ContentType, KnownSignatures) {
  // Windows names PNG by its old unregistered type.
  const AnsiString PngType = Sniff(Png);
  EXPECT_TRUE(PngType == "image/png" || PngType == "image/x-png") << PngType;
  EXPECT_EQ(Sniff(Gif), "image/gif");
  EXPECT_EQ(Sniff(Pdf), "application/pdf");
  EXPECT_EQ(KxGetMimeType(nullptr, 10), "");
  EXPECT_EQ(KxGetMimeType(Png.data(), -1), "");
}

TEST(ContentType, FilesByTheirFirstBytes) {
  kxtest::TTempFolder Dir;
  // The name says one thing, the content another: the content wins.
  EXPECT_EQ(uKxWindows::KxGetFileMimeType(Dir.WriteFile("picture.txt", Gif)), "image/gif");
  EXPECT_EQ(KxGetFileMimeType(Dir.Name("picture.txt")), KxGetFileMimeType("x.txt"));
  EXPECT_THROW(uKxWindows::KxGetFileMimeType(Dir.Name("missing.bin")), EFOpenError);
}

TEST(ContentType, LinuxAgreesWithTheFileTool) {
  if (!kxtest::ExternalToolPresent("file")) GTEST_SKIP() << "no file tool";
  kxtest::TTempFolder Dir;
  std::string Gzip("\x1F\x8B\x08\0\0\0\0\0\0\x03\x4B\x4C\x4A\x06\0\xC2\x41\x24\x35\x03\0\0\0", 23);
  std::string Zip("PK\x03\x04\x14\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x01\0\0\0a"
                  "PK\x05\x06\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0",
                  53);
  const std::vector<std::string> Files = {
      Dir.WriteFile("a.png", Png),
      Dir.WriteFile("b.gif", Gif),
      Dir.WriteFile("c.pdf", Pdf),
      Dir.WriteFile("d.txt", "plain words on a line\nand another one\n"),
      Dir.WriteFile("e.gz", Gzip),
      Dir.WriteFile("f.zip", Zip),
      Dir.WriteFile("g.html", "<!DOCTYPE html>\n<html><head><title>t</title></head></html>\n"),
      Dir.WriteFile("i.sh", "#!/bin/sh\necho hello\n"),
      Dir.WriteFile("j.xml", "<?xml version=\"1.0\"?>\n<root><item/></root>\n"),
  };
  for (const std::string& F : Files) {
    auto R = kxtest::RunExternalTool("file", {"--mime-type", "-b", "-L", F}, "");
    while (!R.Output.empty() && R.Output.back() == '\n') R.Output.pop_back();
    EXPECT_EQ(uKxWindows::KxGetFileMimeType(F), R.Output) << F;
  }
}
