// SPDX-License-Identifier: MIT
// Logs a few thousand messages from several threads through a logger tree read from an INI
// file, then shows what was written.
//
//   LogDemo [config file]      (default: logdemo.ini beside the program)

#include <kx/rtl/Component.h>
#include <kx/rtl/Files.h>
#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>
#include <kx/uKxLogger.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

using namespace kx;

namespace {

constexpr int Threads = 4;
constexpr int Rounds = 250;

// Something with published properties for the object dump.
class TOrder : public TComponent, public IKxPublishedProperties {
  KX_CLASS(TOrder, TComponent)
public:
  TOrder() = default;
  int Quantity = 3;
  void GetPublishedProperties(TKxPublishedProperties& P) override {
    P.push_back({"Quantity", TKxPublishedProperty::ppValue, AnsiToUnicode(std::to_string(Quantity)),
                 nullptr});
  }
};

void Work(int Id) {
  IPtr<IKxLogger> Root = Logger();
  IPtr<IKxLogger> App = Root->GetLogger(u"app");
  IPtr<IKxLogger> Net = Root->GetLogger(u"net");
  TOrder* Order = TOrder::Create();
  Order->SetName("Order" + std::to_string(Id));
  for (int I = 0; I < Rounds; ++I) {
    Root->EnterMethod(u"Round", llDebug);
    Root->Debug(u"worker %d, round %d", {Id, I});
    Root->Debug(u"a variant", Variant(double(I) / 4));
    App->Debug(u"below app's level, dropped by app and written by the root");
    App->Log(llInfo, u"order placed", Order, liIndentNone);
    Net->Info(u"packet " + AnsiToUnicode(std::to_string(I)) + u" sent");
    if (I % 50 == 0) {
      try {
        throw EConvertError("'x" + std::to_string(I) + "' is not a valid integer value");
      } catch (const Exception& E) {
        Root->Log(llError, u"conversion failed", E, liIndentNone);
      }
    }
    if (I % 100 == 0) Root->Warn(u"a warning from worker " + AnsiToUnicode(std::to_string(Id)));
    Root->ExitMethod(u"Round", llDebug);
  }
  Root->Fatal(u"worker %d done", {Id});
  Order->Free();
}

size_t CountLines(const std::filesystem::path& P) {
  std::ifstream F(P, std::ios::binary);
  size_t N = 0;
  for (std::string Line; std::getline(F, Line);) ++N;
  return N;
}

} // namespace
KX_IMPLEMENT_CLASS(TOrder, TComponent, "LogDemo")

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  const fs::path Config =
      argc > 1 ? fs::path(argv[1]) : fs::path(argv[0]).parent_path() / "logdemo.ini";
  try {
    IPtr<IKxLogConfigurator> Ini(
        static_cast<IKxLogConfigurator*>(TKxIniLogConfigurator::FromFile(Config.string())));
    Logger()->SetConfig(Ini.Get());
    std::vector<std::thread> Workers;
    for (int Id = 0; Id < Threads; ++Id) Workers.emplace_back(Work, Id);
    for (std::thread& T : Workers) T.join();
    // Every appender writes its footer and closes its file.
    CloseRootLogger();
  } catch (const Exception& E) {
    std::fprintf(stderr, "%s: %s\n", E.ClassName().c_str(), E.Message().c_str());
    return 1;
  }

  std::printf("Logged from %d threads, %d rounds each, configured by %s\n\n", Threads, Rounds,
              Config.string().c_str());
  std::vector<fs::path> Files;
  for (const auto& E : fs::directory_iterator("logs")) Files.push_back(E.path());
  std::sort(Files.begin(), Files.end());
  size_t Backups = 0;
  for (const fs::path& P : Files) {
    const std::string Name = P.filename().string();
    const bool Backup = Name.starts_with("demo.") && Name != "demo.log" && P.extension() == ".log";
    Backups += Backup;
    std::printf("  %-28s %8zu lines%s\n", fs::absolute(P).string().c_str(), CountLines(P),
                Backup ? "   (backup)" : "");
  }
  std::printf("\n%zu backups made by the rolling text log.\n", Backups);
  std::printf("View the XML log as HTML:\n  xsltproc %s %s > demo.html\n",
              fs::absolute("logs/events.log.xsl").string().c_str(),
              fs::absolute("logs/events.log.xml").string().c_str());
  return 0;
}
