// SPDX-License-Identifier: MIT
// The runtime's string lists.
#include <kx/rtl/StringList.h>

#include <cstring>

namespace kx {

KX_IMPLEMENT_EXCEPTION(EStringListError, Exception, "Classes")
KX_IMPLEMENT_CLASS(TStrings, TPersistent, "Classes")
KX_IMPLEMENT_CLASS(TStringList, TStrings, "Classes")

namespace {

bool IsBlankOrControl(char Ch) {
  return static_cast<unsigned char>(Ch) <= ' ';
}

// Runs F between BeginUpdate and EndUpdate, which is balanced whatever F throws.
template <class F>
void Updating(TStrings* List, F&& Body) {
  List->BeginUpdate();
  try {
    Body();
  } catch (...) {
    List->EndUpdate();
    throw;
  }
  List->EndUpdate();
}

// Frees a stream created for one call, also when the call throws.
template <class F>
void WithFile(TFileStream* Stream, F&& Body) {
  try {
    Body(Stream);
  } catch (...) {
    Stream->Free();
    throw;
  }
  Stream->Free();
}

} // namespace

// --- TStrings --------------------------------------------------------------------------

void TStrings::Error(const char* Msg, int32_t Data) {
  throw EStringListError(Msg, {Data});
}

int32_t TStrings::Add(const AnsiString& S) {
  int32_t Result = GetCount();
  Insert(Result, S);
  return Result;
}

int32_t TStrings::AddObject(const AnsiString& S, TObject* AObject) {
  int32_t Result = Add(S);
  PutObject(Result, AObject);
  return Result;
}

void TStrings::AddStrings(TStrings* Strings) {
  Updating(this, [&] {
    for (int32_t I = 0, N = Strings->Count(); I < N; ++I)
      AddObject(Strings->Get(I), Strings->GetObject(I));
  });
}

void TStrings::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TStrings*>(Source);
  if (!Other) {
    TPersistent::Assign(Source);
    return;
  }
  if (Other == this) return;
  Updating(this, [&] {
    Clear();
    FDelimiter = Other->FDelimiter;
    FQuoteChar = Other->FQuoteChar;
    FNameValueSeparator = Other->FNameValueSeparator;
    FStrictDelimiter = Other->FStrictDelimiter;
    AddStrings(Other);
  });
}

void TStrings::BeginUpdate() {
  if (FUpdateCount == 0) SetUpdateState(true);
  ++FUpdateCount;
}

void TStrings::EndUpdate() {
  --FUpdateCount;
  if (FUpdateCount == 0) SetUpdateState(false);
}

bool TStrings::Equals(TStrings* Strings) const {
  int32_t N = GetCount();
  if (N != Strings->GetCount()) return false;
  for (int32_t I = 0; I < N; ++I)
    if (Get(I) != Strings->Get(I)) return false;
  return true;
}

void TStrings::Exchange(int32_t Index1, int32_t Index2) {
  Updating(this, [&] {
    AnsiString TempString = Get(Index1);
    TObject* TempObject = GetObject(Index1);
    Put(Index1, Get(Index2));
    PutObject(Index1, GetObject(Index2));
    Put(Index2, TempString);
    PutObject(Index2, TempObject);
  });
}

int32_t TStrings::CompareStrings(const AnsiString& S1, const AnsiString& S2) const {
  return AnsiCompareText(S1, S2);
}

int32_t TStrings::IndexOf(const AnsiString& S) const {
  for (int32_t I = 0, N = GetCount(); I < N; ++I)
    if (CompareStrings(Get(I), S) == 0) return I;
  return -1;
}

int32_t TStrings::IndexOfName(const AnsiString& Name) const {
  for (int32_t I = 0, N = GetCount(); I < N; ++I) {
    AnsiString S = Get(I);
    size_t P = S.find(FNameValueSeparator);
    if (P != AnsiString::npos && CompareStrings(S.substr(0, P), Name) == 0) return I;
  }
  return -1;
}

int32_t TStrings::IndexOfObject(TObject* AObject) const {
  for (int32_t I = 0, N = GetCount(); I < N; ++I)
    if (GetObject(I) == AObject) return I;
  return -1;
}

void TStrings::InsertObject(int32_t Index, const AnsiString& S, TObject* AObject) {
  Insert(Index, S);
  PutObject(Index, AObject);
}

