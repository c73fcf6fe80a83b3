// SPDX-License-Identifier: MIT
// Library versions, exported function names (real libraries and crafted PE and ELF images of
// every layout the reader knows) and manifests.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/StringList.h>
#include <kx/sysutils/SystemInfo.h>
#include <kx/uKxWindows.h>

#include <kx/KxVersion.h>

#include "support/ExternalTool.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

using namespace kx;

namespace {

// The file of the library itself, found from one of its functions.
std::string LibraryFile() {
#if defined(_WIN32)
  HMODULE Module = nullptr;
  ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                           GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&KxGetManifest), &Module);
  char Buf[MAX_PATH] = {};
  ::GetModuleFileNameA(Module, Buf, MAX_PATH);
  return Buf;
#else
  Dl_info Info{};
  dladdr(reinterpret_cast<void*>(&KxGetManifest), &Info);
  return Info.dli_fname ? Info.dli_fname : "";
#endif
}

struct TListDeleter {
  void operator()(TStringList* L) const { L->Free(); }
};
using TList = std::unique_ptr<TStringList, TListDeleter>;

std::vector<std::string> ExportsOf(const std::string& FileName) {
  TList List(TStringList::Create());
  KxGetExportedFunctionNames(FileName, List.get());
  std::vector<std::string> Names;
  for (int32_t I = 0; I < List->Count(); ++I) Names.push_back(List->Strings(I));
  return Names;
}

bool HasNameWith(const std::vector<std::string>& Names, const std::string& Part) {
  return std::any_of(Names.begin(), Names.end(),
                     [&](const std::string& N) { return N.find(Part) != std::string::npos; });
}

// Little- or big-endian fields written into a byte image.
struct TBytesOut {
  std::string B;
  bool Big = false;
  void Put(size_t At, uint64_t V, size_t Width) {
    if (B.size() < At + Width) B.resize(At + Width, '\0');
    for (size_t I = 0; I < Width; ++I)
      B[At + (Big ? Width - 1 - I : I)] = char((V >> (8 * I)) & 0xFF);
  }
  void Text(size_t At, const std::string& S) {
    if (B.size() < At + S.size() + 1) B.resize(At + S.size() + 1, '\0');
    B.replace(At, S.size(), S);
  }
};

// A PE image with one section holding an export directory that names Names.
// With a Manifest, a second section holds it as resource 1 of type RT_MANIFEST.
std::string PEImage(bool Plus, const std::vector<std::string>& Names,
                    const std::string* Manifest = nullptr) {
  TBytesOut O;
  O.Text(0, "MZ");
  O.Put(60, 64, 4);
  O.Text(64, "PE");
  const uint16_t OptSize = Plus ? 240 : 224;
  O.Put(68, Plus ? 0x8664 : 0x14C, 2);
  O.Put(70, Manifest ? 2 : 1, 2);
  O.Put(86, Plus ? 0x2022 : 0x2102, 2); // an executable DLL
  O.Put(84, OptSize, 2);
  const size_t Opt = 88;
  O.Put(Opt, Plus ? 0x20B : 0x10B, 2);
  // Alignments, sizes and the subsystem, as a loader expects them.
  O.Put(Opt + 32, 0x1000, 4);
  O.Put(Opt + 36, 0x200, 4);
  O.Put(Opt + 40, 6, 2);
  O.Put(Opt + 48, 6, 2);
  O.Put(Opt + 56, 0x3000, 4); // size of image
  O.Put(Opt + 60, 0x400, 4);  // size of headers
  O.Put(Opt + 68, 2, 2);
  if (Plus)
    O.Put(Opt + 24, 0x10000000, 8);
  else
    O.Put(Opt + 28, 0x10000000, 4);
  const size_t Dirs = Opt + (Plus ? 108 : 92);
  O.Put(Dirs, 16, 4);
  O.Put(Dirs + 4, 0x1000, 4); // export directory at the section's start
  O.Put(Dirs + 8, 0x200, 4);
  const size_t Sec = Opt + OptSize;
  O.Text(Sec, ".edata");
  O.Put(Sec + 8, 0x400, 4);   // virtual size
  O.Put(Sec + 12, 0x1000, 4); // virtual address
  O.Put(Sec + 16, 0x400, 4);  // raw size
  O.Put(Sec + 20, 0x400, 4);  // raw offset
  const size_t Raw = 0x400;
  O.Put(Raw + 24, Names.size(), 4);
  O.Put(Raw + 32, 0x1000 + 40, 4); // the name pointers follow the directory
  size_t NameAt = 40 + 4 * Names.size();
  for (size_t I = 0; I < Names.size(); ++I) {
    O.Put(Raw + 40 + 4 * I, 0x1000 + NameAt, 4);
    O.Text(Raw + NameAt, Names[I]);
    NameAt += Names[I].size() + 1;
  }
  O.B.resize(Raw + 0x400, '\0');
  if (Manifest) {
    O.Put(Dirs + 4 + 16, 0x2000, 4); // resource directory
    O.Put(Dirs + 8 + 16, 0x400, 4);
    O.Text(Sec + 40, ".rsrc");
    O.Put(Sec + 48, 0x400, 4);
    O.Put(Sec + 52, 0x2000, 4);
    O.Put(Sec + 56, 0x400, 4);
    O.Put(Sec + 60, 0x800, 4);
    O.Put(Sec + 76, 0x40000040, 4); // initialised data, readable
    // Type 24, name 1, language 0x409: three directory levels of one entry each.
    const size_t R = 0x800;
    const uint32_t Ids[3] = {24, 1, 0x409};
    for (size_t Level = 0; Level < 3; ++Level) {
      const size_t D = R + Level * 24;
      O.Put(D + 14, 1, 2);
      O.Put(D + 16, Ids[Level], 4);
      O.Put(D + 20, Level < 2 ? (0x80000000u | uint32_t((Level + 1) * 24)) : 72, 4);
    }
    O.Put(R + 72, 0x2000 + 88, 4);
    O.Put(R + 76, Manifest->size(), 4);
    O.B.resize(R + 88, '\0');
    O.B += *Manifest;
    O.B.resize(R + 0x400, '\0');
  }
  return O.B;
}

