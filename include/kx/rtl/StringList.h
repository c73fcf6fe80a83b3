// SPDX-License-Identifier: MIT
#pragma once
// The runtime's string lists: TStrings, the abstract list of strings with an object each,
// and TStringList, which keeps them in memory, optionally sorted.

#include <kx/rtl/Lists.h>
#include <kx/rtl/Persistent.h>
#include <kx/rtl/Streams.h>
#include <kx/rtl/SysUtils.h>

#include <functional>
#include <vector>

namespace kx {

KX_DECLARE_EXCEPTION(EStringListError, Exception)

inline constexpr const char* SDuplicateString = "String list does not allow duplicates";
inline constexpr const char* SSortedListError = "Operation not allowed on sorted list";

using TNotifyEvent = std::function<void(TObject* Sender)>;

class KX_API TStrings : public TPersistent {
  KX_CLASS(TStrings, TPersistent)
public:
  // Appends (a sorted list inserts in order); the index the string went to.
  virtual int32_t Add(const AnsiString& S);
  virtual int32_t AddObject(const AnsiString& S, TObject* AObject);
  void Append(const AnsiString& S) { Add(S); }
  virtual void AddStrings(TStrings* Strings);
  // Another TStrings: its strings, objects, delimiter, quote character and name/value
  // separator.
  void Assign(TPersistent* Source) override;
  // Nested pairs; descendants hear of the first BeginUpdate and the last EndUpdate.
  void BeginUpdate();
  void EndUpdate();
  virtual void Clear() = 0;
  virtual void Delete(int32_t Index) = 0;
  // The same strings, case-sensitively, in the same order (objects are not compared).
  bool Equals(TStrings* Strings) const;
  virtual void Exchange(int32_t Index1, int32_t Index2);
  // By CompareStrings (case-insensitive unless a list says otherwise); -1 when absent.
  virtual int32_t IndexOf(const AnsiString& S) const;
  int32_t IndexOfName(const AnsiString& Name) const;
  int32_t IndexOfObject(TObject* AObject) const;
  virtual void Insert(int32_t Index, const AnsiString& S) = 0;
  virtual void InsertObject(int32_t Index, const AnsiString& S, TObject* AObject);
  virtual void Move(int32_t CurIndex, int32_t NewIndex);
  // The remaining bytes of the stream (the whole file) as Text; no byte-order mark is read.
  virtual void LoadFromStream(TStream* Stream);
  virtual void LoadFromFile(const AnsiString& FileName);
  // Text, as bytes.
  virtual void SaveToStream(TStream* Stream) const;
  virtual void SaveToFile(const AnsiString& FileName) const;

  int32_t Count() const { return GetCount(); }
  AnsiString Strings(int32_t Index) const { return Get(Index); }
  AnsiString operator[](int32_t Index) const { return Get(Index); }
  virtual void Put(int32_t Index, const AnsiString& S);
  TObject* Objects(int32_t Index) const { return GetObject(Index); }
  virtual void PutObject(int32_t Index, TObject* AObject);
  virtual int32_t Capacity() const { return GetCount(); }
  virtual void SetCapacity(int32_t) {}

  // name=value lines, with NameValueSeparator for "=".
  AnsiString Names(int32_t Index) const;
  // The value of the first line named Name, empty when none.
  AnsiString Values(const AnsiString& Name) const;
  // Replaces or appends Name=Value; an empty value deletes the line.
  void SetValues(const AnsiString& Name, const AnsiString& Value);
  // What follows the first separator of the line, empty when there is none.
  AnsiString ValueFromIndex(int32_t Index) const;
  void SetValueFromIndex(int32_t Index, const AnsiString& Value);
  AnsiChar NameValueSeparator() const { return FNameValueSeparator; }
  void SetNameValueSeparator(AnsiChar Value) { FNameValueSeparator = Value; }