void TStrings::Move(int32_t CurIndex, int32_t NewIndex) {
  if (CurIndex == NewIndex) return;
  Updating(this, [&] {
    AnsiString TempString = Get(CurIndex);
    TObject* TempObject = GetObject(CurIndex);
    Delete(CurIndex);
    InsertObject(NewIndex, TempString, TempObject);
  });
}

void TStrings::Put(int32_t Index, const AnsiString& S) {
  Updating(this, [&] {
    TObject* TempObject = GetObject(Index);
    Delete(Index);
    InsertObject(Index, S, TempObject);
  });
}

void TStrings::PutObject(int32_t, TObject*) {}

AnsiString TStrings::ExtractName(const AnsiString& S) const {
  size_t P = S.find(FNameValueSeparator);
  return P == AnsiString::npos ? AnsiString() : S.substr(0, P);
}

AnsiString TStrings::Names(int32_t Index) const {
  return ExtractName(Get(Index));
}

AnsiString TStrings::Values(const AnsiString& Name) const {
  int32_t I = IndexOfName(Name);
  return I >= 0 ? Copy(Get(I), int64_t(Name.size()) + 2, INT32_MAX) : AnsiString();
}

void TStrings::SetValues(const AnsiString& Name, const AnsiString& Value) {
  int32_t I = IndexOfName(Name);
  if (!Value.empty()) {
    if (I < 0) I = Add(AnsiString());
    Put(I, Name + FNameValueSeparator + Value);
  } else if (I >= 0) {
    Delete(I);
  }
}

AnsiString TStrings::ValueFromIndex(int32_t Index) const {
  if (Index < 0) return AnsiString();
  AnsiString S = Get(Index);
  size_t P = S.find(FNameValueSeparator);
  return P == AnsiString::npos ? AnsiString() : S.substr(P + 1);
}

void TStrings::SetValueFromIndex(int32_t Index, const AnsiString& Value) {
  if (!Value.empty()) {
    if (Index < 0) Index = Add(AnsiString());
    Put(Index, Names(Index) + FNameValueSeparator + Value);
  } else if (Index >= 0) {
    Delete(Index);
  }
}

AnsiString TStrings::GetTextStr() const {
  const size_t BreakLen = std::strlen(sLineBreak);
  int32_t N = GetCount();
  AnsiString Result;
  size_t Size = 0;
  for (int32_t I = 0; I < N; ++I) Size += Get(I).size() + BreakLen;
  Result.reserve(Size);
  for (int32_t I = 0; I < N; ++I) {
    Result += Get(I);
    Result += sLineBreak;
  }
  return Result;
}

void TStrings::SetTextStr(const AnsiString& Value) {
  Updating(this, [&] {
    Clear();
    // The text ends at a zero character, as a C string would.
    const char* P = Value.c_str();
    while (*P) {
      const char* Start = P;
      while (*P && *P != '\n' && *P != '\r') ++P;
      Add(AnsiString(Start, size_t(P - Start)));
      if (*P == '\r') ++P;
      if (*P == '\n') ++P;
    }
  });
}

AnsiString TStrings::DelimitedText() const {
  return GetDelimited(FDelimiter, FQuoteChar, FStrictDelimiter);
}

void TStrings::SetDelimitedText(const AnsiString& Value) {
  SetDelimited(Value, FDelimiter, FQuoteChar, FStrictDelimiter);
}

AnsiString TStrings::CommaText() const {
  return GetDelimited(',', '"', false);
}

void TStrings::SetCommaText(const AnsiString& Value) {
  SetDelimited(Value, ',', '"', false);
}

AnsiString TStrings::GetDelimited(AnsiChar Delim, AnsiChar Quote, bool Strict) const {
  int32_t N = GetCount();
  if (N == 1 && Get(0).empty()) return AnsiString(2, Quote);
  AnsiString Result;
  for (int32_t I = 0; I < N; ++I) {
    AnsiString S = Get(I);
    // Quoted when a character up to the first zero needs it.
    for (char Ch : S) {
      if (Ch == '\0') break;
      if ((!Strict && IsBlankOrControl(Ch)) || Ch == Quote || Ch == Delim) {
        S = AnsiQuotedStr(S, Quote);
        break;
      }
    }
    if (I > 0) Result += Delim;
    Result += S;
  }
  return Result;
}

