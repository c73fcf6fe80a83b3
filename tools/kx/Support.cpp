// SPDX-License-Identifier: MIT
// Inputs, outputs, progress.
#include "Support.h"

#include <kx/rtl/Files.h>

#include <random>

namespace kxtool {

void WriteText(kx::TStream* S, std::string_view Text) {
  // WriteBuffer takes a 32-bit count.
  while (!Text.empty()) {
    const size_t N = std::min<size_t>(Text.size(), 1 << 30);
    S->WriteBuffer(Text.data(), int32_t(N));
    Text.remove_prefix(N);
  }
}

std::string OneLine(std::string_view Message) {
  std::string R;
  for (char C : Message) {
    if (C == '\r' || C == '\n') {
      if (!R.empty() && R.back() != ' ') R += ' ';
    } else {
      R += C;
    }
  }
  while (!R.empty() && R.back() == ' ') R.pop_back();
  return R;
}

TInput::TInput(const std::string& Name, TToolIO& IO) : FName(Name.empty() ? "-" : Name) {
  if (FName == "-") {
    FStream = IO.In;
    return;
  }
  FFile.reset(kx::TFileStream::Create(Name, uint16_t(kx::fmOpenRead | kx::fmShareDenyWrite)));
  FStream = FFile.get();
}

std::string ReadAll(kx::TStream* S) {
  std::string R;
  std::unique_ptr<char[]> Buffer(new char[1 << 20]);
  for (;;) {
    const int64_t Got = S->ReadUpTo(Buffer.get(), 1 << 20);
    R.append(Buffer.get(), size_t(Got));
    if (Got < (1 << 20)) return R;
  }
}

TOutput::TOutput(const std::string& Name, TToolIO& IO) : FName(Name) {
  if (Name.empty() || Name == "-") {
    FStream = IO.Out;
    return;
  }
  std::random_device Rd;
  FTempName = Name + ".kx" + std::to_string(Rd() % 1000000) + ".tmp";
  FFile.reset(kx::TFileStream::Create(FTempName, kx::fmCreate));
  FStream = FFile.get();
}

TOutput::~TOutput() {
  if (!FFile) return;
  FFile.reset();
  if (!FCommitted) kx::DeleteFile(FTempName);
}

void TOutput::Commit() {
  if (!FFile) return;
  FFile.reset();
  // Renaming does not replace a file everywhere.
  if (kx::FileExists(FName)) kx::DeleteFile(FName);
  if (!kx::RenameFile(FTempName, FName)) {
    kx::DeleteFile(FTempName);
    throw TToolError{"cannot write " + FName};
  }
  FCommitted = true;
}

TProgress::TProgress(TToolIO& IO, std::string Label, int64_t Total)
    : FIO(IO), FLabel(std::move(Label)), FTotal(Total), FStart(std::chrono::steady_clock::now()),
      FLast(FStart) {}

TProgress::~TProgress() {
  if (!FShown) return;
  try {
    WriteText(FIO.Err, "\r" + std::string(FLabel.size() + 60, ' ') + "\r");
  } catch (...) {
    // A closed standard error must not turn a finished run into a failure.
  }
}

void TProgress::Update(int64_t Done) {
  if (!FIO.ErrIsTerminal) return;
  const auto Now = std::chrono::steady_clock::now();
  if (Now - FStart < std::chrono::seconds(1) || Now - FLast < std::chrono::milliseconds(100))
    return;
  FLast = Now;
  FShown = true;
  std::string Line = "\r" + FLabel + " ";
  if (FTotal > 0) {
    const int Percent = int(std::min<int64_t>(100, Done * 100 / FTotal));
    Line += "[" + std::string(size_t(Percent / 4), '#') +
            std::string(size_t(25 - Percent / 4), ' ') + "] " + std::to_string(Percent) + "%";
  } else {
    Line += std::to_string(Done >> 20) + " MiB";
  }
  WriteText(FIO.Err, Line);
}

} // namespace kxtool
