// SPDX-License-Identifier: MIT
// Registries, appender lists, free notification and configuration through a configurator.
#include "LogTestSupport.h"

#include "support/TempFolder.h"

#include <kx/rtl/Files.h>
#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>

using namespace kx;
using kxtest::AsAppender;
using kxtest::LoggingTest;
using kxtest::TRecordingAppender;

namespace {

// An appender that is not reference counted, so it can be freed while lists hold it.
class TUncountedAppender : public TRecordingAppender {
  KX_CLASS(TUncountedAppender, TRecordingAppender)
public:
  TUncountedAppender() = default;
  int32_t KX_STDCALL _AddRef() override { return -1; }
  int32_t KX_STDCALL _Release() override { return -1; }
};

} // namespace
KX_IMPLEMENT_CLASS(TUncountedAppender, kxtest::TRecordingAppender, "AppenderListTest")

namespace {

TEST(LogRegistries, StartUpRegistrationsAndLookup) {
  TKxLogBaseClassList* A = RegisteredAppenders();
  ASSERT_GE(A->Count(), 3);
  EXPECT_EQ(A->Items(0), TKxFileAppender::ClassInfo());
  EXPECT_EQ(A->Items(1), TKxRollingFileAppender::ClassInfo());
  EXPECT_EQ(A->Items(2), TKxDailyRollingFileAppender::ClassInfo());
  TKxLogBaseClassList* L = RegisteredLayouts();
  ASSERT_GE(L->Count(), 2);
  EXPECT_EQ(L->Items(0), TKxSimpleLayout::ClassInfo());
  EXPECT_EQ(L->Items(1), TKxXmlLayout::ClassInfo());

  EXPECT_EQ(A->GetClass("tkxrollingFILEappender"), TKxRollingFileAppender::ClassInfo());
  EXPECT_EQ(KxFindClass("TKxXmlLayout"), TKxXmlLayout::ClassInfo());
  try {
    A->GetClass(cKxLogViewerAppenderServer);
    FAIL();
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), "Class TKxLogViewerAppenderServer not found!");
  }
  // Adding again keeps one entry.
  const int32_t N = A->Count();
  A->Add(TKxFileAppender::ClassInfo());
  EXPECT_EQ(A->Count(), N);
}

TEST_F(LoggingTest, AppenderListRules) {
  IPtr<IKxLogger> Root = Logger();
  TKxLogAppenderList* List = Root->GetAppenders();
  auto* R = TRecordingAppender::Create(nullptr, u"rec");
  IPtr<IKxLogAppender> A = AsAppender(R);
  List->Add(A.Get());
  List->Add(A.Get());
  EXPECT_EQ(List->Count(), 1);
  EXPECT_THROW(List->Add(static_cast<IKxLogAppender*>(nullptr)), EAssertionFailed);
  List->Remove(A.Get());
  EXPECT_EQ(List->Count(), 0);

  // Created by class: named after the class, so two such share a configuration section.
  IPtr<IKxLogAppender> F1 = List->Add(cKxFileAppender, cKxXmlLayout);
  IPtr<IKxLogAppender> F2 = List->Add(TKxFileAppender::ClassInfo());
  EXPECT_EQ(F1->GetName(), u"TKxFileAppender");
  EXPECT_EQ(F2->GetName(), u"TKxFileAppender");
  EXPECT_EQ(List->Count(), 2);
  auto* File = dynamic_cast<TKxFileAppender*>(F1->Component());
  ASSERT_NE(File, nullptr);
  EXPECT_EQ(File->GetFileExt(), ".log.xml");
  List->Clear();
  EXPECT_EQ(List->Count(), 0);
}

TEST_F(LoggingTest, FreedAppenderLeavesEveryList) {
  IPtr<IKxLogger> Root = Logger();
  IPtr<IKxLogger> Child = Root->GetLogger(u"child");
  auto* U = TUncountedAppender::Create();
  Root->AddAppender(static_cast<IKxLogAppender*>(U));
  Child->AddAppender(static_cast<IKxLogAppender*>(U));
  auto* Other = TRecordingAppender::Create(nullptr, u"other");
  Child->AddAppender(AsAppender(Other).Get());
  EXPECT_EQ(Root->GetAppenders()->Count(), 1);
  EXPECT_EQ(Child->GetAppenders()->Count(), 2);
  U->Free();
  EXPECT_EQ(Root->GetAppenders()->Count(), 0);
  EXPECT_EQ(Child->GetAppenders()->Count(), 1);
  Child->Info(u"still dispatched");
  EXPECT_EQ(Other->Records.size(), 1u);
}