void TStrings::SetDelimited(const AnsiString& Value, AnsiChar Delim, AnsiChar Quote, bool Strict) {
  // Blanks that separate and surround items (not in strict mode): 1 to 32.
  auto Skippable = [Strict](char Ch) { return !Strict && Ch != '\0' && IsBlankOrControl(Ch); };
  Updating(this, [&] {
    Clear();
    const char* P = Value.c_str();
    while (Skippable(*P)) ++P;
    while (*P) {
      AnsiString S;
      if (*P == Quote) {
        S = AnsiExtractQuotedStr(P, Quote);
      } else {
        const char* Start = P;
        while (*P && *P != Delim && (Strict || !IsBlankOrControl(*P))) ++P;
        S.assign(Start, size_t(P - Start));
      }
      Add(S);
      while (Skippable(*P)) ++P;
      if (*P == Delim) {
        // A delimiter at the very end stands for one more, empty, item.
        if (P[1] == '\0') Add(AnsiString());
        do {
          ++P;
        } while (Skippable(*P));
      }
    }
  });
}

void TStrings::LoadFromStream(TStream* Stream) {
  Updating(this, [&] {
    int64_t Size = Stream->Size() - Stream->Position();
    AnsiString S(size_t(Size > 0 ? Size : 0), '\0');
    S.resize(size_t(Stream->ReadUpTo(S.data(), int64_t(S.size()))));
    SetTextStr(S);
  });
}

void TStrings::LoadFromFile(const AnsiString& FileName) {
  WithFile(TFileStream::Create(FileName, fmOpenRead | fmShareDenyWrite),
           [&](TFileStream* Stream) { LoadFromStream(Stream); });
}

void TStrings::SaveToStream(TStream* Stream) const {
  AnsiString S = GetTextStr();
  Stream->WriteBuffer(S.data(), int32_t(S.size()));
}

void TStrings::SaveToFile(const AnsiString& FileName) const {
  WithFile(TFileStream::Create(FileName, fmCreate),
           [&](TFileStream* Stream) { SaveToStream(Stream); });
}

// --- TStringList -----------------------------------------------------------------------

TStringList::~TStringList() {
  OnChange = nullptr;
  OnChanging = nullptr;
  if (FOwnsObjects)
    for (TStringItem& Item : FList) FreeAndNil(Item.FObject);
}

void TStringList::CheckIndex(int32_t Index) const {
  if (Index < 0 || Index >= GetCount()) Error(SListIndexError, Index);
}

void TStringList::Changed() {
  if (UpdateCount() == 0 && OnChange) OnChange(this);
}

void TStringList::Changing() {
  if (UpdateCount() == 0 && OnChanging) OnChanging(this);
}

void TStringList::SetUpdateState(bool Updating) {
  if (Updating)
    Changing();
  else
    Changed();
}

int32_t TStringList::Add(const AnsiString& S) {
  return AddObject(S, nullptr);
}

int32_t TStringList::AddObject(const AnsiString& S, TObject* AObject) {
  int32_t Result = 0;
  if (!FSorted) {
    Result = GetCount();
  } else if (Find(S, Result)) {
    switch (FDuplicates) {
    case dupIgnore:
      return Result;
    case dupError:
      Error(SDuplicateString, 0);
    case dupAccept:
      break;
    }
  }
  InsertItem(Result, S, AObject);
  return Result;
}

void TStringList::Clear() {
  if (FList.empty()) return;
  Changing();
  // Taken out first, so that a destructor that looks at the list sees it empty.
  std::vector<TStringItem> Old;
  Old.swap(FList);
  if (FOwnsObjects)
    for (TStringItem& Item : Old) FreeAndNil(Item.FObject);
  Changed();
}

void TStringList::Delete(int32_t Index) {
  CheckIndex(Index);
  Changing();
  TObject* Obj = FList[size_t(Index)].FObject;
  FList.erase(FList.begin() + Index);
  if (FOwnsObjects) FreeAndNil(Obj);
  Changed();
}

void TStringList::Exchange(int32_t Index1, int32_t Index2) {
  CheckIndex(Index1);
  CheckIndex(Index2);
  Changing();
  std::swap(FList[size_t(Index1)], FList[size_t(Index2)]);
  Changed();
}

bool TStringList::Find(const AnsiString& S, int32_t& Index) const {
  bool Result = false;
  int32_t L = 0, H = GetCount() - 1;
  while (L <= H) {
    int32_t I = L + (H - L) / 2;
    int32_t C = CompareStrings(FList[size_t(I)].FString, S);
    if (C < 0) {
      L = I + 1;
    } else {
      H = I - 1;
      if (C == 0) {
        Result = true;
        if (FDuplicates != dupAccept) L = I;
      }
    }
  }
  Index = L;
  return Result;
}

