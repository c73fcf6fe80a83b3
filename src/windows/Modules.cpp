// SPDX-License-Identifier: MIT
// Modules of uKxWindows: library versions, exported function names read from PE and ELF files,
// and manifests.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Streams.h>
#include <kx/sysutils/SystemInfo.h>
#include <kx/windows/Modules.h>

#include "platform/Environment.h"
#include "platform/Modules.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

namespace kx {

namespace {

[[noreturn]] void InvalidImage() {
  throw Exception(SInvalidExecutableImage);
}

// Bounded reads of the image: every offset and size from the file is checked against the
// stream's size before anything is read or allocated.
class TImage {
public:
  explicit TImage(TStream* S) : FStream(S), FSize(uint64_t(S->Size())) {}
  uint64_t Size() const { return FSize; }
  void Read(uint64_t Offset, void* Buffer, uint64_t Count) {
    if (Offset > FSize || Count > FSize - Offset || Count > uint64_t(INT32_MAX)) InvalidImage();
    if (Count == 0) return;
    if (FStream->Seek(int64_t(Offset), soBeginning) != int64_t(Offset)) InvalidImage();
    FStream->ReadBuffer(Buffer, int32_t(Count));
  }
  std::vector<uint8_t> Bytes(uint64_t Offset, uint64_t Count) {
    if (Offset > FSize || Count > FSize - Offset) InvalidImage();
    std::vector<uint8_t> B(static_cast<size_t>(Count));
    Read(Offset, B.data(), Count);
    return B;
  }

private:
  TStream* FStream;
  uint64_t FSize;
};

// Little- or big-endian fields of a header read into memory.
struct TFields {
  const uint8_t* P;
  size_t Size;
  bool BigEndian;
  uint64_t Get(size_t Offset, size_t Width) const {
    if (Offset > Size || Width > Size - Offset) InvalidImage();
    uint64_t V = 0;
    for (size_t I = 0; I < Width; ++I) {
      const uint8_t B = P[Offset + (BigEndian ? I : Width - 1 - I)];
      V = V << 8 | B;
    }
    return V;
  }
  uint16_t U16(size_t Offset) const { return uint16_t(Get(Offset, 2)); }
  uint32_t U32(size_t Offset) const { return uint32_t(Get(Offset, 4)); }
  uint64_t U64(size_t Offset) const { return Get(Offset, 8); }
};

// The longest name taken from an image; longer ones are damage, not names.
constexpr size_t MaxNameLength = 4096;

// --- PE --------------------------------------------------------------------------------------

struct TSection {
  uint32_t VirtualAddress, VirtualSize, RawSize, RawOffset;
};

uint64_t RvaToOffset(const std::vector<TSection>& Sections, uint32_t Rva) {
  for (const TSection& S : Sections) {
    if (Rva < S.VirtualAddress) continue;
    const uint32_t Delta = Rva - S.VirtualAddress;
    if (Delta < S.RawSize && Delta < std::max(S.VirtualSize, S.RawSize))
      return uint64_t(S.RawOffset) + Delta;
  }
  InvalidImage();
}

AnsiString PEName(TImage& Image, uint64_t Offset) {
  AnsiString Name;
  char Buf[64];
  while (Name.size() < MaxNameLength) {
    const uint64_t Left = Offset < Image.Size() ? Image.Size() - Offset : 0;
    const uint64_t N = std::min<uint64_t>(sizeof Buf, Left);
    if (N == 0) InvalidImage();
    Image.Read(Offset, Buf, N);
    const void* End = std::memchr(Buf, 0, size_t(N));
    if (End) {
      Name.append(Buf, size_t(static_cast<const char*>(End) - Buf));
      return Name;
    }
    Name.append(Buf, size_t(N));
    Offset += N;
  }
  InvalidImage();
}

void PEExports(TImage& Image, uint32_t NtOffset, TStrings* List) {
  uint8_t Head[24];
  Image.Read(NtOffset, Head, sizeof Head);
  const TFields File{Head, sizeof Head, false};
  if (File.U32(0) != 0x00004550) InvalidImage(); // "PE\0\0"
  const uint16_t SectionCount = File.U16(6);
  const uint16_t OptionalSize = File.U16(20);
  const std::vector<uint8_t> Optional = Image.Bytes(uint64_t(NtOffset) + 24, OptionalSize);
  const TFields Opt{Optional.data(), Optional.size(), false};
  const uint16_t Magic = Opt.U16(0);
  size_t DirCountAt = 0;
  if (Magic == 0x10B)
    DirCountAt = 92;
  else if (Magic == 0x20B)
    DirCountAt = 108;
  else
    InvalidImage();
  // No export directory: nothing is exported.
  if (Opt.U32(DirCountAt) == 0) return;
  const uint32_t ExportRva = Opt.U32(DirCountAt + 4);
  if (ExportRva == 0) return;

  const uint64_t SectionsAt = uint64_t(NtOffset) + 24 + OptionalSize;
  const std::vector<uint8_t> Table = Image.Bytes(SectionsAt, uint64_t(SectionCount) * 40);
  const TFields Sec{Table.data(), Table.size(), false};
  std::vector<TSection> Sections;
  for (size_t I = 0; I < SectionCount; ++I)
    Sections.push_back(
        {Sec.U32(I * 40 + 12), Sec.U32(I * 40 + 8), Sec.U32(I * 40 + 16), Sec.U32(I * 40 + 20)});

  uint8_t Dir[40];
  Image.Read(RvaToOffset(Sections, ExportRva), Dir, sizeof Dir);
  const TFields Export{Dir, sizeof Dir, false};
  const uint32_t NameCount = Export.U32(24);
  if (NameCount == 0) return;
  const std::vector<uint8_t> Names =
      Image.Bytes(RvaToOffset(Sections, Export.U32(32)), uint64_t(NameCount) * 4);
  const TFields NameRvas{Names.data(), Names.size(), false};
  for (size_t I = 0; I < NameCount; ++I)
    List->Add(PEName(Image, RvaToOffset(Sections, NameRvas.U32(I * 4))));
}

// --- ELF -------------------------------------------------------------------------------------

void ELFExports(TImage& Image, const uint8_t* Ident, TStrings* List) {
  const bool Is64 = Ident[4] == 2;
  if (Ident[4] != 1 && !Is64) InvalidImage();
  if (Ident[5] != 1 && Ident[5] != 2) InvalidImage();
  const bool Big = Ident[5] == 2;
  uint8_t HeadBuf[64];
  Image.Read(0, HeadBuf, Is64 ? 64 : 52);
  const TFields Head{HeadBuf, size_t(Is64 ? 64 : 52), Big};
  const uint64_t SectionsAt = Is64 ? Head.U64(40) : Head.U32(32);
  const uint16_t EntrySize = Head.U16(Is64 ? 58 : 46);
  const uint16_t Count = Head.U16(Is64 ? 60 : 48);
  if (Count == 0) return; // no section table: nothing to list from
  if (EntrySize < (Is64 ? 64 : 40)) InvalidImage();
  const std::vector<uint8_t> Table = Image.Bytes(SectionsAt, uint64_t(Count) * EntrySize);
  const TFields Sec{Table.data(), Table.size(), Big};
  struct TSec {
    uint32_t Type, Link;
    uint64_t Offset, Size, EntSize;
  };
  auto Section = [&](size_t I) {
    const size_t B = I * EntrySize;
    return Is64 ? TSec{Sec.U32(B + 4), Sec.U32(B + 40), Sec.U64(B + 24), Sec.U64(B + 32),
                       Sec.U64(B + 56)}
                : TSec{Sec.U32(B + 4), Sec.U32(B + 24), Sec.U32(B + 16), Sec.U32(B + 20),
                       Sec.U32(B + 36)};
  };
  constexpr uint32_t SHT_DYNSYM = 11, SHT_NOBITS = 8;
  for (size_t I = 0; I < Count; ++I) {
    const TSec Sym = Section(I);
    if (Sym.Type != SHT_DYNSYM) continue;
    const size_t SymSize = Is64 ? 24 : 16;
    if (Sym.EntSize != SymSize || Sym.Link >= Count) InvalidImage();
    const TSec Str = Section(Sym.Link);
    if (Str.Type == SHT_NOBITS) InvalidImage();
    const std::vector<uint8_t> Syms = Image.Bytes(Sym.Offset, Sym.Size / SymSize * SymSize);
    const std::vector<uint8_t> Strings = Image.Bytes(Str.Offset, Str.Size);
    const TFields S{Syms.data(), Syms.size(), Big};
    for (size_t J = 0; J + SymSize <= Syms.size(); J += SymSize) {
      const uint32_t NameAt = S.U32(J);
      const uint8_t Info = uint8_t(S.Get(J + (Is64 ? 4 : 12), 1));
      const uint8_t Other = uint8_t(S.Get(J + (Is64 ? 5 : 13), 1));
      const uint16_t Index = S.U16(J + (Is64 ? 6 : 14));
      const uint8_t Type = Info & 0xF, Bind = Info >> 4, Visibility = Other & 3;
      // Functions and indirect functions, defined here, global or weak, visible from outside.
      if ((Type != 2 && Type != 10) || Index == 0 || (Bind != 1 && Bind != 2) ||
          (Visibility != 0 && Visibility != 3))
        continue;
      if (NameAt >= Strings.size()) InvalidImage();
      const char* Name = reinterpret_cast<const char*>(Strings.data()) + NameAt;
      const size_t Len = strnlen(Name, std::min(Strings.size() - NameAt, MaxNameLength));
      if (NameAt + Len >= Strings.size()) InvalidImage();
      if (Len > 0) List->Add(AnsiString(Name, Len));
    }
    return;
  }
}

bool WellFormedUtf8(std::string_view S) {
  for (size_t I = 0; I < S.size();) {
    const uint8_t C = uint8_t(S[I]);
    size_t Len = 0;
    uint32_t Cp = 0, Min = 0;
    if (C < 0x80) {
      ++I;
      continue;
    } else if ((C & 0xE0) == 0xC0) {
      Len = 2, Cp = C & 0x1F, Min = 0x80;
    } else if ((C & 0xF0) == 0xE0) {
      Len = 3, Cp = C & 0x0F, Min = 0x800;
    } else if ((C & 0xF8) == 0xF0) {
      Len = 4, Cp = C & 0x07, Min = 0x10000;
    } else {
      return false;
    }
    if (S.size() - I < Len) return false;
    for (size_t K = 1; K < Len; ++K) {
      const uint8_t D = uint8_t(S[I + K]);
      if ((D & 0xC0) != 0x80) return false;
      Cp = Cp << 6 | (D & 0x3F);
    }
    // Overlong forms, surrogates and values past Unicode's end are not UTF-8.
    if (Cp < Min || Cp > 0x10FFFF || (Cp >= 0xD800 && Cp <= 0xDFFF)) return false;
    I += Len;
  }
  return true;
}

} // namespace

bool KxGetDllVersion(const AnsiString& DllName, TKxDllVersion& Version) {
  Version = TKxDllVersion();
  switch (platform::DllVersion(DllName, Version.Major, Version.Minor, Version.Build)) {
  case 1:
    return true;
  case 0:
    return false;
  default:
    RaiseLastOSError();
  }
}

void KxGetExportedFunctionNames(TStream* Stream, TStrings* List) {
  List->BeginUpdate();
  try {
    List->Clear();
    TImage Image(Stream);
    uint8_t Ident[64] = {};
    if (Image.Size() < 16) InvalidImage();
    Image.Read(0, Ident, std::min<uint64_t>(Image.Size(), sizeof Ident));
    if (std::memcmp(Ident,
                    "\x7F"
                    "ELF",
                    4) == 0)
      ELFExports(Image, Ident, List);
    else if (Ident[0] == 'M' && Ident[1] == 'Z' && Image.Size() >= 64)
      PEExports(Image, TFields{Ident, sizeof Ident, false}.U32(60), List);
    else
      InvalidImage();
  } catch (...) {
    List->EndUpdate();
    throw;
  }
  List->EndUpdate();
}

void KxGetExportedFunctionNames(const AnsiString& FileName, TStrings* List) {
  TFileStream* F = TFileStream::Create(FileName, uint16_t(fmOpenRead | fmShareDenyNone));
  try {
    KxGetExportedFunctionNames(F, List);
  } catch (...) {
    F->Free();
    throw;
  }
  F->Free();
}

UnicodeString KxGetManifest(const AnsiString& FileName) {
  std::vector<uint8_t> Data;
  switch (platform::ModuleManifest(FileName, Data)) {
  case 1:
    break;
  case 0:
    return UnicodeString();
  default:
    if (platform::LastError() == platform::ERROR_NOT_SUPPORTED_)
      throw EKxNotSupported(SNotSupportedOnPlatform, {"KxGetManifest"});
    RaiseLastOSError();
  }
  const size_t N = Data.size();
  const uint8_t* P = Data.data();
  auto Utf16 = [&](size_t From, bool Big) {
    if ((N - From) % 2 != 0) throw Exception(SUnsupportedManifestFormat);
    UnicodeString Text;
    for (size_t I = From; I + 1 < N; I += 2)
      Text += char16_t(Big ? (P[I] << 8 | P[I + 1]) : (P[I] | P[I + 1] << 8));
    return Text;
  };
  if (N >= 4 && ((P[0] == 0xFF && P[1] == 0xFE && P[2] == 0 && P[3] == 0) ||
                 (P[0] == 0 && P[1] == 0 && P[2] == 0xFE && P[3] == 0xFF)))
    throw Exception(SUnsupportedManifestFormat); // UTF-32
  if (N >= 2 && P[0] == 0xFF && P[1] == 0xFE) return Utf16(2, false);
  if (N >= 2 && P[0] == 0xFE && P[1] == 0xFF) return Utf16(2, true);
  size_t From = 0;
  if (N >= 3 && P[0] == 0xEF && P[1] == 0xBB && P[2] == 0xBF) From = 3;
  const std::string_view Text(reinterpret_cast<const char*>(P) + From, N - From);
  // Text without a mark must be UTF-8; anything else would be decoded into the wrong text.
  if (!WellFormedUtf8(Text)) throw Exception(SUnsupportedManifestFormat);
  return UTF8Decode(Text);
}

} // namespace kx
