// SPDX-License-Identifier: MIT
#pragma once
// What the subcommands share: errors that end a run, whole inputs, outputs that appear only
// when complete, and the progress bar.

#include "Tool.h"

#include <kx/rtl/Exceptions.h>

#include <chrono>
#include <memory>
#include <string>

namespace kxtool {

// Ends a run with one line on standard error and the status.
struct TToolError {
  std::string Message;
  int Status = 1;
};

struct TFreeObject {
  void operator()(kx::TObject* O) const { O->Free(); }
};
template <class T>
using TOwned = std::unique_ptr<T, TFreeObject>;

void WriteText(kx::TStream* S, std::string_view Text);
// The message on one line: line breaks inside it become spaces.
std::string OneLine(std::string_view Message);

// Standard input for an empty name or "-", else the file, opened for reading.
class TInput {
public:
  TInput(const std::string& Name, TToolIO& IO);
  kx::TStream* Stream() const { return FStream; }
  bool IsStdIn() const { return !FFile; }
  // How to name the input in messages and listings: "-" for standard input.
  const std::string& Name() const { return FName; }

private:
  TOwned<kx::TStream> FFile;
  kx::TStream* FStream;
  std::string FName;
};

// Reads the rest of S.
std::string ReadAll(kx::TStream* S);

// Standard output, or a file written under a temporary name beside it and renamed to its
// name by Commit: a run that fails leaves nothing half-written.
class TOutput {
public:
  // Standard output for an empty name or "-".
  TOutput(const std::string& Name, TToolIO& IO);
  ~TOutput();
  kx::TStream* Stream() const { return FStream; }
  void Commit();

private:
  TOwned<kx::TStream> FFile;
  kx::TStream* FStream;
  std::string FName, FTempName;
  bool FCommitted = false;
};

// A bar on standard error for work that has taken over a second, when it is a terminal.
class TProgress {
public:
  TProgress(TToolIO& IO, std::string Label, int64_t Total);
  ~TProgress();
  void Update(int64_t Done);

private:
  TToolIO& FIO;
  std::string FLabel;
  int64_t FTotal;
  std::chrono::steady_clock::time_point FStart, FLast;
  bool FShown = false;
};

} // namespace kxtool
