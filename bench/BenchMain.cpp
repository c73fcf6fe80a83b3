// SPDX-License-Identifier: MIT
// The one main of kx_bench: runs Google Benchmark as usual (all its flags work) and then
// prints how the library's code compares with a reference implementation.
//
// Convention for every benchmark file: a comparison is a pair of benchmarks named
//
//   <Group>/kx[/<args>]             the library's code
//   <Group>/<anchor>[/<args>]       the reference it is measured against
//
// where <anchor> names the reference (std::recursive_mutex, memcpy, zlib, ...) and contains
// no '/'; anything after the second '/' (arguments, threads:N, real_time) must be the same on
// both sides. A group may have several anchors. After the run, one line per kx/anchor pair:
//
//   ratio CriticalSection: kx/std::recursive_mutex time = 0.93 (kx 9.1 ns, anchor 9.8 ns)
//
// time is the kx CPU time per iteration over the anchor's, so below 1 means kx is faster.
// CPU time by default, because the machines these run on are shared and real time counts
// the moments another process had the core; benchmarks that say UseRealTime() or
// UseManualTime() (their names end in /real_time or /manual_time) compare real time.
// When both sides call SetBytesProcessed, the line goes on with the speed ratio (kx speed
// over the anchor's, above 1 means kx is faster):
//
//   ..., speed = 1.07 (kx 1.21 GiB/s, anchor 1.13 GiB/s)
//
// With --benchmark_repetitions the median is used where Google Benchmark reports one.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

struct TResult {
  double NsSum = 0;    // real time per iteration, summed over repetitions
  double BytesSum = 0; // bytes per second, summed over repetitions
  int Count = 0;
  double MedianNs = -1; // from the median aggregate, when there is one
  double MedianBytes = -1;

  double Ns() const { return MedianNs >= 0 ? MedianNs : NsSum / Count; }
  double BytesPerSecond() const { return MedianBytes >= 0 ? MedianBytes : BytesSum / Count; }
};

// Shows the results with the reporter the flags ask for, and keeps them.
class TCollectingReporter : public benchmark::BenchmarkReporter {
public:
  explicit TCollectingReporter(benchmark::BenchmarkReporter* Display) : FDisplay(Display) {}

  bool ReportContext(const Context& C) override { return FDisplay->ReportContext(C); }
  void Finalize() override { FDisplay->Finalize(); }

  void ReportRuns(const std::vector<Run>& Runs) override {
    FDisplay->ReportRuns(Runs);
    for (const Run& R : Runs) {
      if (R.error_occurred) continue;
      const bool Median = R.run_type == Run::RT_Aggregate && R.aggregate_name == "median";
      if (R.run_type == Run::RT_Aggregate && !Median) continue;
      const bool Real = !R.run_name.time_type.empty();
      const double Ns = (Real ? R.GetAdjustedRealTime() : R.GetAdjustedCPUTime()) * 1e9 /
                        benchmark::GetTimeUnitMultiplier(R.time_unit);
      auto Bytes = R.counters.find("bytes_per_second");
      const double Bps = Bytes == R.counters.end() ? 0 : double(Bytes->second);
      const std::string Name = R.run_name.str();
      if (!FResults.count(Name)) FOrder.push_back(Name);
      TResult& Res = FResults[Name];
      if (Median) {
        Res.MedianNs = Ns;
        Res.MedianBytes = Bps;
      } else {
        Res.NsSum += Ns;
        Res.BytesSum += Bps;
        ++Res.Count;
      }
    }
  }

  const std::map<std::string, TResult>& Results() const { return FResults; }
  const std::vector<std::string>& Order() const { return FOrder; }

private:
  std::unique_ptr<benchmark::BenchmarkReporter> FDisplay;
  std::map<std::string, TResult> FResults;
  std::vector<std::string> FOrder; // run names in the order they first ran
};

struct TName {
  std::string Group, Impl, Rest;
};

bool SplitName(const std::string& Name, TName& Out) {
  size_t First = Name.find('/');
  if (First == std::string::npos) return false;
  size_t Second = Name.find('/', First + 1);
  Out.Group = Name.substr(0, First);
  Out.Impl =
      Name.substr(First + 1, Second == std::string::npos ? std::string::npos : Second - First - 1);
  Out.Rest = Second == std::string::npos ? "" : Name.substr(Second);
  return !Out.Group.empty() && !Out.Impl.empty();
}

std::string FormatTime(double Ns) {
  char Buf[64];
  if (Ns < 1e3)
    std::snprintf(Buf, sizeof Buf, "%.1f ns", Ns);
  else if (Ns < 1e6)
    std::snprintf(Buf, sizeof Buf, "%.2f us", Ns / 1e3);
  else if (Ns < 1e9)
    std::snprintf(Buf, sizeof Buf, "%.2f ms", Ns / 1e6);
  else
    std::snprintf(Buf, sizeof Buf, "%.2f s", Ns / 1e9);
  return Buf;
}

std::string FormatSpeed(double Bps) {
  char Buf[64];
  if (Bps >= 1024.0 * 1024 * 1024)
    std::snprintf(Buf, sizeof Buf, "%.2f GiB/s", Bps / (1024.0 * 1024 * 1024));
  else if (Bps >= 1024.0 * 1024)
    std::snprintf(Buf, sizeof Buf, "%.2f MiB/s", Bps / (1024.0 * 1024));
  else
    std::snprintf(Buf, sizeof Buf, "%.2f KiB/s", Bps / 1024.0);
  return Buf;
}

void PrintRatios(const TCollectingReporter& Reporter) {
  const auto& Results = Reporter.Results();
  for (const std::string& KxName : Reporter.Order()) {
    TName Kx;
    if (!SplitName(KxName, Kx) || Kx.Impl != "kx") continue;
    for (const std::string& AnchorName : Reporter.Order()) {
      TName Anchor;
      if (!SplitName(AnchorName, Anchor) || Anchor.Impl == "kx" || Anchor.Group != Kx.Group ||
          Anchor.Rest != Kx.Rest)
        continue;
      const TResult& K = Results.at(KxName);
      const TResult& A = Results.at(AnchorName);
      std::string Line = "ratio " + Kx.Group + Kx.Rest + ": kx/" + Anchor.Impl + " time = ";
      char Buf[32];
      std::snprintf(Buf, sizeof Buf, "%.2f", K.Ns() / A.Ns());
      Line +=
          std::string(Buf) + " (kx " + FormatTime(K.Ns()) + ", anchor " + FormatTime(A.Ns()) + ")";
      if (K.BytesPerSecond() > 0 && A.BytesPerSecond() > 0) {
        std::snprintf(Buf, sizeof Buf, "%.2f", K.BytesPerSecond() / A.BytesPerSecond());
        Line += std::string(", speed = ") + Buf + " (kx " + FormatSpeed(K.BytesPerSecond()) +
                ", anchor " + FormatSpeed(A.BytesPerSecond()) + ")";
      }
      std::printf("%s\n", Line.c_str());
    }
  }
  std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  TCollectingReporter Reporter(benchmark::CreateDefaultDisplayReporter());
  benchmark::RunSpecifiedBenchmarks(&Reporter);
  PrintRatios(Reporter);
  benchmark::Shutdown();
  return 0;
}