  // Every string followed by sLineBreak. Setting splits at CR LF, LF or CR.
  AnsiString Text() const { return GetTextStr(); }
  void SetText(const AnsiString& Value) { SetTextStr(Value); }
  // The strings joined by Delimiter; a string holding a blank, a control character, the
  // quote or the delimiter is quoted with QuoteChar (quotes inside doubled). A single empty
  // string is written as two quotes. Without StrictDelimiter, reading also splits at blanks
  // and drops blanks around the items.
  AnsiString DelimitedText() const;
  void SetDelimitedText(const AnsiString& Value);
  // DelimitedText with ',' and '"', not strict, whatever the list's own settings (which
  // stay as they are).
  AnsiString CommaText() const;
  void SetCommaText(const AnsiString& Value);
  AnsiChar Delimiter() const { return FDelimiter; }
  void SetDelimiter(AnsiChar Value) { FDelimiter = Value; }
  AnsiChar QuoteChar() const { return FQuoteChar; }
  void SetQuoteChar(AnsiChar Value) { FQuoteChar = Value; }
  bool StrictDelimiter() const { return FStrictDelimiter; }
  void SetStrictDelimiter(bool Value) { FStrictDelimiter = Value; }

protected:
  TStrings() = default;
  virtual AnsiString Get(int32_t Index) const = 0;
  virtual int32_t GetCount() const = 0;
  virtual TObject* GetObject(int32_t) const { return nullptr; }
  virtual AnsiString GetTextStr() const;
  virtual void SetTextStr(const AnsiString& Value);
  // Told true at the first BeginUpdate and false at the last EndUpdate.
  virtual void SetUpdateState(bool) {}
  // How IndexOf and IndexOfName compare: AnsiCompareText here.
  virtual int32_t CompareStrings(const AnsiString& S1, const AnsiString& S2) const;
  int32_t UpdateCount() const { return FUpdateCount; }
  [[noreturn]] static void Error(const char* Msg, int32_t Data);
  AnsiString ExtractName(const AnsiString& S) const;
  AnsiString GetDelimited(AnsiChar Delim, AnsiChar Quote, bool Strict) const;
  void SetDelimited(const AnsiString& Value, AnsiChar Delim, AnsiChar Quote, bool Strict);

private:
  int32_t FUpdateCount = 0;
  AnsiChar FDelimiter = ',';
  AnsiChar FQuoteChar = '"';
  AnsiChar FNameValueSeparator = '=';
  bool FStrictDelimiter = false;
};

class TStringList;
// Compares the items at two indexes of List: below 0, 0 or above 0.
using TStringListSortCompare =
    std::function<int32_t(TStringList* List, int32_t Index1, int32_t Index2)>;

// Strings and objects in memory. A sorted list keeps its order on every Add and finds by
// binary search; Duplicates decides what adding an existing string does (sorted lists only).
class KX_API TStringList : public TStrings {
  KX_CLASS(TStringList, TStrings)
public:
  TStringList() = default;
  // An owning list frees the objects of the items it deletes, and all of them when freed.
  explicit TStringList(bool AOwnsObjects) : FOwnsObjects(AOwnsObjects) {}
  ~TStringList() override;

  int32_t Add(const AnsiString& S) override;
  int32_t AddObject(const AnsiString& S, TObject* AObject) override;
  void Clear() override;
  void Delete(int32_t Index) override;
  void Exchange(int32_t Index1, int32_t Index2) override;
  // Binary search by CompareStrings: true when found; Index is where S is or would go. Of
  // several equal strings it finds the first only when duplicates are accepted.
  virtual bool Find(const AnsiString& S, int32_t& Index) const;
  int32_t IndexOf(const AnsiString& S) const override;
  void Insert(int32_t Index, const AnsiString& S) override;
  void InsertObject(int32_t Index, const AnsiString& S, TObject* AObject) override;
  void Move(int32_t CurIndex, int32_t NewIndex) override;
  void Put(int32_t Index, const AnsiString& S) override;
  void PutObject(int32_t Index, TObject* AObject) override;
  int32_t Capacity() const override { return int32_t(FList.capacity()); }
  void SetCapacity(int32_t NewCapacity) override;
  // Sorts an unsorted list (a sorted one already is); not stable.
  virtual void Sort();
  virtual void CustomSort(const TStringListSortCompare& Compare);

  bool Sorted() const { return FSorted; }
  void SetSorted(bool Value);
  TDuplicates Duplicates() const { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) { FDuplicates = Value; }
  bool CaseSensitive() const { return FCaseSensitive; }
  // A sorted list is sorted again by the new rule.
  void SetCaseSensitive(bool Value);
  bool OwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }
  TNotifyEvent OnChange;
  TNotifyEvent OnChanging;

  // AnsiCompareStr when CaseSensitive, else AnsiCompareText.
  int32_t CompareStrings(const AnsiString& S1, const AnsiString& S2) const override;

protected:
  AnsiString Get(int32_t Index) const override;
  int32_t GetCount() const override { return int32_t(FList.size()); }
  TObject* GetObject(int32_t Index) const override;
  void SetUpdateState(bool Updating) override;
  // OnChange / OnChanging, unless an update is in progress.
  virtual void Changed();
  virtual void Changing();
  void InsertItem(int32_t Index, const AnsiString& S, TObject* AObject);

private:
  struct TStringItem {
    AnsiString FString;
    TObject* FObject;
  };
  void CheckIndex(int32_t Index) const;
  void QuickSort(int32_t L, int32_t R, const TStringListSortCompare& Compare);

  std::vector<TStringItem> FList;
  bool FSorted = false;
  TDuplicates FDuplicates = dupIgnore;
  bool FCaseSensitive = false;
  bool FOwnsObjects = false;
};

} // namespace kx