TEST_F(LoggingTest, ConfiguratorBuildsTheTree) {
  kxtest::TTempFolder Tmp;
  const std::string Dir = Tmp.Name();
  const UnicodeString Text = u"; a whole tree\n"
                             u"[root]\n"
                             u"Level = Info\n"
                             u"Appenders = main, xml\n"
                             u"Loggers = app, audit\n"
                             u"[main]\n"
                             u"class = TKxRollingFileAppender\n"
                             u"Layout = TKxSimpleLayout\n"
                             u"AppendExisting = false\n"
                             u"FileName = " +
                             AnsiToUnicode(Dir) + u"/main\n" + u"MaxFileSize = 4096\n" +
                             u"MaxBackupCount = 3\n"
                             u"[xml]\n"
                             u"class = tkxfileappender\n"
                             u"Layout = TKxXmlLayout\n"
                             u"FileName = " +
                             AnsiToUnicode(Dir) + u"/events\n" +
                             u"[app]\n"
                             u"Level = 1\n"
                             u"[audit]\n"
                             u"Additive = false\n"
                             u"Appenders = main\n";
  IPtr<IKxLogConfigurator> Config(
      static_cast<IKxLogConfigurator*>(TKxIniLogConfigurator::FromText(Text)));
  IPtr<IKxLogger> Root = Logger();
  Root->SetConfig(Config.Get());
  EXPECT_EQ(Root->GetLevel(), llInfo);
  ASSERT_EQ(Root->GetAppenders()->Count(), 2);
  auto* Main =
      dynamic_cast<TKxRollingFileAppender*>(Root->GetAppenders()->GetAppender(0)->Component());
  ASSERT_NE(Main, nullptr);
  EXPECT_EQ(Main->GetMaxFileSize(), 4096u);
  EXPECT_EQ(Main->GetMaxBackupCount(), 3);
  EXPECT_FALSE(Main->GetAppendExisting());
  EXPECT_EQ(Main->GetFileName(), Dir + "/main.log");
  auto* Xml = dynamic_cast<TKxFileAppender*>(Root->GetAppenders()->GetAppender(1)->Component());
  ASSERT_NE(Xml, nullptr);
  EXPECT_EQ(Xml->GetFileName(), Dir + "/events.log.xml");
  EXPECT_TRUE(FileExists(Dir + "/events.log.xsl"));

  // The configured children live with the root, with their own keys.
  ASSERT_EQ(Root->GetChildLoggers()->Count(), 2);
  TKxLogger* App = Root->GetChildLoggers()->Items(0);
  TKxLogger* Audit = Root->GetChildLoggers()->Items(1);
  EXPECT_EQ(App->GetFullName(), u"root.app");
  EXPECT_EQ(App->GetLevel(), llTrace);
  EXPECT_FALSE(Audit->GetAdditive());
  EXPECT_EQ(Audit->GetLevel(), llInfo);
  // Naming the same appender shares it.
  ASSERT_EQ(Audit->GetAppenders()->Count(), 1);
  EXPECT_EQ(Audit->GetAppenders()->GetAppender(0)->Component(), Main);

  // A logger made later is configured from the root's configurator too.
  IPtr<IKxLogger> Late = Root->GetLogger(u"app");
  EXPECT_EQ(Late.Get(), static_cast<IKxLogger*>(App));

  EXPECT_THROW(TKxIniLogConfigurator::FromText(u"key = before any section"), EConvertError);
  EXPECT_THROW(TKxIniLogConfigurator::FromText(u"[s]\nno equals sign"), EConvertError);
}

TEST_F(LoggingTest, UnknownClassInConfiguration) {
  IPtr<IKxLogConfigurator> Config(static_cast<IKxLogConfigurator*>(TKxIniLogConfigurator::FromText(
      u"[root]\nAppenders = v\n[v]\nclass = TKxLogViewerAppenderClient\n")));
  IPtr<IKxLogger> Root = Logger();
  try {
    Root->SetConfig(Config.Get());
    FAIL();
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), "Class TKxLogViewerAppenderClient not found!");
  }
}

} // namespace