// An ELF image with a dynamic symbol table of every kind the reader must tell apart.
std::string ELFImage(bool Is64, bool Big) {
  TBytesOut O;
  O.Big = Big;
  O.Text(0, "\x7F"
            "ELF");
  O.B.resize(16, '\0');
  O.B[4] = char(Is64 ? 2 : 1);
  O.B[5] = char(Big ? 2 : 1);
  O.B[6] = 1;
  const size_t HeadSize = Is64 ? 64 : 52, ShEnt = Is64 ? 64 : 40, SymEnt = Is64 ? 24 : 16;
  const size_t ShOff = HeadSize;
  if (Is64) {
    O.Put(40, ShOff, 8);
    O.Put(58, ShEnt, 2);
    O.Put(60, 3, 2);
  } else {
    O.Put(32, ShOff, 4);
    O.Put(46, ShEnt, 2);
    O.Put(48, 3, 2);
  }
  struct TSym {
    std::string Name;
    uint8_t Info, Other;
    uint16_t Index;
  };
  // Info: binding << 4 | type. Only the first two are exported functions.
  const std::vector<TSym> Syms = {{"", 0, 0, 0},
                                  {"visible_fn", 0x12, 0, 5},
                                  {"weak_fn", 0x22, 0, 5},
                                  {"ifunc_fn", 0x1A, 3, 5},
                                  {"undefined_fn", 0x12, 0, 0},
                                  {"a_variable", 0x11, 0, 6},
                                  {"hidden_fn", 0x12, 2, 5},
                                  {"local_fn", 0x02, 0, 5}};
  std::string Str(1, '\0');
  std::vector<size_t> NameAt;
  for (const TSym& S : Syms) {
    NameAt.push_back(S.Name.empty() ? 0 : Str.size());
    if (!S.Name.empty()) Str += S.Name + '\0';
  }
  const size_t SymOff = ShOff + 3 * ShEnt, StrOff = SymOff + Syms.size() * SymEnt;
  auto Section = [&](size_t I, uint32_t Type, uint64_t Off, uint64_t Size, uint32_t Link,
                     uint64_t EntSize) {
    const size_t B = ShOff + I * ShEnt;
    O.Put(B + 4, Type, 4);
    if (Is64) {
      O.Put(B + 24, Off, 8);
      O.Put(B + 32, Size, 8);
      O.Put(B + 40, Link, 4);
      O.Put(B + 56, EntSize, 8);
    } else {
      O.Put(B + 16, Off, 4);
      O.Put(B + 20, Size, 4);
      O.Put(B + 24, Link, 4);
      O.Put(B + 36, EntSize, 4);
    }
  };
  Section(0, 0, 0, 0, 0, 0);
  Section(1, 11, SymOff, Syms.size() * SymEnt, 2, SymEnt); // .dynsym
  Section(2, 3, StrOff, Str.size(), 0, 0);                 // .dynstr
  for (size_t I = 0; I < Syms.size(); ++I) {
    const size_t B = SymOff + I * SymEnt;
    O.Put(B, NameAt[I], 4);
    O.Put(B + (Is64 ? 4 : 12), Syms[I].Info, 1);
    O.Put(B + (Is64 ? 5 : 13), Syms[I].Other, 1);
    O.Put(B + (Is64 ? 6 : 14), Syms[I].Index, 2);
  }
  O.B.resize(StrOff, '\0');
  O.B += Str;
  return O.B;
}

} // namespace

