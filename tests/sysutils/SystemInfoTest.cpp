// SPDX-License-Identifier: MIT
// Names against what the system reports, environment variables and the two expansion syntaxes
// with their deliberate rules.
#include <kx/uKxSysUtils.h>

#include "support/ExternalTool.h"
#include "support/ScopedEnv.h"

#include <gtest/gtest.h>

#include <string>

using namespace kx;
using kxtest::TScopedEnv;

namespace {

// The first line a tool prints.
std::string ToolLine(const std::string& Tool, const std::vector<std::string>& Args) {
  auto R = kxtest::RunExternalTool(Tool, Args, "");
  while (!R.Output.empty() && (R.Output.back() == '\n' || R.Output.back() == '\r'))
    R.Output.pop_back();
  return R.Output;
}

} // namespace

TEST(SystemNames, ComputerAndUserAreTheSystemsOwn) {
  const AnsiString Computer = KxGetComputerName();
  const AnsiString User = KxGetUserName();
  ASSERT_FALSE(Computer.empty());
  ASSERT_FALSE(User.empty());
  if (kxtest::ExternalToolPresent("uname")) {
    EXPECT_EQ(Computer, ToolLine("uname", {"-n"}));
    EXPECT_EQ(User, ToolLine("id", {"-un"}));
  } else {
    // Windows (and Wine) put the names in the environment of every process.
    EXPECT_TRUE(SameText(Computer, kxtest::GetEnv("COMPUTERNAME").value_or("")));
    EXPECT_TRUE(SameText(User, kxtest::GetEnv("USERNAME").value_or("")));
  }
}

TEST(SystemNames, AccountWithDomain) {
  AnsiString Domain = "left over";
  const AnsiString User = KxGetUserName(Domain);
  EXPECT_TRUE(SameText(User, KxGetUserName()));
  ASSERT_FALSE(Domain.empty());
  if (kxtest::ExternalToolPresent("uname")) {
    EXPECT_EQ(Domain, KxGetComputerName());
  }
}

TEST(SystemNames, ComputerDescriptionAnswers) {
  // Neither Wine nor a container has a description to compare with; it must not fail.
  EXPECT_NO_THROW(KxGetComputerDescription());
}

TEST(EnvironmentVariables, ReadsSetAndRefusesUnset) {
  TScopedEnv A("KX_TEST_ALPHA", "first value");
  TScopedEnv Gone("KX_TEST_UNSET", std::nullopt);
  EXPECT_EQ(KxGetEnvironmentVar("KX_TEST_ALPHA"), "first value");
  try {
    KxGetEnvironmentVar("KX_TEST_UNSET");
    FAIL() << "no exception";
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), "There is no Environment Variable with the name KX_TEST_UNSET");
  }
}

TEST(EnvironmentVariables, LongValuesComeWhole) {
  const std::string Long(5000, 'v');
  TScopedEnv A("KX_TEST_LONG", Long);
  EXPECT_EQ(KxGetEnvironmentVar("KX_TEST_LONG"), Long);
}

TEST(ExpandEnvVars, DollarTokensAreReplacedEverywhereIgnoringCase) {
  TScopedEnv A("KX_TEST_ALPHA", "a1");
  TScopedEnv B("KX_TEST_BETA", "b2");
  EXPECT_EQ(KxExpandEnvVarsAndStrings("$(KX_TEST_ALPHA)\\x"), "a1\\x");
  EXPECT_EQ(KxExpandEnvVarsAndStrings("$(KX_TEST_ALPHA)-$(kx_test_alpha)-$(KX_TEST_BETA)"),
            "a1-a1-b2");
  EXPECT_EQ(KxExpandEnvVarsAndStrings("no tokens (here)"), "no tokens (here)");
  EXPECT_EQ(KxExpandEnvVarsAndStrings(""), "");
}

TEST(ExpandEnvVars, DollarTokenFailures) {
  TScopedEnv Gone("KX_TEST_UNSET", std::nullopt);
  EXPECT_THROW(KxExpandEnvVarsAndStrings("x$(KX_TEST_UNSET)"), Exception);
  // No closing parenthesis: the empty name is asked for.
  EXPECT_THROW(KxExpandEnvVarsAndStrings("x$(KX_TEST_ALPHA"), Exception);
  EXPECT_THROW(KxExpandEnvVarsAndStrings("$()"), Exception);
}

TEST(ExpandEnvVars, PercentFormExpandsTheInputAndDropsTheDollarWork) {
  TScopedEnv A("KX_TEST_ALPHA", "a1");
  TScopedEnv B("KX_TEST_BETA", "b2");
  TScopedEnv Gone("KX_TEST_UNSET", std::nullopt);
  EXPECT_EQ(KxExpandEnvVarsAndStrings("%KX_TEST_BETA%\\y"), "b2\\y");
  // Both forms: the %-expansion of the original text, "$(...)" left as written.
  EXPECT_EQ(KxExpandEnvVarsAndStrings("$(KX_TEST_ALPHA)%KX_TEST_BETA%"), "$(KX_TEST_ALPHA)b2");
  // Unknown names stay as written, closing '%' included; the scan goes on after them.
  EXPECT_EQ(KxExpandEnvVarsAndStrings("%KX_TEST_UNSET%"), "%KX_TEST_UNSET%");
  EXPECT_EQ(KxExpandEnvVarsAndStrings("%KX_TEST_UNSET%KX_TEST_BETA%"),
            "%KX_TEST_UNSET%KX_TEST_BETA%");
  EXPECT_EQ(KxExpandEnvVarsAndStrings("%KX_TEST_UNSET%%KX_TEST_BETA%"), "%KX_TEST_UNSET%b2");
  EXPECT_EQ(KxExpandEnvVarsAndStrings("%%KX_TEST_BETA%"), "%%KX_TEST_BETA%");
  EXPECT_EQ(KxExpandEnvVarsAndStrings("100% sure"), "100% sure");
}
