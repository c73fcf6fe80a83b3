// SPDX-License-Identifier: MIT
// The type registry from many threads: registrations never lost or doubled, lookups and
// schema names never torn while others register and alias.
#include <kx/uKxTypes.h>

#include "stress/StressUtils.h"

#include <gtest/gtest.h>

#include <set>

using namespace kx;

namespace {

AnsiString TypeName(int Thread, int N) {
  return "uStress.TThread" + std::to_string(Thread) + "Type" + std::to_string(N);
}

TEST(TypeRegistryStress, RegistrationsAndLookupsAtOnce) {
  constexpr int Threads = 8, Rounds = 300;
  TKxTypes* Types = TKxTypes::Create();
  TKxTypeInfo* Integer = Types->GetTypeInfo("Integer", tntTypeName, true, mtkInteger);
  std::atomic<int> Lost{0}, Wrong{0}, Torn{0};
  // Every thread registers the shared names too; all must end up with one record each.
  std::vector<std::atomic<TKxTypeRec*>> Shared(Rounds);

  kxtest::RunTogether(Threads, [&](int Index) {
    kxtest::TRandom Random(Index);
    for (int N = 0; N < Rounds; ++N) {
      const AnsiString Own = TypeName(Index, N);
      TKxTypeRec* Rec = Types->AddTypeRec(nullptr, Own, Own.substr(8), rtkRecord, varEmpty,
                                          xsdComplexType, {}, tkRecord, nullptr);
      // Found at once, by every kind of name.
      if (Types->FindByFullName(Own, std::initializer_list<TTypeKind>{tkRecord}) != Rec->Info)
        ++Lost;
      const AnsiString Schema =
          "uStress_Thread" + std::to_string(Index) + "Type" + std::to_string(N);
      if (Types->GetTypeInfo(Schema, tntSchemaName, false, mtkStructure) != Rec->Info) ++Lost;

      const AnsiString SharedName = "uStress.TShared" + std::to_string(N);
      TKxTypeRec* S = Types->AddTypeRec(nullptr, SharedName, SharedName.substr(8), rtkRecord,
                                        varEmpty, xsdComplexType, {}, tkRecord, nullptr);
      TKxTypeRec* Expected = nullptr;
      if (!Shared[N].compare_exchange_strong(Expected, S) && Expected != S) ++Wrong;

      // The default table answers throughout.
      if (Types->GetTypeInfo("int", tntSchemaName, false, mtkInteger) != Integer) ++Wrong;
      // Aliases change a shared type's names while others read them: a reader sees the
      // old primary name or a new one, whole.
      if (Random.Next(4) == 0)
        Types->RegisterTypeAlias(TypeInfo<int32_t>(),
                                 "Int" + std::to_string(Index) + "x" + std::to_string(N));
      const AnsiString Primary = Integer->SchemaName();
      if (Primary != "int" && (Primary.rfind("Int", 0) != 0 || Primary.back() == 'x')) ++Torn;
    }
  });

  EXPECT_EQ(Lost.load(), 0);
  EXPECT_EQ(Wrong.load(), 0);
  EXPECT_EQ(Torn.load(), 0);
  for (int T = 0; T < Threads; ++T)
    for (int N = 0; N < Rounds; N += 37)
      EXPECT_NE(Types->GetTypeInfo(TypeName(T, N), tntQualifiedName, false, mtkStructure), nullptr);
  // One record per shared name, whoever registered it first.
  std::set<TKxTypeRec*> Distinct;
  for (auto& S : Shared) Distinct.insert(S.load());
  EXPECT_EQ(Distinct.size(), size_t(Rounds));
  // "int" stays among Integer's names behind every alias.
  EXPECT_EQ(Types->GetTypeInfo("int", tntSchemaName, false, mtkInteger), Integer);
  Types->Free();
}

} // namespace
