// SPDX-License-Identifier: MIT
#pragma once
// Named multi-line texts (memos) looked up by a code, compared without regard to case.

#include <kx/classes/Component.h>
#include <kx/rtl/Collection.h>
#include <kx/rtl/StringList.h>

namespace kx {

inline constexpr const char* SKxMemoCodeExists = "There already is a memo with code %s!";
inline constexpr const char* SKxMemoCodeNotFound = "There is no MemoItem with the code %s!";

class TKxMemoList;

class KX_API TKxMemoListItem : public TCollectionItem {
  KX_CLASS(TKxMemoListItem, TCollectionItem)
public:
  explicit TKxMemoListItem(TCollection* ACollection);
  ~TKxMemoListItem() override;

  TStringList* Memo() const { return FMemo; }
  void SetMemo(TStrings* Value) { FMemo->Assign(Value); }
  const AnsiString& Code() const { return FCode; }
  void SetCode(const AnsiString& Value) { FCode = Value; }

protected:
  // Another memo item: its code and lines.
  void AssignTo(TPersistent* Dest) override;

private:
  TStringList* FMemo;
  AnsiString FCode;
};

class KX_API TKxMemoListItems : public TOwnedCollection {
  KX_CLASS(TKxMemoListItems, TOwnedCollection)
public:
  explicit TKxMemoListItems(TKxMemoList* AMemoList);

  TKxMemoList* MemoList() const { return FMemoList; }
  TKxMemoListItem* GetItem(int32_t Index) const;
  // Assigns Item into the entry at Index.
  void SetItem(int32_t Index, TKxMemoListItem* Item);
  AnsiString GetCode(int32_t Index) const;
  void SetCode(int32_t Index, const AnsiString& Code);

  // -1 when absent.
  int32_t IndexOf(const AnsiString& Code) const;
  int32_t IndexOf(TKxMemoListItem* Item) const;
  // Null when absent.
  TKxMemoListItem* Find(const AnsiString& Code) const;
  // A new item with Code and a copy of Memo (when given); EListError when the code exists.
  TKxMemoListItem* Add(const AnsiString& Code, TStrings* Memo = nullptr);
  // Nothing happens for an absent code or item.
  void Remove(const AnsiString& Code);
  void Remove(TKxMemoListItem* Item);
  void Remove(int32_t Index);

protected:
  // Another memo collection: cleared, then each item added by code and assigned.
  void AssignTo(TPersistent* Dest) override;

private:
  TKxMemoList* FMemoList;
};

class KX_API TKxMemoList : public TKxComponent {
  KX_CLASS(TKxMemoList, TKxComponent)
public:
  explicit TKxMemoList(TComponent* AOwner = nullptr);
  ~TKxMemoList() override;

  TKxMemoListItems* Items() const { return FItems; }
  void SetItems(TKxMemoListItems* Value) { FItems->Assign(Value); }
  // The lines of the memo with Code; raises "There is no MemoItem with the code <Code>!".
  TStringList* MemoByCode(const AnsiString& Code) const;

private:
  TKxMemoListItems* FItems;
};

} // namespace kx