int32_t TStringList::IndexOf(const AnsiString& S) const {
  if (!FSorted) {
    // TStrings::IndexOf, without copying every string out through Get.
    for (size_t I = 0; I < FList.size(); ++I)
      if (CompareStrings(FList[I].FString, S) == 0) return int32_t(I);
    return -1;
  }
  int32_t Result = 0;
  return Find(S, Result) ? Result : -1;
}

void TStringList::Insert(int32_t Index, const AnsiString& S) {
  InsertObject(Index, S, nullptr);
}

void TStringList::InsertObject(int32_t Index, const AnsiString& S, TObject* AObject) {
  if (FSorted) Error(SSortedListError, 0);
  if (Index < 0 || Index > GetCount()) Error(SListIndexError, Index);
  InsertItem(Index, S, AObject);
}

void TStringList::InsertItem(int32_t Index, const AnsiString& S, TObject* AObject) {
  Changing();
  FList.insert(FList.begin() + Index, TStringItem{S, AObject});
  Changed();
}

void TStringList::Move(int32_t CurIndex, int32_t NewIndex) {
  if (CurIndex == NewIndex) return;
  if (FSorted) Error(SSortedListError, 0);
  CheckIndex(CurIndex);
  CheckIndex(NewIndex);
  // Moved directly: deleting and inserting would free the object of an owning list.
  Changing();
  TStringItem Item = std::move(FList[size_t(CurIndex)]);
  FList.erase(FList.begin() + CurIndex);
  FList.insert(FList.begin() + NewIndex, std::move(Item));
  Changed();
}

AnsiString TStringList::Get(int32_t Index) const {
  CheckIndex(Index);
  return FList[size_t(Index)].FString;
}

TObject* TStringList::GetObject(int32_t Index) const {
  CheckIndex(Index);
  return FList[size_t(Index)].FObject;
}

void TStringList::Put(int32_t Index, const AnsiString& S) {
  if (FSorted) Error(SSortedListError, 0);
  CheckIndex(Index);
  Changing();
  FList[size_t(Index)].FString = S;
  Changed();
}

void TStringList::PutObject(int32_t Index, TObject* AObject) {
  CheckIndex(Index);
  Changing();
  FList[size_t(Index)].FObject = AObject;
  Changed();
}

void TStringList::SetCapacity(int32_t NewCapacity) {
  if (NewCapacity < GetCount()) Error(SListCapacityError, NewCapacity);
  if (size_t(NewCapacity) > FList.capacity())
    FList.reserve(size_t(NewCapacity));
  else
    FList.shrink_to_fit();
}

int32_t TStringList::CompareStrings(const AnsiString& S1, const AnsiString& S2) const {
  return FCaseSensitive ? AnsiCompareStr(S1, S2) : AnsiCompareText(S1, S2);
}

void TStringList::QuickSort(int32_t L, int32_t R, const TStringListSortCompare& Compare) {
  // Hoare's scheme on the list itself: the compare function is given indexes, so items
  // must be where it looks for them.
  int32_t I;
  do {
    I = L;
    int32_t J = R, P = L + (R - L) / 2;
    do {
      while (Compare(this, I, P) < 0) ++I;
      while (Compare(this, J, P) > 0) --J;
      if (I <= J) {
        if (I != J) std::swap(FList[size_t(I)], FList[size_t(J)]);
        if (P == I)
          P = J;
        else if (P == J)
          P = I;
        ++I;
        --J;
      }
    } while (I <= J);
    if (L < J) QuickSort(L, J, Compare);
    L = I;
  } while (I < R);
}

void TStringList::Sort() {
  CustomSort([](TStringList* List, int32_t Index1, int32_t Index2) {
    return List->CompareStrings(List->FList[size_t(Index1)].FString,
                                List->FList[size_t(Index2)].FString);
  });
}

void TStringList::CustomSort(const TStringListSortCompare& Compare) {
  if (FSorted || GetCount() <= 1) return;
  Changing();
  QuickSort(0, GetCount() - 1, Compare);
  Changed();
}

void TStringList::SetSorted(bool Value) {
  if (FSorted == Value) return;
  if (Value) Sort();
  FSorted = Value;
}

void TStringList::SetCaseSensitive(bool Value) {
  if (Value == FCaseSensitive) return;
  FCaseSensitive = Value;
  if (FSorted) {
    FSorted = false;
    SetSorted(true);
  }
}

} // namespace kx