TEST(ExportedFunctions, TheLibraryItself) {
  const std::string Library = LibraryFile();
  ASSERT_FALSE(Library.empty());
  const std::vector<std::string> Names = ExportsOf(Library);
  EXPECT_TRUE(HasNameWith(Names, "KxGetExportedFunctionNames"));
  EXPECT_TRUE(HasNameWith(Names, "KxProcessExists"));
  // Internal functions are hidden and must not be listed.
  EXPECT_FALSE(HasNameWith(Names, "RvaToOffset"));
#if !defined(_WIN32)
  // The binutils view of the same table: every defined function symbol, in any order.
  if (kxtest::ExternalToolPresent("nm")) {
    const kxtest::TExternalToolResult Nm =
        kxtest::RunExternalTool("nm", {"-D", "--defined-only", "--format=posix", Library}, "");
    ASSERT_EQ(Nm.ExitCode, 0);
    const std::string& Out = Nm.Output;
    std::vector<std::string> Expected;
    size_t Start = 0;
    while (Start < Out.size()) {
      size_t End = Out.find('\n', Start);
      if (End == std::string::npos) End = Out.size();
      const std::string Line = Out.substr(Start, End - Start);
      Start = End + 1;
      const size_t Blank = Line.find(' ');
      if (Blank == std::string::npos || Blank + 1 >= Line.size()) continue;
      const char Kind = Line[Blank + 1];
      if (Kind == 'T' || Kind == 'W' || Kind == 'i')
        Expected.push_back(Line.substr(0, std::min(Blank, Line.find('@'))));
    }
    std::vector<std::string> Got = Names;
    std::sort(Got.begin(), Got.end());
    std::sort(Expected.begin(), Expected.end());
    Expected.erase(std::unique(Expected.begin(), Expected.end()), Expected.end());
    EXPECT_EQ(Got.size(), Expected.size());
    for (size_t I = 0; I < std::min(Got.size(), Expected.size()); ++I)
      if (Got[I] != Expected[I]) {
        ADD_FAILURE() << Got[I] << " / " << Expected[I];
        break;
      }
  }
#else
  const std::vector<std::string> Kernel = ExportsOf("C:\\windows\\system32\\kernel32.dll");
  EXPECT_TRUE(std::find(Kernel.begin(), Kernel.end(), "GetProcAddress") != Kernel.end());
#endif
}

TEST(ExportedFunctions, CraftedImagesOfEveryLayout) {
  kxtest::TTempFolder Dir;
  const std::vector<std::string> Names = {"Zeta", "alpha", "DllGetVersion"};
  // Table order, not sorted.
  EXPECT_EQ(ExportsOf(Dir.WriteFile("plus.dll", PEImage(true, Names))), Names);

  EXPECT_EQ(ExportsOf(Dir.WriteFile("pe32.dll", PEImage(false, Names))), Names);
  EXPECT_TRUE(ExportsOf(Dir.WriteFile("none.dll", PEImage(true, {}))).empty());
  const std::vector<std::string> Functions = {"visible_fn", "weak_fn", "ifunc_fn"};
  for (bool Is64 : {false, true})
    for (bool Big : {false, true})
      EXPECT_EQ(ExportsOf(Dir.WriteFile("lib.so", ELFImage(Is64, Big))), Functions) << Is64 << Big;
}

