// SPDX-License-Identifier: MIT
// mime: one "NAME: TYPE" line a file, as file --mime-type prints them.
#include "Commands.h"

#include <kx/uKxSysUtils.h>
#include <kx/windows/ContentType.h>

namespace kxtool {

namespace {

// What the platform sees in the first bytes of standard input; empty when it cannot tell.
std::string StdInType(TToolIO& IO) {
  char Head[4096];
  const int64_t Got = IO.In->ReadUpTo(Head, sizeof Head);
  return std::string(kx::KxGetMimeType(Head, Got));
}

std::string TypeOf(TMimeSource Source, const std::string& Name, TToolIO& IO) {
  const bool StdIn = Name == "-";
  if (Source != TMimeSource::Name) {
    const std::string ByContent =
        StdIn ? StdInType(IO) : std::string(kx::uKxWindows::KxGetFileMimeType(Name));
    if (!ByContent.empty() || Source == TMimeSource::Content) {
      if (ByContent.empty()) throw TToolError{"the content gives no type here"};
      return ByContent;
    }
  }
  if (StdIn) throw TToolError{"standard input has no name to go by"};
  return std::string(kx::KxGetFileMimeType(Name));
}

} // namespace

int Mime(TMimeSource Source, const std::vector<std::string>& Files, TToolIO& IO) {
  if (Files.empty()) throw TToolError{"no files given", 2};
  int Status = 0;
  for (const std::string& Name : Files) {
    try {
      WriteText(IO.Out, Name + ": " + TypeOf(Source, Name, IO) + "\n");
    } catch (const TToolError& E) {
      WriteText(IO.Err, "kx mime: " + Name + ": " + E.Message + "\n");
      Status = 1;
    } catch (const kx::Exception& E) {
      WriteText(IO.Err, "kx mime: " + Name + ": " + OneLine(E.Message()) + "\n");
      Status = 1;
    }
  }
  return Status;
}

} // namespace kxtool
