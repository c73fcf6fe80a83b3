// SPDX-License-Identifier: MIT
#include <kx/rtl/OwnedPtr.h>
#include <kx/rtl/StringList.h>

#include "support/ExpectMessage.h"
#include "support/ShortReadStream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

using namespace kx;
using kxtest::ExpectMessage;
namespace fs = std::filesystem;

namespace {

using List = OwnedPtr<TStringList>;

List MakeList(std::initializer_list<const char*> Items) {
  List L(TStringList::Create());
  for (const char* S : Items) L->Add(S);
  return L;
}

std::vector<AnsiString> Items(const TStrings* L) {
  std::vector<AnsiString> R;
  for (int32_t I = 0; I < L->Count(); ++I) R.push_back(L->Strings(I));
  return R;
}
using V = std::vector<AnsiString>;

// Counts its destructions, to see which objects a list frees.
class TCounted : public TObject {
public:
  explicit TCounted(int* Count) : FCount(Count) {}
  ~TCounted() override { ++*FCount; }

private:
  int* FCount;
};

} // namespace

TEST(StringList, SortedListsInsertInOrderAndFindByBinarySearch) {
  List L = MakeList({"pear", "Apple", "fig", "banana", "Cherry"});
  L->SetSorted(true);
  EXPECT_EQ(Items(L.Get()), (V{"Apple", "banana", "Cherry", "fig", "pear"}));
  EXPECT_EQ(L->Add("date"), 3);
  int32_t Index = -1;
  EXPECT_TRUE(L->Find("CHERRY", Index)); // case-insensitive by default
  EXPECT_EQ(Index, 2);
  EXPECT_FALSE(L->Find("coconut", Index));
  EXPECT_EQ(Index, 3); // where it would go
  EXPECT_FALSE(L->Find("zucchini", Index));
  EXPECT_EQ(Index, L->Count());
  EXPECT_EQ(L->IndexOf("FIG"), 4);
  EXPECT_EQ(L->IndexOf("kiwi"), -1);

  // Many strings: the order holds and every one is found where it is.
  List Big(TStringList::Create());
  Big->SetSorted(true);
  Big->SetDuplicates(dupAccept);
  std::mt19937 Rng(7);
  for (int I = 0; I < 500; ++I) Big->Add("item" + std::to_string(Rng() % 300));
  for (int32_t I = 1; I < Big->Count(); ++I)
    ASSERT_LE(Big->CompareStrings(Big->Strings(I - 1), Big->Strings(I)), 0) << I;
  for (int32_t I = 0; I < Big->Count(); ++I) {
    int32_t At;
    ASSERT_TRUE(Big->Find(Big->Strings(I), At));
    EXPECT_EQ(Big->Strings(At), Big->Strings(I));
  }
}

TEST(StringList, DuplicatesOfASortedList) {
  List L = MakeList({"b", "a"});
  L->SetSorted(true);
  EXPECT_EQ(L->Add("A"), 0); // dupIgnore: the existing index, nothing added
  EXPECT_EQ(L->Count(), 2);
  L->SetDuplicates(dupAccept);
  L->Add("A");
  EXPECT_EQ(L->Count(), 3);
  int32_t Index;
  EXPECT_TRUE(L->Find("a", Index));
  EXPECT_EQ(Index, 0); // accepting duplicates, the first of the equal ones
  L->SetDuplicates(dupError);
  ExpectMessage<EStringListError>([&] { L->Add("B"); }, "String list does not allow duplicates");
  EXPECT_EQ(L->Count(), 3);
  // An unsorted list takes anything.
  List U = MakeList({"x"});
  U->SetDuplicates(dupError);
  U->Add("x");
  EXPECT_EQ(U->Count(), 2);
}

