// SPDX-License-Identifier: MIT
// The library's exceptions and the error-code registry.
#include <kx/uKxSysUtils.h>

#include <gtest/gtest.h>

using namespace kx;

namespace {
class EFoo : public EKxException {
  KX_EXCEPTION_CLASS(EFoo, EKxException)
};
class EBar : public EKxException {
  KX_EXCEPTION_CLASS(EBar, EKxException)
};
class EQuiet : public EKxAbort {
  KX_EXCEPTION_CLASS(EQuiet, EKxAbort)
};
KX_IMPLEMENT_EXCEPTION(EFoo, EKxException, "ExceptionRegistryTest")
KX_IMPLEMENT_EXCEPTION(EBar, EKxException, "ExceptionRegistryTest")
KX_IMPLEMENT_EXCEPTION(EQuiet, EKxAbort, "ExceptionRegistryTest")

class ExceptionRegistry : public ::testing::Test {
protected:
  void SetUp() override { detail::ClearExceptionRegistry(); }
  void TearDown() override { detail::ClearExceptionRegistry(); }
};
} // namespace

TEST(KxException, ConstructorsCarryTheCodeAndFormatTheMessage) {
  EKxException A("plain", 7);
  EXPECT_EQ(A.Message(), "plain");
  EXPECT_EQ(A.ErrorCode, 7);
  EKxException B("%s has %d items", {"list", 3}, -2);
  EXPECT_EQ(B.Message(), "list has 3 items");
  EXPECT_EQ(B.ErrorCode, -2);
  EKxAbort C("%d%%", {50}, 9);
  EXPECT_EQ(C.Message(), "50%");
  EXPECT_EQ(KxExceptionErrorCode(C), 9);
  // The abort class is an EAbort, not an EKxException.
  EXPECT_TRUE(C.InheritsFrom(EAbort::ClassInfo()));
  EXPECT_FALSE(C.InheritsFrom(EKxException::ClassInfo()));
}

TEST_F(ExceptionRegistry, LookupsBeforeAnyRegistrationFindNothing) {
  EXPECT_EQ(KxGetExceptionClass("A", 5), nullptr);
  int32_t Code = 99;
  EXPECT_EQ(KxGetExceptionClassByName("TExceptionClass", &Code), nullptr);
  EXPECT_EQ(Code, 0);
}

TEST_F(ExceptionRegistry, NamespacesAreExactAndEmptyMatchesAny) {
  KxRegisterExceptionClass("A", 5, EFoo::ClassInfo());
  KxRegisterExceptionClass("A", 5, EFoo::ClassInfo()); // same class: nothing added
  KxRegisterExceptionClass("B", 5, EBar::ClassInfo());
  EXPECT_EQ(KxGetExceptionClass("", 5), EFoo::ClassInfo());
  EXPECT_EQ(KxGetExceptionClass("B", 5), EBar::ClassInfo());
  EXPECT_EQ(KxGetExceptionClass("b", 5), nullptr);
  EXPECT_EQ(KxGetExceptionClass("A", 6), nullptr);
}

TEST_F(ExceptionRegistry, ASecondClassForThePairFailsTheAssertionAndKeepsTheFirst) {
  if (!KxAssertionsEnabled) GTEST_SKIP() << "assertions compiled out";
  KxRegisterExceptionClass("A", 5, EFoo::ClassInfo());
  try {
    KxRegisterExceptionClass("A", 5, EBar::ClassInfo());
    FAIL() << "no assertion";
  } catch (const EAssertionFailed& E) {
    EXPECT_EQ(E.Message(), "ErrorCode 5 is already in use by EFoo!; "
                           "(source\\ComponentSets\\Components\\common\\uKxSysUtils, line 841)");
  }
  // The 16-bit entry point behaves the same and reports its own line; an empty namespace
  // collides with the registration in A.
  try {
    KxRegisterExceptionClass(UnicodeString(u""), 5, EBar::ClassInfo());
    FAIL() << "no assertion";
  } catch (const EAssertionFailed& E) {
    EXPECT_EQ(E.LineNumber(), 864);
  }
  EXPECT_EQ(KxGetExceptionClass("A", 5), EFoo::ClassInfo());
}

TEST_F(ExceptionRegistry, ByNameMatchesOnlyTheEntryClassName) {
  KxRegisterExceptionClass("A", 5, EFoo::ClassInfo());
  KxRegisterExceptionClass("A", 6, EBar::ClassInfo());
  int32_t Code = 42;
  EXPECT_EQ(KxGetExceptionClassByName("EFoo", &Code), nullptr);
  EXPECT_EQ(Code, 0);
  EXPECT_EQ(KxGetExceptionClassByName("texceptionCLASS", &Code), EFoo::ClassInfo());
  EXPECT_EQ(Code, 5);
  EXPECT_EQ(KxGetExceptionClassByName("TExceptionClass", nullptr), EFoo::ClassInfo());
}

TEST_F(ExceptionRegistry, RegisteredClassesAreRaisedThroughTheirClassReference) {
  KxRegisterExceptionClass("Net", 404, EBar::ClassInfo());
  KxRegisterExceptionClass("Net", 499, EQuiet::ClassInfo());
  try {
    KxRaiseException(KxGetExceptionClass("Net", 404), "not found", 404);
  } catch (const EKxException& E) {
    EXPECT_EQ(E.ClassType(), EBar::ClassInfo());
    EXPECT_EQ(E.Message(), "not found");
    EXPECT_EQ(E.ErrorCode, 404);
  }
  EXPECT_THROW(KxRaiseException(KxGetExceptionClass("Net", 499), "x", 499), EQuiet);
  // A runtime class without a code is constructed from the message alone.
  EXPECT_THROW(KxRaiseException(EConvertError::ClassInfo(), "bad", 1), EConvertError);
}
