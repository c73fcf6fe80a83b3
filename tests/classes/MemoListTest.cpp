// SPDX-License-Identifier: MIT
// Tokenizing, key/description lists and memo lists with their messages.
#include <kx/uKxClasses.h>

#include "support/ExpectMessage.h"

#include <gtest/gtest.h>

using namespace kx;
using kxtest::ExpectMessage;

namespace {

std::vector<AnsiString> Items(TStrings* L) {
  std::vector<AnsiString> R;
  for (int32_t I = 0; I < L->Count(); ++I) R.push_back(L->Strings(I));
  return R;
}

} // namespace

TEST(KxStringList, TokenizeDropsEmptyFields) {
  auto* L = TKxStringList::Create();
  L->Add("old");
  L->Tokenize(",a,,b,", ',');
  EXPECT_EQ(Items(L), (std::vector<AnsiString>{"a", "b"}));
  EXPECT_EQ(L->Delimiter(), ',');
  L->Tokenize(" x ; y", ';');
  EXPECT_EQ(Items(L), (std::vector<AnsiString>{" x ", " y"}));
  L->Tokenize("whole", ',');
  EXPECT_EQ(Items(L), (std::vector<AnsiString>{"whole"}));
  L->Tokenize("", ',');
  EXPECT_EQ(L->Count(), 0);
  L->Tokenize(";;;", ';');
  EXPECT_EQ(L->Count(), 0);
  L->Free();
}

TEST(KeyDescStringList, KeysAndDescriptionsStayPaired) {
  auto* K = TKxKeyDescStringList::Create();
  K->AddItem("zero");
  K->AddItem("one");
  K->AddItem("two");
  EXPECT_EQ(Items(K->KeyValues()), (std::vector<AnsiString>{"0", "1", "2"}));
  EXPECT_EQ(K->GetIntKeyValue("one"), 1);
  EXPECT_EQ(K->GetIntKeyValue("ONE"), 1); // the list's own, case-insensitive search
  K->AddItem(42, "answer");
  K->AddItem("k", "letter");
  EXPECT_EQ(K->GetDescription(Variant(int16_t(42))), "answer");
  EXPECT_EQ(K->GetDescription(Variant(int32_t(2))), "two");
  EXPECT_EQ(K->GetDescription(Variant("K")), "letter");
  EXPECT_EQ(K->GetDescription(Variant(int32_t(7))), "");
  EXPECT_EQ(K->GetDescription(Variant()), "");
  EXPECT_EQ(K->GetStrKeyValue("letter"), "k");
  EXPECT_EQ(K->GetIntKeyValue("letter"), -1);
  EXPECT_EQ(K->GetIntKeyValue("missing"), -1);
  EXPECT_EQ(K->GetStrKeyValue("missing"), "");

  auto* Plain = TStringList::Create();
  Plain->Add("a");
  Plain->Add("b");
  auto* Copy = TKxKeyDescStringList::Create();
  Copy->Assign(Plain);
  EXPECT_EQ(Items(Copy->KeyValues()), (std::vector<AnsiString>{"0", "1"}));
  EXPECT_EQ(Items(Copy->Descriptions()), (std::vector<AnsiString>{"a", "b"}));
  Copy->AddItems(Plain);
  EXPECT_EQ(Items(Copy->KeyValues()), (std::vector<AnsiString>{"0", "1", "2", "3"}));
  Copy->Assign(K);
  EXPECT_EQ(Items(Copy->KeyValues()), Items(K->KeyValues()));
  EXPECT_EQ(Items(Copy->Descriptions()), Items(K->Descriptions()));
  Copy->Clear();
  EXPECT_EQ(Copy->KeyValues()->Count() + Copy->Descriptions()->Count(), 0);
  Copy->Free();
  Plain->Free();
  K->Free();
}

TEST(MemoList, CodesAreUniqueWithoutRegardToCase) {
  auto* M = TKxMemoList::Create();
  auto* Lines = TStringList::Create();
  Lines->Add("first");
  Lines->Add("second");
  TKxMemoListItem* Abc = M->Items()->Add("Abc", Lines);
  EXPECT_EQ(Abc->Collection(), M->Items());
  EXPECT_EQ(M->Items()->MemoList(), M);
  ExpectMessage<EListError>([&] { M->Items()->Add("ABC"); },
                            "There already is a memo with code ABC!");
  EXPECT_EQ(M->Items()->Count(), 1);
  EXPECT_EQ(Items(M->MemoByCode("abc")), (std::vector<AnsiString>{"first", "second"}));
  ExpectMessage<Exception>([&] { M->MemoByCode("nope"); },
                           "There is no MemoItem with the code nope!");
  M->Items()->Add("x");
  M->Items()->Add("y");
  EXPECT_EQ(M->Items()->IndexOf("Y"), 2);
  EXPECT_EQ(M->Items()->IndexOf(Abc), 0);
  EXPECT_EQ(M->Items()->Find("z"), nullptr);
  M->Items()->SetCode(1, "xx");
  EXPECT_EQ(M->Items()->GetCode(1), "xx");
  M->Items()->Remove("XX");
  M->Items()->Remove("absent");
  EXPECT_EQ(M->Items()->Count(), 2);
  M->Items()->Remove(M->Items()->Find("y"));
  EXPECT_EQ(M->Items()->Count(), 1);

  // Copies: item into item, collection into collection, list into list.
  auto* Other = TKxMemoList::Create();
  Other->Items()->Add("q");
  Other->Items()->Add("r");
  Other->Items()->SetItem(1, Abc);
  EXPECT_EQ(Other->Items()->GetCode(1), "Abc");
  EXPECT_EQ(Other->MemoByCode("abc")->Count(), 2);
  Other->SetItems(M->Items());
  ASSERT_EQ(Other->Items()->Count(), 1);
  EXPECT_NE(Other->Items()->GetItem(0), Abc);
  EXPECT_EQ(Items(Other->MemoByCode("ABC")), Items(Lines));
  Other->Items()->Remove(0);
  EXPECT_EQ(Other->Items()->Count(), 0);
  Other->Free();
  Lines->Free();
  M->Free();
}
