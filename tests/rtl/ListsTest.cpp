// SPDX-License-Identifier: MIT
// The runtime lists: notifications, ownership, bounds and the thread-safe list.
#include <kx/rtl/Rtl.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace kx;

namespace {
class TRecordingList : public TList {
  KX_CLASS(TRecordingList, TList)
public:
  std::vector<std::string> Seen;

protected:
  void Notify(void* Ptr, TListNotification Action) override {
    static const char* Names[] = {"added", "extracted", "deleted"};
    Seen.push_back(std::string(Names[Action]) + " " + static_cast<const char*>(Ptr));
  }
};
KX_IMPLEMENT_CLASS(TRecordingList, TList, "ListsTest")

int Freed = 0;
class TTracked : public TObject {
  KX_CLASS(TTracked, TObject)
public:
  ~TTracked() override { ++Freed; }
};
KX_IMPLEMENT_CLASS(TTracked, TObject, "ListsTest")
} // namespace

TEST(List, NotifiesEveryChangeIncludingTheClearOnFree) {
  char A[] = "a", B[] = "b", C[] = "c";
  auto* L = TRecordingList::Create();
  L->Add(A);
  L->Insert(0, B);
  L->Add(C);
  L->Add(nullptr); // nil items are not notified
  EXPECT_EQ(L->Extract(A), A);
  L->Delete(0);
  EXPECT_EQ(L->Count(), 2);
  std::vector<std::string> Expected{"added a", "added b", "added c", "extracted a", "deleted b"};
  EXPECT_EQ(L->Seen, Expected);
  // Free clears through the override, last item first.
  std::vector<std::string>* Seen = &L->Seen;
  L->Clear();
  EXPECT_EQ(Seen->back(), "deleted c");
  L->Free();
}

TEST(List, IndexErrorsCarryTheIndex) {
  auto* L = TList::Create();
  try {
    L->Get(3);
    FAIL() << "no exception";
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), "List index out of bounds (3)");
  }
  EXPECT_THROW(L->Delete(-1), EListError);
  int X = 1, Y = 2;
  L->Add(&X);
  L->Add(&Y);
  L->Exchange(0, 1);
  EXPECT_EQ(L->First(), &Y);
  L->Move(0, 1);
  EXPECT_EQ(L->Last(), &Y);
  L->Free();
}

TEST(ObjectList, FreesOwnedObjectsOnDeleteAndFreeButNotOnExtract) {
  Freed = 0;
  auto* L = TObjectList::Create(true);
  auto* A = TTracked::Create();
  auto* B = TTracked::Create();
  auto* C = TTracked::Create();
  L->Add(A);
  L->Add(B);
  L->Add(C);
  L->Delete(0);
  EXPECT_EQ(Freed, 1);
  L->Extract(B);
  EXPECT_EQ(Freed, 1);
  L->Free();
  EXPECT_EQ(Freed, 2);
  B->Free();
}

TEST(ThreadList, LockListSerialisesAddsFromManyThreads) {
  auto* L = TThreadList::Create();
  L->SetDuplicates(dupAccept);
  static int Items[4000];
  std::vector<std::thread> Threads;
  for (int T = 0; T < 4; ++T)
    Threads.emplace_back([L, T] {
      for (int I = 0; I < 1000; ++I) L->Add(&Items[T * 1000 + I]);
    });
  for (auto& T : Threads) T.join();
  TList* Locked = L->LockList();
  EXPECT_EQ(Locked->Count(), 4000);
  L->UnlockList();
  L->SetDuplicates(dupIgnore);
  L->Add(&Items[0]);
  EXPECT_EQ(L->LockList()->Count(), 4000);
  L->UnlockList();
  L->SetDuplicates(dupError);
  EXPECT_THROW(L->Add(&Items[0]), EListError);
  L->Free();
}

TEST(Set, MembersAndOperators) {
  TSet<TComponentState> S{csLoading, csDestroying};
  EXPECT_TRUE(S.Contains(csDestroying));
  EXPECT_FALSE(S.Contains(csReading));
  TSet<TComponentState> T{csDestroying};
  EXPECT_TRUE(T <= S);
  EXPECT_EQ((S - T), TSet<TComponentState>{csLoading});
  EXPECT_EQ((S * T), T);
  EXPECT_EQ((T + TSet<TComponentState>{csLoading}), S);
}