TEST(StringList, CaseSensitivityChangesComparisonAndOrder) {
  List L = MakeList({"b", "B", "a", "A"});
  EXPECT_EQ(L->IndexOf("A"), 2); // case-insensitive: "a" matches first
  L->SetCaseSensitive(true);
  EXPECT_EQ(L->IndexOf("A"), 3);
  L->SetCaseSensitive(false);
  L->SetSorted(true);
  L->SetDuplicates(dupAccept);
  L->SetCaseSensitive(true); // sorted again by the new rule
  for (int32_t I = 1; I < L->Count(); ++I)
    EXPECT_LT(L->CompareStrings(L->Strings(I - 1), L->Strings(I)), 0) << I;
  int32_t Index;
  EXPECT_TRUE(L->Find("B", Index));
  EXPECT_EQ(L->Strings(Index), "B");
  EXPECT_FALSE(L->Find("c", Index));
}

TEST(StringList, SortedListsRefusePositionalChangesAndIndexesAreChecked) {
  List L = MakeList({"a", "b"});
  L->SetSorted(true);
  ExpectMessage<EStringListError>([&] { L->Insert(0, "c"); },
                                  "Operation not allowed on sorted list");
  ExpectMessage<EStringListError>([&] { L->Put(0, "c"); }, "Operation not allowed on sorted list");
  ExpectMessage<EStringListError>([&] { L->Move(0, 1); }, "Operation not allowed on sorted list");
  L->SetSorted(false);
  ExpectMessage<EStringListError>([&] { L->Strings(2); }, "List index out of bounds (2)");
  ExpectMessage<EStringListError>([&] { L->Objects(-1); }, "List index out of bounds (-1)");
  ExpectMessage<EStringListError>([&] { L->Delete(5); }, "List index out of bounds (5)");
  ExpectMessage<EStringListError>([&] { L->Insert(3, "x"); }, "List index out of bounds (3)");
  L->Insert(2, "end"); // one past the last is allowed
  EXPECT_EQ(Items(L.Get()), (V{"a", "b", "end"}));
}

TEST(StringList, SortAndCustomSort) {
  List L = MakeList({"ccc", "a", "bb", "dddd", "b"});
  L->CustomSort([](TStringList* List, int32_t I1, int32_t I2) {
    return int32_t(List->Strings(I2).size()) - int32_t(List->Strings(I1).size());
  });
  EXPECT_EQ(L->Strings(0), "dddd");
  EXPECT_EQ(L->Strings(1), "ccc");
  EXPECT_EQ(L->Strings(2), "bb");
  L->Sort();
  EXPECT_EQ(Items(L.Get()), (V{"a", "b", "bb", "ccc", "dddd"}));
}

TEST(StringList, CommaTextQuotesWhatNeedsIt) {
  List L = MakeList({"a", "b c", "", "d\"e", "f,g", "h"});
  // An empty item between others is left bare; only a list of one empty item gets quotes.
  EXPECT_EQ(L->CommaText(), "a,\"b c\",,\"d\"\"e\",\"f,g\",h");
  List Back(TStringList::Create());
  Back->SetCommaText(L->CommaText());
  EXPECT_TRUE(Back->Equals(L.Get()));

  Back->SetCommaText("  a , \"b c\" ,,d ");
  EXPECT_EQ(Items(Back.Get()), (V{"a", "b c", "", "d"}));
  Back->SetCommaText("a b\tc");
  EXPECT_EQ(Items(Back.Get()), (V{"a", "b", "c"})); // blanks split too
  Back->SetCommaText("a,");
  EXPECT_EQ(Items(Back.Get()), (V{"a", ""}));
  Back->SetCommaText("\"ab\"cd,\"e");
  EXPECT_EQ(Items(Back.Get()), (V{"ab", "cd", ""})); // unterminated quote: last char dropped
  Back->SetCommaText("");
  EXPECT_EQ(Back->Count(), 0);
  EXPECT_EQ(Back->CommaText(), "");
  Back->Add("");
  EXPECT_EQ(Back->CommaText(), "\"\"");
}

