// SPDX-License-Identifier: MIT
// The plain text and the XML layouts.
#include <kx/logging/FileAppenders.h>
#include <kx/logging/Layouts.h>
#include <kx/logging/Logger.h>
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/Files.h>
#include <kx/rtl/Streams.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/SystemInfo.h>

#include "platform/Host.h"
#include "platform/Platform.h"
#include "platform/Processes.h"

namespace kx {

KX_IMPLEMENT_CLASS(TKxLogLayoutBase, TKxLogBase, "uKxLogLayouts")
KX_IMPLEMENT_CLASS(TKxSimpleLayout, TKxLogLayoutBase, "uKxLogLayouts")
KX_IMPLEMENT_CLASS(TKxXmlLayout, TKxLogLayoutBase, "uKxLogLayouts")

namespace {

inline void Put2(char16_t* P, unsigned V) {
  P[0] = char16_t(u'0' + V / 10);
  P[1] = char16_t(u'0' + V % 10);
}

void AppendDecimal(UnicodeString& Out, int64_t V) {
  char Buf[24];
  int N = 0;
  const bool Negative = V < 0;
  uint64_t U = Negative ? 0 - uint64_t(V) : uint64_t(V);
  do {
    Buf[N++] = char('0' + U % 10);
    U /= 10;
  } while (U);
  if (Negative) Out += u'-';
  while (N) Out += char16_t(Buf[--N]);
}

// "yyyy-mm-dd?hh:nn:ss" into B[0..18], with Sep between the date and the time.
void PutDateAndTime(char16_t* B, const TSystemTime& T, char16_t Sep) {
  Put2(B, T.wYear / 100 % 100);
  Put2(B + 2, T.wYear % 100);
  B[4] = u'-';
  Put2(B + 5, T.wMonth);
  B[7] = u'-';
  Put2(B + 8, T.wDay);
  B[10] = Sep;
  Put2(B + 11, T.wHour);
  B[13] = u':';
  Put2(B + 14, T.wMinute);
  B[16] = u':';
  Put2(B + 17, T.wSecond);
}

} // namespace

namespace detail {

void AppendLogTimeStamp(UnicodeString& Out) {
  // Formatted by hand: this runs once per line and is the layout's hot spot.
  TSystemTime T;
  platform::HostStampLocalTime(T);
  char16_t B[23] = {};
  PutDateAndTime(B, T, u' ');
  B[19] = u':';
  B[20] = char16_t(u'0' + T.wMilliseconds / 100);
  Put2(B + 21, T.wMilliseconds % 100);
  Out.append(B, 23);
}

} // namespace detail

UnicodeString KxLogIsoTimeStamp() {
  // The local time converted to UTC is the system clock.
  TSystemTime T;
  platform::GetSystemTime(T);
  char16_t B[20] = {};
  PutDateAndTime(B, T, u'T');
  B[19] = u'Z';
  return UnicodeString(B, 20);
}

UnicodeString KxXmlEscape(const UnicodeString& S) {
  if (S.empty()) return S;
  UnicodeString Out;
  Out.reserve(S.size() + 16);
  size_t Run = 0;
  for (size_t I = 0; I < S.size(); ++I) {
    const char16_t* Entity = nullptr;
    switch (S[I]) {
    case u'\'':
      Entity = u"&apos;";
      break;
    case u'"':
      Entity = u"&quot;";
      break;
    case u'&':
      Entity = u"&amp;";
      break;
    case u'<':
      Entity = u"&lt;";
      break;
    case u'>':
      Entity = u"&gt;";
      break;
    case 0:
      Entity = u"";
      break;
    default:
      continue;
    }
    // Unescaped runs are copied in one piece.
    Out.append(S, Run, I - Run);
    Out += Entity;
    Run = I + 1;
  }
  Out.append(S, Run, S.size() - Run);
  return Out;
}

bool TKxLogLayoutBase::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxLogLayout>()) {
    IKxLogLayout* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  if (IID == IIDOf<IKxLogLayoutEx>()) {
    IKxLogLayoutEx* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TKxLogBase::GetInterface(IID, Obj);
}

// --- simple ----------------------------------------------------------------------------------

UnicodeString KX_STDCALL TKxSimpleLayout::GetHeader() {
  return u"Log started on : " + AnsiToUnicode(DateTimeToStr(Now()));
}

UnicodeString KX_STDCALL TKxSimpleLayout::GetFooter() {
  return u"Log stopped on : " + AnsiToUnicode(DateTimeToStr(Now()));
}

UnicodeString KX_STDCALL TKxSimpleLayout::FormatLine(const UnicodeString& LoggerName,
                                                     TKxLogLevel Level, const UnicodeString& Msg,
                                                     const TKxDataRec* Data, TKxLogIndent Indent) {
  // The indentation moves first: an entry line is already one step deeper, an exit line
  // back at the outer depth.
  if (Indent == liIndentIncrease)
    FIndent += u"  ";
  else if (Indent == liIndentDecrease)
    FIndent.resize(FIndent.size() >= 2 ? FIndent.size() - 2 : 0);
  UnicodeString Line;
  Line.reserve(FIndent.size() + 40 + LoggerName.size() + Msg.size());
  Line += FIndent;
  detail::AppendLogTimeStamp(Line);
  Line += u" - ";
  if (Level <= llDoNotLog)
    Line += KxLogLevelNames[Level];
  else
    AppendDecimal(Line, Level);
  Line += u' ';
  Line += LoggerName;
  Line += u" - ";
  Line += Msg;
  if (Data) {
    Line += u" - ";
    Line += KxDataRecToString(Data);
  }
  return Line;
}

// --- XML -------------------------------------------------------------------------------------

void KX_STDCALL TKxXmlLayout::Initialize(TKxLogBase* Appender) {
  auto* File = dynamic_cast<TKxFileAppender*>(Appender);
  if (!File) return;
  FStyleSheet = ChangeFileExt(File->GetFileName(), ".xsl");
  if (FStyleSheet.empty() || FileExists(FStyleSheet)) return;
  ForceDirectories(ExtractFileDir(FStyleSheet));
  const AnsiString Text = KxLogStyleSheet();
  TFileStream* Stream = TFileStream::Create(FStyleSheet, fmCreate);
  try {
    Stream->WriteBuffer(Text.data(), int64_t(Text.size()));
  } catch (...) {
    Stream->Free();
    throw;
  }
  Stream->Free();
}

UnicodeString KX_STDCALL TKxXmlLayout::GetHeader() {
  UnicodeString H;
  if (!FStyleSheet.empty())
    H = u"<?xml-stylesheet type=\"text/xsl\" href=\"" +
        AnsiToUnicode(ExtractFileName(FStyleSheet)) + u"\"?>";
  H += u"<log ";
  H += u"timeStamp=\"" + KxLogIsoTimeStamp() + u"\" ";
  H += u"fileName=\"" + AnsiToUnicode(platform::ModuleFileName()) + u"\" ";
  H += u"userName=\"" + KxXmlEscape(AnsiToUnicode(KxGetUserName())) + u"\" ";
  H += u"computer=\"" + KxXmlEscape(AnsiToUnicode(KxGetComputerName())) + u"\" ";
  H += u"processID=\"";
  AppendDecimal(H, platform::CurrentProcessId());
  H += u"\">";
  return H;
}

UnicodeString KX_STDCALL TKxXmlLayout::GetFooter() {
  return u"</log>";
}

UnicodeString KX_STDCALL TKxXmlLayout::FormatLine(const UnicodeString& LoggerName,
                                                  TKxLogLevel Level, const UnicodeString& Msg,
                                                  const TKxDataRec* Data, TKxLogIndent Indent) {
  UnicodeString Value, ExceptionClass;
  const UnicodeString* Message = &Msg;
  UnicodeString Replaced;
  if (Data) {
    if (Data->Kind == rtkException && Data->Exc) {
      Value = AnsiToUnicode(Data->Exc->Message());
      ExceptionClass = AnsiToUnicode(Data->Exc->ClassName());
      // The text would otherwise appear twice.
      if (Msg == Value) {
        Replaced = ExceptionClass;
        Message = &Replaced;
      }
    } else {
      Value = KxDataRecToString(Data);
    }
  }
  UnicodeString Line;
  Line.reserve(200 + Msg.size() + Value.size());
  Line += u"<item><timeStamp>";
  Line += KxLogIsoTimeStamp();
  Line += u"</timeStamp><threadID>";
  AppendDecimal(Line, platform::CurrentThreadId());
  Line += u"</threadID><loggerName>";
  Line += KxXmlEscape(LoggerName);
  Line += u"</loggerName><logLevel>";
  AppendDecimal(Line, Level);
  Line += u"</logLevel><logIndent>";
  AppendDecimal(Line, Indent);
  Line += u"</logIndent><logMessage>";
  Line += KxXmlEscape(*Message);
  Line += u"</logMessage>";
  if (!Trim(Value).empty()) {
    Line += u"<logValue><![CDATA[";
    Line += StringReplace(Value, u"]]>", u"__>", {rfReplaceAll});
    Line += u"]]></logValue>";
  }
  if (!ExceptionClass.empty()) {
    Line += u"<exceptionClass>";
    Line += KxXmlEscape(ExceptionClass);
    Line += u"</exceptionClass>";
  }
  Line += u"</item>";
  return Line;
}

AnsiString KxLogStyleSheet() {
  static const char* const Lines[] = {
      "<?xml version=\"1.0\"?>",
      "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">",
      "  <xsl:output omit-xml-declaration=\"yes\" indent=\"yes\"/>",
      "",
      "  <xsl:template match=\"/log\">",
      "    <html>",
      "      <head>",
      "        <style type=\"text/css\">",
      "          body, table, td, th { font-family: Arial; }",
      "          .tableHeader { background-color: #004B94; color: white; }",
      "          .llWarn { background-color: #FF7B00; }",
      "          .llError { background-color: #FF0000; }",
      "          .llFatal { background-color: #AF0000; }",
      "        </style>",
      "      </head>",
      "      <body>",
      "        <div>Logdate: <xsl:value-of select=\"@timeStamp\"/></div>",
      "        <div>UserName: <xsl:value-of select=\"@userName\"/></div>",
      "        <div>Computer: <xsl:value-of select=\"@computer\"/></div>",
      "        <table width=\"100%\" border=\"1\" cellspacing=\"0\">",
      "          <tr class=\"tableHeader\" align=\"left\">",
      "            <th>Timestamp</th>",
      "            <th>Thread</th>",
      "            <th>Logger</th>",
      "            <th>Message</th>",
      "          </tr>",
      "          <xsl:apply-templates select=\"item\"/>",
      "        </table>",
      "      </body>",
      "    </html>",
      "  </xsl:template>",
      "",
      "  <xsl:template match=\"item\">",
      "    <xsl:choose>",
      "      <xsl:when test=\"logLevel = 4\">",
      "        <tr class=\"llWarn\"><xsl:apply-templates/></tr>",
      "      </xsl:when>",
      "      <xsl:when test=\"logLevel = 5\">",
      "        <tr class=\"llError\"><xsl:apply-templates/></tr>",
      "      </xsl:when>",
      "      <xsl:when test=\"logLevel = 6\">",
      "        <tr class=\"llFatal\"><xsl:apply-templates/></tr>",
      "      </xsl:when>",
      "      <xsl:otherwise>",
      "        <tr><xsl:apply-templates/></tr>",
      "      </xsl:otherwise>",
      "    </xsl:choose>",
      "  </xsl:template>",
      "",
      "  <xsl:template match=\"timeStamp\">",
      "    <td><xsl:value-of select=\".\"/></td>",
      "  </xsl:template>",
      "",
      "  <xsl:template match=\"threadID\">",
      "    <td><xsl:value-of select=\".\"/></td>",
      "  </xsl:template>",
      "",
      "  <xsl:template match=\"loggerName\">",
      "    <td><xsl:value-of select=\".\"/></td>",
      "  </xsl:template>",
      "",
      "  <xsl:template match=\"logMessage\">",
      "    <td><xsl:value-of select=\".\"/></td>",
      "  </xsl:template>",
      "",
      "  <xsl:template match=\"logLevel\"/>",
      "",
      "  <xsl:template match=\"logIndent\"/>",
      "</xsl:stylesheet>",
  };
  AnsiString Text;
  for (const char* L : Lines) {
    Text += L;
    Text += "\r\n";
  }
  return Text;
}

} // namespace kx
