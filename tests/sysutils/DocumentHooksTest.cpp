// SPDX-License-Identifier: MIT
// The JSON and XML document hooks: empty slots raise, set slots are called, clearing works.
#include <kx/rtl/InterfacedObject.h>
#include <kx/uKxSysUtils.h>

#include <gtest/gtest.h>

#include <type_traits>

using namespace kx;

namespace {

AnsiString LastText;

class TDoc : public TInterfacedObject {
  KX_CLASS(TDoc, TInterfacedObject)
};
KX_IMPLEMENT_CLASS(TDoc, TInterfacedObject, "DocumentHooksTest")

IPtr<IInterface> MakeDoc(const AnsiString& S) {
  LastText = S;
  return IPtr<IInterface>(static_cast<IInterface*>(TDoc::Create()));
}

IPtr<IInterface> MakeNothing(const AnsiString&) {
  return nullptr;
}

Variant ValueOf(const IPtr<IInterface>& Doc, const AnsiString& Path) {
  return Doc ? Variant(Path + "!") : Variant(int32_t(-1));
}

template <class... A>
void ExpectQuillonFor(auto(*Call)(A...), std::remove_cvref_t<A>... Args) {
  try {
    Call(Args...);
    ADD_FAILURE() << "no exception";
  } catch (const Exception& E) {
    EXPECT_EQ(E.ClassType(), Exception::ClassInfo());
    EXPECT_EQ(E.Message(), "Quillon is required for this functionality!");
  }
}

void ExpectQuillon(IPtr<IInterface> (*Call)(const AnsiString&)) {
  ExpectQuillonFor(Call, AnsiString("{}"));
}

} // namespace

TEST(DocumentHooks, EmptySlotsRaiseAndSetSlotsAreCalled) {
  ExpectQuillon(&KxCreateJSONDoc);
  ExpectQuillon(&KxCreateXMLDoc);

  SetCreateJSONDoc(&MakeDoc);
  IPtr<IInterface> Doc = KxCreateJSONDoc("{\"a\":1}");
  EXPECT_TRUE(Doc);
  EXPECT_EQ(LastText, "{\"a\":1}");
  ExpectQuillon(&KxCreateXMLDoc); // the slots are separate

  SetCreateXMLDoc(&MakeNothing);
  EXPECT_FALSE(KxCreateXMLDoc("<a/>"));
  SetCreateXMLDoc(&MakeDoc);
  EXPECT_TRUE(KxCreateXMLDoc("<a/>"));
  EXPECT_EQ(LastText, "<a/>");

  SetCreateJSONDoc(nullptr);
  SetCreateXMLDoc(nullptr);
  ExpectQuillon(&KxCreateJSONDoc);
  ExpectQuillon(&KxCreateXMLDoc);
}

TEST(DocumentHooks, ValueSlotsAreSeparateFromTheCreateSlots) {
  SetCreateJSONDoc(&MakeDoc);
  IPtr<IInterface> Doc = KxCreateJSONDoc("{}");
  ExpectQuillonFor(&KxGetJSONDocValue, Doc, AnsiString("a.b"));
  ExpectQuillonFor(&KxGetXMLDocValue, Doc, AnsiString("/a"));
  SetGetJSONDocValue(&ValueOf);
  EXPECT_EQ(VarToStr(KxGetJSONDocValue(Doc, "a.b")), "a.b!");
  EXPECT_EQ(KxGetJSONDocValue(nullptr, "x").ToInteger(), -1);
  ExpectQuillonFor(&KxGetXMLDocValue, Doc, AnsiString("/a"));
  SetGetXMLDocValue(&ValueOf);
  EXPECT_EQ(VarToStr(KxGetXMLDocValue(Doc, "/a")), "/a!");
  SetGetJSONDocValue(nullptr);
  SetGetXMLDocValue(nullptr);
  SetCreateJSONDoc(nullptr);
  ExpectQuillonFor(&KxGetJSONDocValue, Doc, AnsiString("a.b"));
}