TEST(StringList, DelimitedTextUsesTheListsOwnSettings) {
  List L(TStringList::Create());
  L->SetDelimiter(';');
  L->SetQuoteChar('\'');
  L->SetDelimitedText("a b;'c;d';it's");
  EXPECT_EQ(Items(L.Get()), (V{"a", "b", "c;d", "it's"}));
  EXPECT_EQ(L->DelimitedText(), "a;b;'c;d';'it''s'");
  L->SetStrictDelimiter(true);
  L->SetDelimitedText(" a b ;c");
  EXPECT_EQ(Items(L.Get()), (V{" a b ", "c"}));
  EXPECT_EQ(L->DelimitedText(), " a b ;c");
  // Comma text neither uses nor changes these settings.
  EXPECT_EQ(L->CommaText(), "\" a b \",c");
  EXPECT_EQ(L->Delimiter(), ';');
  EXPECT_EQ(L->QuoteChar(), '\'');
  EXPECT_TRUE(L->StrictDelimiter());
}

TEST(StringList, NamesAndValues) {
  List L = MakeList({"a=1", "Key=x=y", "plain", "=empty name"});
  EXPECT_EQ(L->Names(1), "Key");
  EXPECT_EQ(L->Names(2), "");
  EXPECT_EQ(L->Values("KEY"), "x=y");
  EXPECT_EQ(L->Values("plain"), "");
  EXPECT_EQ(L->Values(""), "empty name");
  EXPECT_EQ(L->IndexOfName("A"), 0);
  EXPECT_EQ(L->IndexOfName("plain"), -1);
  EXPECT_EQ(L->ValueFromIndex(1), "x=y");
  EXPECT_EQ(L->ValueFromIndex(2), "");
  L->SetValues("a", "2");
  EXPECT_EQ(L->Strings(0), "a=2");
  L->SetValues("new", "v");
  EXPECT_EQ(L->Strings(4), "new=v");
  L->SetValues("Key", "");
  EXPECT_EQ(L->IndexOfName("Key"), -1);
  L->SetValueFromIndex(0, "3");
  EXPECT_EQ(L->Strings(0), "a=3");
  L->SetNameValueSeparator(':');
  L->Add("host:port");
  EXPECT_EQ(L->Values("HOST"), "port");
}

TEST(StringList, TextSplitsAtAnyLineBreakAndJoinsWithThePlatformOne) {
  List L = MakeList({"a", "", "b"});
  EXPECT_EQ(L->Text(), std::string("a") + sLineBreak + sLineBreak + "b" + sLineBreak);
  L->SetText("x\r\ny\nz\r\rw");
  EXPECT_EQ(Items(L.Get()), (V{"x", "y", "z", "", "w"}));
  L->SetText("one\n");
  EXPECT_EQ(Items(L.Get()), (V{"one"}));
  L->SetText("\n");
  EXPECT_EQ(Items(L.Get()), (V{""}));
  L->SetText("");
  EXPECT_EQ(L->Count(), 0);
}

TEST(StringList, ObjectsTravelWithTheirStringsAndOwningListsFreeThem) {
  int Freed = 0;
  {
    List L(TStringList::Create(true));
    TObject* A = new TCounted(&Freed);
    TObject* B = new TCounted(&Freed);
    L->AddObject("a", A);
    L->AddObject("b", B);
    L->AddObject("c", new TCounted(&Freed));
    L->AddObject("d", new TCounted(&Freed));
    L->Exchange(0, 1);
    EXPECT_EQ(L->Objects(0), B);
    EXPECT_EQ(L->IndexOfObject(A), 1);
    L->Move(0, 2); // a move frees nothing
    EXPECT_EQ(Items(L.Get()), (V{"a", "c", "b", "d"}));
    EXPECT_EQ(L->Objects(2), B);
    EXPECT_EQ(Freed, 0);
    L->Delete(0);
    EXPECT_EQ(Freed, 1);
    L->SetOwnsObjects(false);
    TObject* C = L->Objects(0);
    L->Delete(0);
    EXPECT_EQ(Freed, 1);
    C->Free();
    L->SetOwnsObjects(true);
  }
  EXPECT_EQ(Freed, 4); // the destructor freed the last two

  List NotOwning(TStringList::Create());
  TCounted Kept(&Freed);
  NotOwning->AddObject("k", &Kept);
  NotOwning->Clear();
  EXPECT_EQ(Freed, 4);
}

