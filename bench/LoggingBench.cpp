// SPDX-License-Identifier: MIT
// Logging against spdlog: one line per message to a file with one write each (spdlog flushes
// every message, as the library's text file writes every line), from one and two threads,
// and a message below the logger's level.
#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>
#include <kx/uKxLogger.h>

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <filesystem>
#include <memory>
#include <string>

using namespace kx;

namespace {

constexpr int64_t Messages = 1000000;
// About sixty characters, as a typical line's message.
constexpr const char* Text = "request 4711 served from cache in 12 ms, 2048 bytes, status ok";
const UnicodeString WideText(Text, Text + std::char_traits<char>::length(Text));

std::string BenchFile(const char* Name) {
  const auto Dir = std::filesystem::temp_directory_path() / "kx-bench-logging";
  std::filesystem::create_directories(Dir);
  const auto P = Dir / Name;
  std::filesystem::remove(P);
  return P.string();
}

// The root logger with one file appender and the simple layout, for the benchmark's life.
struct TKxFileLog {
  IPtr<IKxLogger> Root;
  IPtr<IKxLogAppender> Appender;
  explicit TKxFileLog(const char* Name) {
    Root = Logger();
    Root->SetLevel(llDebug);
    auto* F = TKxFileAppender::Create(nullptr, u"bench");
    Appender = IPtr<IKxLogAppender>(static_cast<IKxLogAppender*>(F));
    F->SetFileName(BenchFile(Name));
    F->SetAppendExisting(false);
    F->SetLayout(cKxSimpleLayout);
    Root->AddAppender(Appender.Get());
  }
  ~TKxFileLog() {
    Root->ClearAppenders();
    Appender->Close();
    Appender.Reset();
    Root.Reset();
    CloseRootLogger();
  }
};

std::shared_ptr<spdlog::logger> SpdFileLog(const char* Name) {
  auto L = std::make_shared<spdlog::logger>(
      Name, std::make_shared<spdlog::sinks::basic_file_sink_mt>(BenchFile(Name), true));
  L->set_level(spdlog::level::trace);
  L->flush_on(spdlog::level::trace);
  return L;
}

void LogFile_kx(benchmark::State& State) {
  static std::unique_ptr<TKxFileLog> Log;
  if (State.thread_index() == 0) Log = std::make_unique<TKxFileLog>("kx.log");
  IKxLogger* Root = nullptr;
  for (auto _ : State) {
    if (!Root) Root = Log->Root.Get();
    Root->Info(WideText);
  }
  State.SetItemsProcessed(State.iterations());
  if (State.thread_index() == 0) Log.reset();
}

void LogFile_spdlog(benchmark::State& State) {
  static std::shared_ptr<spdlog::logger> Log;
  if (State.thread_index() == 0) Log = SpdFileLog("spdlog.log");
  spdlog::logger* L = nullptr;
  for (auto _ : State) {
    if (!L) L = Log.get();
    L->info(Text);
  }
  State.SetItemsProcessed(State.iterations());
  if (State.thread_index() == 0) Log.reset();
}

BENCHMARK(LogFile_kx)->Name("LogFile/kx")->Iterations(Messages)->UseRealTime();
BENCHMARK(LogFile_spdlog)->Name("LogFile/spdlog")->Iterations(Messages)->UseRealTime();
BENCHMARK(LogFile_kx)
    ->Name("LogFileTwoThreads/kx")
    ->Iterations(Messages / 2)
    ->Threads(2)
    ->UseRealTime();
BENCHMARK(LogFile_spdlog)
    ->Name("LogFileTwoThreads/spdlog")
    ->Iterations(Messages / 2)
    ->Threads(2)
    ->UseRealTime();

void LogDisabled_kx(benchmark::State& State) {
  IPtr<IKxLogger> Quiet = Logger()->GetLogger(u"quiet");
  Quiet->SetLevel(llWarn);
  Quiet->SetAdditive(false);
  IKxLogger* L = Quiet.Get();
  for (auto _ : State) L->Debug(WideText);
  Quiet.Reset();
  CloseRootLogger();
}

void LogDisabled_spdlog(benchmark::State& State) {
  auto L = SpdFileLog("quiet.log");
  L->set_level(spdlog::level::warn);
  for (auto _ : State) L->debug(Text);
}

BENCHMARK(LogDisabled_kx)->Name("LogDisabled/kx");
BENCHMARK(LogDisabled_spdlog)->Name("LogDisabled/spdlog");

} // namespace
