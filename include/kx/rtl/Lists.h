// SPDX-License-Identifier: MIT
#pragma once
// The runtime's pointer list, owning object list and thread-safe list.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Object.h>

#include <mutex>
#include <vector>

namespace kx {

enum TListNotification : uint8_t { lnAdded, lnExtracted, lnDeleted };
enum TDuplicates : uint8_t { dupIgnore, dupAccept, dupError };
using TListSortCompare = int (*)(void* Item1, void* Item2);

inline constexpr const char* SListIndexError = "List index out of bounds (%d)";
inline constexpr const char* SListCapacityError = "List capacity out of bounds (%d)";
inline constexpr const char* SDuplicateItem = "List does not allow duplicates ($0%x)";

// A growable list of pointers that tells an overridable Notify of every change.
// Destruction through Free clears the list first, so overrides of Notify still run.
class KX_API TList : public TObject {
  KX_CLASS(TList, TObject)
public:
  TList() = default;
  ~TList() override;
  void BeforeDestruction() override;

  int32_t Add(void* Item);
  void Insert(int32_t Index, void* Item);
  void Delete(int32_t Index);
  int32_t Remove(void* Item);
  // Removes the item without it counting as deleted (an owning list does not free it).
  void* Extract(void* Item);
  void Clear();
  int32_t IndexOf(void* Item) const;
  void Exchange(int32_t Index1, int32_t Index2);
  void Move(int32_t CurIndex, int32_t NewIndex);
  void Sort(TListSortCompare Compare);
  void* First() const { return Get(0); }
  void* Last() const { return Get(Count() - 1); }

  int32_t Count() const { return static_cast<int32_t>(FList.size()); }
  void SetCount(int32_t NewCount);
  int32_t Capacity() const { return static_cast<int32_t>(FList.capacity()); }
  void SetCapacity(int32_t NewCapacity);
  void* Get(int32_t Index) const;
  void Put(int32_t Index, void* Item);
  void* operator[](int32_t Index) const { return Get(Index); }
  void* const* List() const { return FList.data(); }

  [[noreturn]] static void Error(const char* Msg, int64_t Data);

protected:
  virtual void Notify(void* Ptr, TListNotification Action);

private:
  std::vector<void*> FList;
};

// Frees its objects on delete when it owns them.
class KX_API TObjectList : public TList {
  KX_CLASS(TObjectList, TList)
public:
  explicit TObjectList(bool AOwnsObjects = true) : FOwnsObjects(AOwnsObjects) {}

  int32_t Add(TObject* AObject) { return TList::Add(AObject); }
  int32_t Remove(TObject* AObject) { return TList::Remove(AObject); }
  int32_t IndexOf(TObject* AObject) const { return TList::IndexOf(AObject); }
  TObject* Extract(TObject* Item) { return static_cast<TObject*>(TList::Extract(Item)); }
  void Insert(int32_t Index, TObject* AObject) { TList::Insert(Index, AObject); }
  TObject* Get(int32_t Index) const { return static_cast<TObject*>(TList::Get(Index)); }
  TObject* operator[](int32_t Index) const { return Get(Index); }
  bool OwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }

protected:
  void Notify(void* Ptr, TListNotification Action) override;

private:
  bool FOwnsObjects;
};

// A list guarded by a recursive lock: LockList hands out the list, UnlockList gives it back.
class KX_API TThreadList : public TObject {
  KX_CLASS(TThreadList, TObject)
public:
  TThreadList();
  ~TThreadList() override;

  void Add(void* Item);
  void Remove(void* Item);
  void Clear();
  TList* LockList();
  void UnlockList();
  TDuplicates Duplicates() const { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) { FDuplicates = Value; }

private:
  TList* FList;
  std::recursive_mutex FLock;
  TDuplicates FDuplicates = dupIgnore;
};

} // namespace kx