TEST(StringList, ChangeEventsAreHeldBackDuringUpdates) {
  List L(TStringList::Create());
  std::vector<std::string> Log;
  L->OnChanging = [&](TObject* Sender) {
    EXPECT_EQ(Sender, L.Get());
    Log.push_back("changing");
  };
  L->OnChange = [&](TObject*) { Log.push_back("changed"); };
  L->Add("a");
  EXPECT_EQ(Log, (std::vector<std::string>{"changing", "changed"}));
  Log.clear();
  L->BeginUpdate();
  L->BeginUpdate();
  L->Add("b");
  L->Delete(0);
  L->EndUpdate();
  EXPECT_EQ(Log, (std::vector<std::string>{"changing"}));
  L->EndUpdate();
  EXPECT_EQ(Log, (std::vector<std::string>{"changing", "changed"}));
  Log.clear();
  L->SetCommaText("x,y,z"); // one update for the whole text
  EXPECT_EQ(Log, (std::vector<std::string>{"changing", "changed"}));
}

TEST(StringList, AssignAddStringsEqualsExchangeMove) {
  List A = MakeList({"one", "two"});
  A->SetDelimiter('|');
  int Dummy = 0;
  TCounted Obj(&Dummy);
  A->PutObject(1, &Obj);
  List B = MakeList({"old"});
  B->Assign(A.Get());
  EXPECT_TRUE(B->Equals(A.Get()));
  EXPECT_EQ(B->Objects(1), &Obj);
  EXPECT_EQ(B->Delimiter(), '|');
  B->AddStrings(A.Get());
  EXPECT_EQ(B->DelimitedText(), "one|two|one|two");
  EXPECT_FALSE(B->Equals(A.Get()));
  List C = MakeList({"ONE", "two"});
  EXPECT_FALSE(C->Equals(A.Get())); // case counts here
  C->Exchange(0, 1);
  C->Move(1, 0);
  EXPECT_EQ(Items(C.Get()), (V{"ONE", "two"}));

  TPersistent* P = TPersistent::Create();
  try {
    B->Assign(P);
    ADD_FAILURE();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "Cannot assign a TPersistent to a TStringList");
  }
  P->Free();
  EXPECT_EQ(B->Count(), 4);
}

TEST(StringList, StreamsAndFiles) {
  List L = MakeList({"first", "second line", ""});
  TMemoryStream* M = TMemoryStream::Create();
  L->SaveToStream(M);
  EXPECT_EQ(M->Size(), int64_t(L->Text().size()));
  M->WriteBuffer("tail", 4);
  M->SetPosition(int64_t(std::string("first").size() + std::strlen(sLineBreak)));
  List R(TStringList::Create());
  R->LoadFromStream(M); // from the position on
  M->Free();
  EXPECT_EQ(Items(R.Get()), (V{"second line", "", "tail"}));
  kxtest::TShortReadStream Slow(std::string_view("x\ny\nlast"), 1);
  R->LoadFromStream(&Slow); // one byte per read, still the whole rest
  EXPECT_EQ(Items(R.Get()), (V{"x", "y", "last"}));

  fs::path File = fs::temp_directory_path() / "kx_rtl_stringlist.txt";
  L->SaveToFile(File.string());
  {
    std::ifstream In(File, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(In), {}), L->Text());
  }
  std::ofstream(File, std::ios::binary) << "a\r\nb\nc";
  R->LoadFromFile(File.string());
  EXPECT_EQ(Items(R.Get()), (V{"a", "b", "c"}));
  fs::remove(File);
  EXPECT_THROW(R->LoadFromFile(File.string()), EFOpenError);
  EXPECT_EQ(R->Count(), 3); // a failed load leaves the list alone
}
