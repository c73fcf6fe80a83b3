// SPDX-License-Identifier: MIT
// Names, the computer's description and environment variables of uKxSysUtils.
#include <kx/rtl/Format.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/SysUtilsConsts.h>
#include <kx/sysutils/SystemInfo.h>

#include "platform/Environment.h"

namespace kx {

KX_IMPLEMENT_EXCEPTION(EKxNotSupported, Exception, "uKxSysUtils")

namespace {
constexpr int32_t ComputerDescriptionAssertLine = 1064;
}

AnsiString KxGetComputerName() {
  AnsiString Name;
  platform::ComputerName(Name);
  return Name;
}

AnsiString KxGetUserName() {
  AnsiString Name;
  platform::UserName(Name);
  return Name;
}

AnsiString KxGetUserName(AnsiString& Domain) {
  AnsiString Name;
  platform::AccountName(Name, Domain);
  return Name;
}

AnsiString KxGetComputerDescription() {
  AnsiString Description;
  switch (platform::ComputerDescription(Description)) {
  case 1:
    KxAssertFailed(SComputerDescriptionNotSupported, SSysUtilsUnit, ComputerDescriptionAssertLine);
  case 2:
    throw Exception(SFailedToLocateAPI);
  case 3:
    throw Exception(SFailedNetServerGetInfo);
  default:
    return Description;
  }
}

AnsiString KxGetEnvironmentVar(const AnsiString& Name) {
  AnsiString Value;
  if (!platform::GetEnvironmentVariable(Name, Value) || Value.empty())
    throw Exception(SNoEnvironmentVar, {Name});
  return Value;
}

AnsiString KxExpandEnvVarsAndStrings(const AnsiString& S) {
  AnsiString Result = S;
  for (int64_t Start = Pos("$(", Result); Start > 0; Start = Pos("$(", Result)) {
    const int64_t Close = Pos(")", Result, Start);
    // Without a ")" the token is the rest of the text and its name is empty.
    const AnsiString Token =
        Close > 0 ? Copy(Result, Start, Close - Start + 1) : Copy(Result, Start, INT64_MAX);
    const AnsiString Name = Close > 0 ? Copy(Token, 3, int64_t(Token.size()) - 3) : AnsiString();
    Result = StringReplace(Result, Token, KxGetEnvironmentVar(Name),
                           TReplaceFlags{rfReplaceAll, rfIgnoreCase});
  }
  if (Result.find('%') != AnsiString::npos) return platform::ExpandEnvironmentStrings(S);
  return Result;
}

} // namespace kx
