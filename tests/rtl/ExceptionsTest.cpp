// SPDX-License-Identifier: MIT
// The runtime's exceptions: class references, OS errors and assertions.
#include <kx/rtl/Rtl.h>

#include <gtest/gtest.h>

#include <memory>

using namespace kx;

TEST(Exceptions, ClassReferencesConstructAndRaiseTheDynamicType) {
  TClass C = EFOpenError::ClassInfo();
  EXPECT_EQ(C->ClassName(), "EFOpenError");
  EXPECT_TRUE(C->InheritsFrom(EStreamError::ClassInfo()));
  std::unique_ptr<Exception> E(C->CreateException("cannot", 0));
  EXPECT_EQ(E->ClassType(), C);
  try {
    // Thrown through a base reference, caught as the real class.
    const Exception& Base = *E;
    Base.Raise();
  } catch (const EFOpenError& Caught) {
    EXPECT_EQ(Caught.Message(), "cannot");
  }
}

TEST(Exceptions, LastOSErrorCarriesTheCodeAndThePlatformText) {
  AnsiString Text = SysErrorMessage(2);
  ASSERT_FALSE(Text.empty());
  try {
    RaiseLastOSError(2);
    FAIL() << "no exception";
  } catch (const EOSError& E) {
    EXPECT_EQ(E.ErrorCode, 2u);
    EXPECT_EQ(E.Message(), "System Error.  Code: 2.\r\n" + Text);
  }
  try {
    RaiseLastOSError(0);
    FAIL() << "no exception";
  } catch (const EOSError& E) {
    EXPECT_EQ(E.Message(), "A call to an OS function failed");
  }
}

TEST(Exceptions, AssertionsNameTheUnitAndLine) {
  if (!KxAssertionsEnabled) GTEST_SKIP() << "assertions compiled out";
  KxAssert(true, "never", "unit", 1);
  try {
    KxAssert(false, "Broken", "source\\x\\uKxFoo", 12);
    FAIL() << "no exception";
  } catch (const EAssertionFailed& E) {
    EXPECT_EQ(E.Message(), "Broken (source\\x\\uKxFoo, line 12)");
    EXPECT_EQ(E.FileName(), "source\\x\\uKxFoo");
    EXPECT_EQ(E.LineNumber(), 12);
  }
}

TEST(Strings, OneBasedCopyAndPosClip) {
  EXPECT_EQ(Copy(AnsiString("abcdef"), 2, 3), "bcd");
  EXPECT_EQ(Copy(AnsiString("abcdef"), 0, 2), "ab");
  EXPECT_EQ(Copy(AnsiString("abcdef"), 5, 100), "ef");
  EXPECT_EQ(Copy(AnsiString("abc"), 4, 1), "");
  EXPECT_EQ(Copy(UnicodeString(u"\u00e9t\u00e9"), 2, 2), u"t\u00e9");
  EXPECT_EQ(Pos(AnsiString("cd"), AnsiString("abcdcd")), 3);
  EXPECT_EQ(Pos(AnsiString("cd"), AnsiString("abcdcd"), 4), 5);
  EXPECT_EQ(Pos(AnsiString(""), AnsiString("abc")), 0);
}

TEST(Strings, ConversionsGoThroughTheGivenCodePage) {
  EXPECT_EQ(UTF8Decode("\xC3\xA9t\xC3\xA9"), u"\u00e9t\u00e9");
  EXPECT_EQ(UTF8Encode(u"\u20ac"), "\xE2\x82\xAC");
  EXPECT_EQ(AnsiToUnicode("\x80", 1252), u"\u20ac");
  EXPECT_EQ(UnicodeToAnsi(u"\u00e9", 1252), "\xE9");
  uint32_t Saved = KxSystemCodePage();
  KxSetSystemCodePage(1252);
  EXPECT_EQ(KxSystemCodePage(), 1252u);
  EXPECT_EQ(AnsiToUnicode("\xE9"), u"\u00e9");
  KxSetSystemCodePage(Saved);
}
