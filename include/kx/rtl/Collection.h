// SPDX-License-Identifier: MIT
#pragma once
// Collections: a list that owns items of one class, each knowing its collection, its index
// and an identifier that stays unique in the collection.

#include <kx/rtl/Persistent.h>

#include <vector>

namespace kx {

class TCollection;

enum TCollectionNotification : uint8_t { cnAdded, cnExtracting, cnDeleting };

class KX_API TCollectionItem : public TPersistent {
  KX_CLASS(TCollectionItem, TPersistent)
public:
  // Joins ACollection (when given) at its end.
  explicit TCollectionItem(TCollection* ACollection);
  // Leaves the collection.
  void BeforeDestruction() override;

  TCollection* Collection() const { return FCollection; }
  // Leaves the current collection and joins Value at its end.
  void SetCollection(TCollection* Value);
  int32_t ID() const { return FID; }
  // The position in the collection; -1 outside one.
  int32_t Index() const;
  void SetIndex(int32_t Value);
  virtual AnsiString DisplayName() const { return ClassName(); }
  AnsiString GetNamePath() override;

protected:
  // Tells the collection that this item (or, with AllItems, every item) changed.
  void Changed(bool AllItems);
  TPersistent* GetOwner() override;

private:
  friend class TCollection;
  TCollection* FCollection = nullptr;
  int32_t FID = 0;
};

// Makes an item of the collection's class inside the collection.
using TCollectionItemFactory = TCollectionItem* (*)(TCollection* Collection);

template <class TItem>
TCollectionItem* CollectionItemFactory(TCollection* Collection) {
  return TItem::Create(Collection);
}

class KX_API TCollection : public TPersistent {
  KX_CLASS(TCollection, TPersistent)
public:
  // The items are made by AItemFactory; TItem::ClassInfo() names their class.
  TCollection(TClass AItemClass, TCollectionItemFactory AItemFactory);
  template <class TItem>
  static TCollection* CreateOf() {
    return TCollection::Create(TItem::ClassInfo(), &CollectionItemFactory<TItem>);
  }
  // Frees the items.
  void BeforeDestruction() override;

  TCollectionItem* Add();
  // Adds an item and moves it to Index.
  TCollectionItem* Insert(int32_t Index);
  // Frees the item at Index.
  void Delete(int32_t Index);
  void Clear();
  // Another collection: its items are added anew and each assigned from the source's.
  void Assign(TPersistent* Source) override;
  // Nested; the collection hears of changes (Update) once the outermost EndUpdate ran.
  virtual void BeginUpdate();
  virtual void EndUpdate();
  TCollectionItem* FindItemID(int32_t ID) const;

  int32_t Count() const { return int32_t(FItems.size()); }
  TCollectionItem* Items(int32_t Index) const;
  void SetItem(int32_t Index, TCollectionItem* Value) { Items(Index)->Assign(Value); }
  TClass ItemClass() const { return FItemClass; }
  AnsiString GetNamePath() override;

protected:
  // Called when an item was added or is being removed or deleted.
  virtual void Notify(TCollectionItem* Item, TCollectionNotification Action);
  // Called after changes outside an update; Item is null when more than one may have changed.
  virtual void Update(TCollectionItem* Item);
  void Changed();
  int32_t UpdateCount() const { return FUpdateCount; }

private:
  friend class TCollectionItem;
  void InsertItem(TCollectionItem* Item);
  void RemoveItem(TCollectionItem* Item);
  void MoveItem(TCollectionItem* Item, int32_t NewIndex);
  void CheckIndex(int32_t Index) const;

  TClass FItemClass;
  TCollectionItemFactory FItemFactory;
  std::vector<TCollectionItem*> FItems;
  int32_t FUpdateCount = 0;
  int32_t FNextID = 0;
};

// A collection that knows the object it belongs to (for name paths and ownership queries).
class KX_API TOwnedCollection : public TCollection {
  KX_CLASS(TOwnedCollection, TCollection)
public:
  TOwnedCollection(TPersistent* AOwner, TClass AItemClass, TCollectionItemFactory AItemFactory)
      : TCollection(AItemClass, AItemFactory), FOwner(AOwner) {}
  TPersistent* Owner() const { return FOwner; }

protected:
  TPersistent* GetOwner() override { return FOwner; }

private:
  TPersistent* FOwner;
};

} // namespace kx
