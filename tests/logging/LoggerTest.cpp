// SPDX-License-Identifier: MIT
#include "LogTestSupport.h"

#include <kx/rtl/Component.h>
#include <kx/rtl/SysUtils.h>

using namespace kx;
using kxtest::AsAppender;
using kxtest::LoggingTest;
using kxtest::TRecordingAppender;

KX_IMPLEMENT_CLASS(kxtest::TRecordingAppender, kx::TKxBaseAppender, "LogTestSupport")

namespace {

class TSample : public TPersistent, public IKxPublishedProperties {
  KX_CLASS(TSample, TPersistent)
public:
  TSample() = default;
  TSample* Child = nullptr;
  void GetPublishedProperties(TKxPublishedProperties& P) override {
    P.push_back({"Width", TKxPublishedProperty::ppValue, u"10", nullptr});
    P.push_back({"OnClick", TKxPublishedProperty::ppEvent, u"", nullptr});
    P.push_back({"Inner", TKxPublishedProperty::ppObject, u"", Child});
  }
};

} // namespace
KX_IMPLEMENT_CLASS(TSample, TPersistent, "LoggerTest")

namespace {

TEST_F(LoggingTest, RootAndKeying) {
  IPtr<IKxLogger> Root = Logger();
  EXPECT_EQ(Root->GetName(), u"root");
  EXPECT_EQ(Root->GetFullName(), u"root");
  EXPECT_FALSE(Root->GetParentLevel());
  EXPECT_EQ(Root->GetLevel(), llDebug);
  EXPECT_EQ(Root->GetLogger(u"").Get(), Root.Get());

  IPtr<IKxLogger> A1 = Root->GetLogger(u"a");
  IPtr<IKxLogger> A2 = Root->GetLogger(u"a");
  EXPECT_EQ(A1.Get(), A2.Get());
  EXPECT_EQ(A1->GetFullName(), u"root.a");
  EXPECT_EQ(A1->GetParentLogger().Get(), Root.Get());

  // Deeper names are keyed with the root's prefix, so each call adds one more b.
  IPtr<IKxLogger> B1 = Root->GetLogger(u"a.b");
  IPtr<IKxLogger> B2 = Root->GetLogger(u"a.b");
  EXPECT_NE(B1.Get(), B2.Get());
  EXPECT_EQ(B1->GetFullName(), u"root.a.b");
  EXPECT_EQ(B2->GetFullName(), u"root.a.b");
  EXPECT_EQ(A1->GetChildLoggers()->Count(), 2);
  // Asking level by level finds the same one.
  EXPECT_EQ(A1->GetLogger(u"b").Get(), A1->GetLogger(u"b").Get());

  TSample Obj;
  EXPECT_EQ(Root->GetLogger(&Obj)->GetFullName(), u"root.TSample");
}

TEST_F(LoggingTest, LoggersLiveWhileReferenced) {
  IPtr<IKxLogger> Root = Logger();
  {
    IPtr<IKxLogger> A = Root->GetLogger(u"gone");
    EXPECT_EQ(Root->GetChildLoggers()->Count(), 1);
  }
  EXPECT_EQ(Root->GetChildLoggers()->Count(), 0);
}

TEST_F(LoggingTest, RootRefusesQueryAndCountedClose) {
  IPtr<IKxLogger> Root = Logger();
  void* P = nullptr;
  EXPECT_THROW(Root->QueryInterface(IIDOf<IKxLogger>(), &P), EAssertionFailed);
  IPtr<IKxLogger> Child = Root->GetLogger(u"c");
  EXPECT_EQ(Child->QueryInterface(IIDOf<IKxLogConfigurator>(), &P), KX_E_NOINTERFACE);
  // Closing while the root is still referenced reports the count.
  try {
    CloseRootLogger();
    FAIL() << "no assertion";
  } catch (const EAssertionFailed& E) {
    EXPECT_NE(E.Message().find("The refcount of \"root\" is not equal to 0!"), std::string::npos);
  }
  Root.Reset();
  // The child was cut from the tree by the failed close and lives on its own.
  EXPECT_EQ(Child->GetParentLogger().Get(), nullptr);
  // Without a parent reference the last release no longer frees it.
  auto* Orphan = static_cast<TKxLogger*>(Child.Get());
  Child.Reset();
  EXPECT_EQ(Orphan->RefCount(), 0);
  Orphan->Free();
}

TEST_F(LoggingTest, LevelsInheritanceAndAdditivity) {
  IPtr<IKxLogger> Root = Logger();
  auto* RootRec = TRecordingAppender::Create(nullptr, u"rootrec");
  Root->AddAppender(AsAppender(RootRec).Get());
  IPtr<IKxLogger> A = Root->GetLogger(u"a");
  auto* ARec = TRecordingAppender::Create(nullptr, u"arec");
  A->AddAppender(AsAppender(ARec).Get());

  A->Trace(u"dropped");
  A->Debug(u"kept");
  EXPECT_EQ(ARec->Records.size(), 1u);
  EXPECT_EQ(RootRec->Records.size(), 1u);

  A->SetLevel(llWarn);
  EXPECT_FALSE(A->GetParentLevel());
  A->Info(u"info");
  // root.a's own appender refuses it; the root, at llDebug, still writes it.
  EXPECT_EQ(ARec->Records.size(), 1u);
  ASSERT_EQ(RootRec->Records.size(), 2u);
  EXPECT_EQ(RootRec->Records[1].LoggerName, u"root.a");
  EXPECT_EQ(RootRec->Records[1].OwnerName, u"root");

  A->SetAdditive(false);
  A->Error(u"stops here");
  EXPECT_EQ(ARec->Records.size(), 2u);
  EXPECT_EQ(RootRec->Records.size(), 2u);

  // Inheritance follows the chain up to the first logger with its own level.
  IPtr<IKxLogger> B = A->GetLogger(u"b");
  EXPECT_EQ(B->GetLevel(), llWarn);
  A->SetParentLevel(true);
  EXPECT_EQ(B->GetLevel(), llDebug);
}

TEST_F(LoggingTest, DispatchOrderHasNoEarlyExit) {
  IPtr<IKxLogger> Root = Logger();
  std::vector<TRecordingAppender*> Order;
  auto Make = [&Order](const char16_t* Name) {
    auto* R = TRecordingAppender::Create(nullptr, Name);
    R->Log = &Order;
    return R;
  };
  TRecordingAppender* R1 = Make(u"r1");
  TRecordingAppender* R2 = Make(u"r2");
  TRecordingAppender* M = Make(u"m");
  TRecordingAppender* L = Make(u"l");
  Root->AddAppender(AsAppender(R1).Get());
  Root->AddAppender(AsAppender(R2).Get());
  IPtr<IKxLogger> Mid = Root->GetLogger(u"mid");
  IPtr<IKxLogger> Leaf = Mid->GetLogger(u"leaf");
  Mid->AddAppender(AsAppender(M).Get());
  Leaf->AddAppender(AsAppender(L).Get());
  // The middle logger rejects the message, its parent still gets it.
  Mid->SetLevel(llFatal);
  Leaf->SetLevel(llAll);
  Leaf->Info(u"x");
  ASSERT_EQ(Order.size(), 3u);
  EXPECT_EQ(Order[0], L);
  EXPECT_EQ(Order[1], R1);
  EXPECT_EQ(Order[2], R2);
  EXPECT_EQ(R1->Records[0].LoggerName, u"root.mid.leaf");
}

TEST_F(LoggingTest, EnabledTestsReadTheStoredLevel) {
  IPtr<IKxLogger> Root = Logger();
  IPtr<IKxLogger> A = Root->GetLogger(u"a");
  A->SetLevel(llInfo);
  EXPECT_TRUE(A->IsDebugEnabled());
  EXPECT_TRUE(A->IsInfoEnabled());
  EXPECT_FALSE(A->IsWarnEnabled());
  EXPECT_FALSE(A->IsErrorEnabled());
  EXPECT_FALSE(A->IsFatalEnabled());
  EXPECT_TRUE(A->IsEnabledFor(llTrace));
  EXPECT_FALSE(A->IsEnabledFor(llWarn));
  A->SetLevel(llAll);
  EXPECT_TRUE(A->IsDebugEnabled() && A->IsInfoEnabled() && A->IsWarnEnabled() &&
              A->IsErrorEnabled() && A->IsFatalEnabled());
  // Inherited levels are not looked at.
  IPtr<IKxLogger> B = Root->GetLogger(u"b");
  Root->SetLevel(llFatal);
  EXPECT_TRUE(B->IsDebugEnabled());
  EXPECT_EQ(B->GetLevel(), llFatal);
}

TEST_F(LoggingTest, WritingOperationsBuildTheirMessages) {
  IPtr<IKxLogger> Root = Logger();
  Root->SetLevel(llAll);
  auto* R = TRecordingAppender::Create(nullptr, u"rec");
  Root->AddAppender(AsAppender(R).Get());
  TSample Obj;
  EConvertError Err("bad value");

  Root->Count(u"hits", 5);
  Root->Trace(&Obj, u"go");
  Root->Debug(u"%d-%s", {7, u"x"});
  Root->Debug(u"var", Variant(int32_t(42)));
  Root->Fatal(Err);
  Root->Fatal(u"msg", Err);
  Root->EnterMethod(&Obj, u"Run", llInfo);
  Root->ExitMethod(u"Run", llWarn);
  Root->Log(llError, u"plain", liIndentDecrease);
  TKxLogData* Data = TKxLogData::Create(llWarn, u"record");
  Data->SetIndent(liIndentIncrease);
  Root->Log(IPtr<IKxLogData>(static_cast<IKxLogData*>(Data)).Get());

  auto& Rs = R->Records;
  ASSERT_EQ(Rs.size(), 10u);
  EXPECT_EQ(Rs[0].Msg, u"#counter::hits#");
  EXPECT_EQ(Rs[0].Level, llDebug);
  EXPECT_EQ(Rs[0].Data, u"5");
  EXPECT_EQ(Rs[1].Level, llTrace);
  EXPECT_TRUE(Rs[1].Msg.starts_with(u"TSample($"));
  EXPECT_TRUE(Rs[1].Msg.ends_with(u").go"));
  EXPECT_EQ(Rs[2].Msg, u"7-x");
  EXPECT_EQ(Rs[3].Data, u"42");
  EXPECT_EQ(Rs[4].Msg, u"bad value");
  EXPECT_EQ(Rs[4].Data, u"EConvertError:bad value");
  EXPECT_EQ(Rs[4].Level, llFatal);
  EXPECT_EQ(Rs[5].Msg, u"msg");
  EXPECT_EQ(Rs[6].Msg, u"TSample.Run");
  EXPECT_EQ(Rs[6].Indent, liIndentIncrease);
  EXPECT_EQ(Rs[6].Level, llInfo);
  EXPECT_EQ(Rs[7].Indent, liIndentDecrease);
  EXPECT_EQ(Rs[8].Data, u"<none>");
  EXPECT_EQ(Rs[9].Msg, u"record");
  EXPECT_EQ(Rs[9].Indent, liIndentIncrease);
  EXPECT_EQ(Rs[9].Level, llWarn);
}

TEST(LogPayloads, TextByKind) {
  TKxDataRec R;
  R.Kind = rtkLongWord;
  R.Int = 0xFFFFFFFF;
  EXPECT_EQ(KxDataRecToString(&R), u"4294967295");
  R.Kind = rtkShortInt;
  R.Int = -5;
  EXPECT_EQ(KxDataRecToString(&R), u"-5");
  R.Kind = rtkDouble;
  R.Float = 1.5;
  EXPECT_EQ(KxDataRecToString(&R), u"1.50");
  R.Kind = rtkWChar;
  R.Char = u'Z';
  EXPECT_EQ(KxDataRecToString(&R), u"Z");
  R.Kind = rtkBoolean;
  R.Int = 1;
  EXPECT_EQ(KxDataRecToString(&R), u"True");
  R.Kind = rtkSet;
  R.Int = 6;
  EXPECT_EQ(KxDataRecToString(&R), u"6");
  R.Kind = rtkDynArray;
  EXPECT_EQ(KxDataRecToString(&R), u"DynArray");
  R.Kind = rtkProcedure;
  EXPECT_EQ(KxDataRecToString(&R), u"Procedure");
  R.Kind = rtkPointer;
  R.Ptr = reinterpret_cast<const void*>(uintptr_t(0xBEEF));
  EXPECT_EQ(KxDataRecToString(&R), u"0000BEEF");
  R.Kind = rtkClassRef;
  R.Cls = TSample::ClassInfo();
  EXPECT_EQ(KxDataRecToString(&R), u"TSample");
  R.Kind = rtkUInt64;
  EXPECT_EQ(KxDataRecToString(&R), u"unknown");
  R.Kind = rtkClass;
  R.Obj = nullptr;
  EXPECT_EQ(KxDataRecToString(&R), u"");
  EXPECT_EQ(KxDataRecToString(nullptr), u"");
}

TEST(LogPayloads, ObjectDump) {
  const UnicodeString LB = AnsiToUnicode(sLineBreak);
  TSample Outer, Inner;
  Outer.Child = &Inner;
  TKxDataRec R = TKxDataRec::FromObject(&Outer);
  EXPECT_EQ(KxDataRecToString(&R), LB + u"object : TSample" + LB + u"  Width = 10" + LB +
                                       u"  Inner = " + LB + u"    object : TSample" + LB +
                                       u"      Width = 10" + LB + u"      Inner = ");
  TComponent* C = TComponent::Create(nullptr);
  C->SetName("Button1");
  R = TKxDataRec::FromObject(C);
  EXPECT_EQ(KxDataRecToString(&R), LB + u"object Button1: TComponent" + LB + u"  Name = Button1");
  C->Free();
}

TEST(LogPayloads, RecordEnvironment) {
  TKxLogData* D = TKxLogData::Create(llInfo, u"m");
  IPtr<IKxLogData> Data(static_cast<IKxLogData*>(D));
  EXPECT_EQ(Data->Level(), llInfo);
  EXPECT_EQ(Data->Indent(), liIndentNone);
  EXPECT_EQ(Data->Data()->Kind, rtkUnknown);
  EXPECT_FALSE(Data->ComputerName().empty());
  EXPECT_EQ(Data->ActiveForm(), "n.a.");
  EXPECT_EQ(Data->ActiveControl(), "n.a.");
  EXPECT_NE(Data->OSVersion().find("; Build: "), std::string::npos);
  EXPECT_EQ(KxOSName(611), "Windows 7");
  EXPECT_EQ(KxOSName(11), "Windows Milennium");
  EXPECT_EQ(KxOSName(640), "Unidentified OS");
}

} // namespace
