// SPDX-License-Identifier: MIT
// Drives of uKxWindows.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Format.h>
#include <kx/rtl/FormatSettings.h>
#include <kx/rtl/Lists.h>
#include <kx/rtl/SysUtils.h>
#include <kx/windows/Drives.h>

#include "platform/Drives.h"

#include <cstdio>
#include <vector>

namespace kx {

KX_IMPLEMENT_CLASS(TKxDriveInfoList, TObject, "uKxWindows")

namespace {

constexpr const char* SDivByZero = "Division by zero";

AnsiString WithoutDelimiter(const AnsiString& Root) {
  AnsiString R = Root;
  if (R.size() > 1 && (R.back() == '\\' || R.back() == '/')) R.pop_back();
  return R;
}

} // namespace

AnsiString KxGetDriveSpace(int64_t Size) {
  int32_t Unit = 0;
  uint32_t Divisor = 1;
  for (;;) {
    if (Divisor == 0) throw EZeroDivide(SDivByZero);
    if (Size / int64_t(Divisor) <= 1024) break;
    ++Unit;
    Divisor *= 1024u; // wraps to 0 past 2^31, as the 32-bit divisor always did
  }
  const double Value = double(int64_t(double(Size) / double(Divisor) * 10)) / 10;
  char Buf[64];
  std::snprintf(Buf, sizeof Buf, "%.1f", Value);
  AnsiString Text = Buf;
  for (char& C : Text)
    if (C == '.') C = FormatSettings().DecimalSeparator;
  switch (Unit) {
  case 1:
    return Text + " MB";
  case 2:
    return Text + " GB";
  case 3:
    return Text + " TB";
  default:
    return Text + " KB";
  }
}

void KxGetDriveStrings(TStrings* List) {
  std::vector<AnsiString> Roots;
  platform::DriveRoots(Roots);
  for (const AnsiString& R : Roots) List->Add(R);
}

int64_t TKxDriveInfo::FreeKB() const {
  return int64_t(FreeClusters * SectorsPerCluster * BytesPerSector / 1024);
}

int64_t TKxDriveInfo::TotalKB() const {
  return int64_t(TotalClusters * SectorsPerCluster * BytesPerSector / 1024);
}

TKxDriveInfo KxGetDriveInfo(const AnsiString& Root) {
  platform::TDriveData D;
  TKxDriveInfo Info;
  Info.Root = Root;
  if (!platform::DriveData(Root, D)) {
    Info.DriveType = driveNoRoot;
    return Info;
  }
  Info.Root = D.Root;
  Info.DriveType = D.DriveType <= 6 ? TKxDriveType(D.DriveType) : driveUnknown;
  Info.VolumeName = D.VolumeName;
  Info.FileSystem = D.FileSystem;
  Info.SerialNumber = IntToHex(int32_t(D.SerialNumber), 8);
  Info.SectorsPerCluster = D.SectorsPerCluster;
  Info.BytesPerSector = D.BytesPerSector;
  Info.FreeClusters = D.FreeClusters;
  Info.TotalClusters = D.TotalClusters;
  return Info;
}

TKxDriveInfoList::TKxDriveInfoList() {
  std::vector<AnsiString> Roots;
  platform::DriveRoots(Roots);
  for (const AnsiString& R : Roots) FItems.push_back(KxGetDriveInfo(R));
}

int32_t TKxDriveInfoList::IndexOf(const AnsiString& Root) const {
  const AnsiString Wanted = WithoutDelimiter(Root);
  for (size_t I = 0; I < FItems.size(); ++I)
    if (AnsiSameText(WithoutDelimiter(FItems[I].Root), Wanted)) return int32_t(I);
  return -1;
}

void TKxDriveInfoList::Delete(int32_t Index) {
  if (Index < 0 || Index >= Count()) throw EListError(SListIndexError, {Index});
  FItems.erase(FItems.begin() + Index);
}

const TKxDriveInfo& TKxDriveInfoList::GetDriveInfo(int32_t Index) const {
  if (Index < 0 || Index >= Count()) throw EListError(SListIndexError, {Index});
  return FItems[size_t(Index)];
}

const TKxDriveInfo* TKxDriveInfoList::FindDriveByLetter(AnsiChar Letter) const {
  for (const TKxDriveInfo& D : FItems)
    if (D.Root.size() >= 2 && D.Root[1] == ':' &&
        SameText(AnsiString(1, D.Root[0]), AnsiString(1, Letter)))
      return &D;
  return nullptr;
}

const TKxDriveInfo* TKxDriveInfoList::FindDriveByName(const AnsiString& VolumeName) const {
  for (const TKxDriveInfo& D : FItems)
    if (AnsiSameText(D.VolumeName, VolumeName)) return &D;
  return nullptr;
}

const TKxDriveInfo* TKxDriveInfoList::FindDriveBySerial(const AnsiString& Serial) const {
  for (const TKxDriveInfo& D : FItems)
    if (AnsiSameText(D.SerialNumber, Serial)) return &D;
  return nullptr;
}

} // namespace kx