TEST(ExportedFunctions, DamagedImagesRaise) {
  kxtest::TTempFolder Dir;
  auto Raises = [&](const std::string& Bytes) {
    try {
      ExportsOf(Dir.WriteFile("bad", Bytes));
    } catch (const EFOpenError&) {
      return false;
    } catch (const Exception& E) {
      return E.Message() == SInvalidExecutableImage;
    }
    return false;
  };
  EXPECT_TRUE(Raises("just text, no image at all"));
  EXPECT_TRUE(Raises(""));
  const std::string PE = PEImage(true, {"one", "two"});
  EXPECT_TRUE(Raises(PE.substr(0, 0x300))); // cut inside the section
  std::string FarNames = PE;
  FarNames.replace(0x400 + 32, 4, "\x00\x00\x00\x70", 4); // name pointers outside any section
  EXPECT_TRUE(Raises(FarNames));
  std::string Endless = PE;
  Endless.replace(0x400 + 24, 4, "\xFF\xFF\xFF\x0F", 4); // more names than the file can hold
  EXPECT_TRUE(Raises(Endless));
  const std::string ELF = ELFImage(true, false);
  EXPECT_TRUE(Raises(ELF.substr(0, ELF.size() - 20))); // the string table cut short
  std::string BadLink = ELF;
  BadLink[64 + 64 + 40] = 9; // .dynsym linked to a section that does not exist
  EXPECT_TRUE(Raises(BadLink));
  EXPECT_THROW(ExportsOf(Dir.Name("missing.dll")), EFOpenError);
}

TEST(DllVersion, LibrariesTellTheirVersion) {
  TKxDllVersion V;
#if defined(_WIN32)
  // The shell's libraries answer DllGetVersion; kxcommon has none.
  ASSERT_TRUE(KxGetDllVersion("shell32.dll", V));
  EXPECT_GE(V.Major, 5u);
  EXPECT_FALSE(KxGetDllVersion(LibraryFile(), V));
#else
  // The SONAME link leads to the file named with the whole version.
  ASSERT_TRUE(KxGetDllVersion("libkxcommon.so." + std::to_string(KX_VERSION_MAJOR) + "." +
                                  std::to_string(KX_VERSION_MINOR),
                              V));
  EXPECT_EQ(V.Major, uint32_t(KX_VERSION_MAJOR));
  EXPECT_EQ(V.Minor, uint32_t(KX_VERSION_MINOR));
  EXPECT_EQ(V.Build, uint32_t(KX_VERSION_PATCH));
#endif
  EXPECT_THROW(KxGetDllVersion("kx-no-such-library-here.dll", V), EOSError);
}

TEST(Manifest, EncodingsOfTheResource) {
#if defined(_WIN32)
  kxtest::TTempFolder Dir;
  int Count = 0;
  auto ManifestOf = [&](const std::string& Bytes) {
    const std::string Name = "m" + std::to_string(++Count) + ".dll";
    return KxGetManifest(Dir.WriteFile(Name, PEImage(true, {"f"}, &Bytes)));
  };
  const std::string Xml = "<assembly>\xC3\xA9</assembly>";
  const UnicodeString Expected = u"<assembly>\u00E9</assembly>";
  EXPECT_EQ(ManifestOf(Xml), Expected);
  EXPECT_EQ(ManifestOf("\xEF\xBB\xBF" + Xml), Expected);
  std::string Le = "\xFF\xFE", Be = "\xFE\xFF";
  for (char16_t C : Expected) {
    Le += char(C & 0xFF), Le += char(C >> 8);
    Be += char(C >> 8), Be += char(C & 0xFF);
  }
  EXPECT_EQ(ManifestOf(Le), Expected);
  EXPECT_EQ(ManifestOf(Be), Expected);
  for (const std::string& Bad :
       {std::string("<a>\xE9</a>"), std::string("\xFF\xFE\0\0<\0\0\0", 8), Le + "x"}) {
    try {
      ManifestOf(Bad);
      ADD_FAILURE() << "no exception";
    } catch (const Exception& E) {
      EXPECT_EQ(E.Message(), SUnsupportedManifestFormat);
    }
  }
  // A library without one, and no file at all.
  EXPECT_TRUE(KxGetManifest(Dir.WriteFile("plain.dll", PEImage(true, {"f"}))).empty());
  EXPECT_THROW(KxGetManifest(Dir.Name("missing.dll")), EOSError);
#else
  EXPECT_THROW(KxGetManifest(), EKxNotSupported);
#endif
}
