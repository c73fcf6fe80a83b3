// SPDX-License-Identifier: MIT
// The text line, the XML item, header, footer, escaping and the stylesheet.
#include "LogTestSupport.h"

#include "support/ExternalTool.h"
#include "support/TempFolder.h"

#include <kx/rtl/Files.h>
#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>

#include <regex>

using namespace kx;
using kxtest::LoggingTest;

namespace {

std::string Narrow(const UnicodeString& S) {
  return UTF8Encode(S);
}

TEST(SimpleLayout, LineAndIndentation) {
  IPtr<IKxLogLayout> L(static_cast<IKxLogLayout*>(TKxSimpleLayout::Create(nullptr, u"s")));
  auto* Simple = static_cast<TKxSimpleLayout*>(L->Component());
  const std::string Line =
      Narrow(L->FormatLine(u"root.app", llInfo, u"started", nullptr, liIndentNone));
  EXPECT_TRUE(std::regex_match(
      Line, std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d:\d{3} - Info root\.app - started)")))
      << Line;
  const TKxDataRec Rec = TKxDataRec::FromVariant(Variant(int32_t(5)));
  EXPECT_TRUE(Narrow(L->FormatLine(u"r", llFatal, u"m", &Rec, liIndentNone))
                  .ends_with(" - Fatal r - m - 5"));
  EXPECT_TRUE(
      Narrow(L->FormatLine(u"r", TKxLogLevel(9), u"m", nullptr, liIndentNone)).find(" - 9 r - m") !=
      std::string::npos);

  // Entry lines are already one step in, exit lines back out.
  EXPECT_TRUE(
      Narrow(L->FormatLine(u"r", llDebug, u"enter", nullptr, liIndentIncrease)).starts_with("  2"));
  EXPECT_TRUE(
      Narrow(L->FormatLine(u"r", llDebug, u"inner", nullptr, liIndentNone)).starts_with("  2"));
  EXPECT_TRUE(
      Narrow(L->FormatLine(u"r", llDebug, u"exit", nullptr, liIndentDecrease)).starts_with("2"));
  L->FormatLine(u"r", llDebug, u"exit again", nullptr, liIndentDecrease);
  EXPECT_EQ(Simple->Indentation(), u"");

  EXPECT_TRUE(Narrow(L->GetHeader()).starts_with("Log started on : "));
  EXPECT_TRUE(Narrow(L->GetFooter()).starts_with("Log stopped on : "));
  EXPECT_EQ(L->GetFileExt(), ".log");
}

TEST(XmlLayout, EscapingAndTimeStamps) {
  EXPECT_EQ(KxXmlEscape(u""), u"");
  EXPECT_EQ(KxXmlEscape(u"a'b\"c&d<e>f"), u"a&apos;b&quot;c&amp;d&lt;e&gt;f");
  EXPECT_EQ(KxXmlEscape(UnicodeString(u"x\0y\x01z", 5)), u"xy\x01z");
  EXPECT_TRUE(std::regex_match(Narrow(KxLogIsoTimeStamp()),
                               std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ)")));
}

TEST(XmlLayout, Items) {
  IPtr<IKxLogLayout> L(static_cast<IKxLogLayout*>(TKxXmlLayout::Create(nullptr, u"x")));
  const std::regex Item(
      R"(<item><timeStamp>[0-9T:Z-]{20}</timeStamp><threadID>\d+</threadID>)"
      R"(<loggerName>root\.a&amp;b</loggerName><logLevel>3</logLevel><logIndent>1</logIndent>)"
      R"(<logMessage>x ]]&gt; y</logMessage></item>)");
  const std::string Plain =
      Narrow(L->FormatLine(u"root.a&b", llInfo, u"x ]]> y", nullptr, liIndentIncrease));
  EXPECT_TRUE(std::regex_match(Plain, Item)) << Plain;

  TKxDataRec Rec = TKxDataRec::FromVariant(Variant(u"a ]]> b"));
  EXPECT_NE(Narrow(L->FormatLine(u"r", llInfo, u"m", &Rec, liIndentNone))
                .find("<logMessage>m</logMessage><logValue><![CDATA[a __> b]]></logValue></item>"),
            std::string::npos);
  Rec = TKxDataRec::FromVariant(Variant(u"   "));
  EXPECT_EQ(Narrow(L->FormatLine(u"r", llInfo, u"m", &Rec, liIndentNone)).find("logValue"),
            std::string::npos);

  EConvertError E("broken <thing>");
  Rec = TKxDataRec::FromException(E);
  EXPECT_NE(Narrow(L->FormatLine(u"r", llFatal, u"broken <thing>", &Rec, liIndentNone))
                .find("<logLevel>6</logLevel><logIndent>0</logIndent><logMessage>EConvertError</"
                      "logMessage><logValue><![CDATA[broken <thing>]]></logValue><exceptionClass>"
                      "EConvertError</exceptionClass></item>"),
            std::string::npos);
  EXPECT_NE(Narrow(L->FormatLine(u"r", llError, u"other", &Rec, liIndentNone))
                .find("<logMessage>other</logMessage>"),
            std::string::npos);

  const std::string Header = Narrow(L->GetHeader());
  EXPECT_TRUE(
      std::regex_match(Header, std::regex(R"(<log timeStamp="[^"]+" fileName="[^"]+" )"
                                          R"(userName="[^"]*" computer="[^"]*" processID="\d+">)")))
      << Header;
  EXPECT_EQ(L->GetFooter(), u"</log>");
  EXPECT_EQ(L->GetFileExt(), ".log.xml");
}

TEST_F(LoggingTest, XmlLogIsWellFormedAndTransforms) {
  kxtest::TTempFolder Tmp;
  const AnsiString Base = Tmp.Name("app");
  IPtr<IKxLogger> Root = Logger();
  Root->SetLevel(llAll);
  {
    auto* F = TKxFileAppender::Create(nullptr, u"xml");
    IPtr<IKxLogAppender> A(static_cast<IKxLogAppender*>(F));
    F->SetFileName(Base + ".log");
    F->SetLayout(cKxXmlLayout);
    EXPECT_EQ(F->GetFileName(), Base + ".log.xml");
    Root->AddAppender(A.Get());
    EConvertError E("no <number> & \"quotes\"");
    Root->Info(u"plain & simple");
    Root->Warn(u"careful");
    Root->Log(llError, u"wrong ]]> here", E, liIndentNone);
    Root->Fatal(E);
    Root->Debug(u"payload", Variant(u"x ]]> y"));
    Root->EnterMethod(u"Run", llInfo);
    Root->ClearAppenders();
  }
  const std::string Xml = kxtest::TTempFolder::ReadFile(Base + ".log.xml");
  ASSERT_TRUE(Xml.starts_with("<?xml-stylesheet type=\"text/xsl\" href=\"app.log.xsl\"?><log "));
  EXPECT_TRUE(Xml.ends_with("</log>"));
  const std::string Xsl = kxtest::TTempFolder::ReadFile(Base + ".log.xsl");
  EXPECT_NE(Xsl.find("\r\n"), std::string::npos);

  // A stylesheet already there is the user's and stays.
  Tmp.WriteFile("app.log.xsl", "mine");
  {
    auto* F = TKxFileAppender::Create(nullptr, u"xml2");
    IPtr<IKxLogAppender> A(static_cast<IKxLogAppender*>(F));
    F->SetFileName(Base + ".log");
    F->SetLayout(cKxXmlLayout);
  }
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(Base + ".log.xsl"), "mine");
  Tmp.WriteFile("app.log.xsl", Xsl);

  auto Lint = kxtest::RunExternalTool("xmllint", {"--noout", Base + ".log.xml"}, "");
  if (Lint.Absent) GTEST_SKIP() << Lint.Message;
  EXPECT_EQ(Lint.ExitCode, 0);
  auto Html = kxtest::RunExternalTool("xsltproc", {Base + ".log.xsl", Base + ".log.xml"}, "");
  if (Html.Absent) GTEST_SKIP() << Html.Message;
  ASSERT_EQ(Html.ExitCode, 0);
  const std::string& H = Html.Output;
  auto Count = [&H](const std::string& S) {
    size_t N = 0;
    for (size_t P = H.find(S); P != std::string::npos; P = H.find(S, P + 1)) ++N;
    return N;
  };
  EXPECT_EQ(Count("<tr class=\"llWarn\">"), 1u);
  EXPECT_EQ(Count("<tr class=\"llError\">"), 1u);
  EXPECT_EQ(Count("<tr class=\"llFatal\">"), 1u);
  EXPECT_EQ(Count("<tr>"), 3u);
  EXPECT_NE(H.find("<th>Timestamp</th>"), std::string::npos);
  EXPECT_NE(H.find("plain &amp; simple"), std::string::npos);
  EXPECT_NE(H.find("Computer: "), std::string::npos);
}

} // namespace
