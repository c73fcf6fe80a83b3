// SPDX-License-Identifier: MIT
// TKxSessionEvents: the dispatch rules everywhere, and on Windows the real messages sent to
// the component's hidden window.
#include <kx/rtl/Exceptions.h>
#include <kx/uKxSessionEvents.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#endif

using namespace kx;

namespace {

// Every handler assigned, each appending "<name> <argument>" to Calls.
struct TAllHandlers {
  TKxSessionEvents* Events = TKxSessionEvents::Create();
  std::vector<std::string> Calls;
  bool Veto = false;

  TAllHandlers() {
    auto Session = [this](const char* Name) {
      return TKxOnSessionEvent(nullptr, [this, Name](TObject* Sender, uint32_t Id) {
        EXPECT_EQ(Sender, Events);
        Calls.push_back(std::string(Name) + " " + std::to_string(Id));
      });
    };
    auto Power = [this](const char* Name) {
      return TKxOnPowerEvent(nullptr, [this, Name](TObject*) { Calls.push_back(Name); });
    };
    Events->OnConsoleConnect = Session("console-connect");
    Events->OnConsoleDisconnect = Session("console-disconnect");
    Events->OnRemoteConnect = Session("remote-connect");
    Events->OnRemoteDisconnect = Session("remote-disconnect");
    Events->OnSessionLogon = Session("logon");
    Events->OnSessionLogoff = Session("logoff");
    Events->OnSessionLock = Session("lock");
    Events->OnSessionUnlock = Session("unlock");
    Events->OnSessionRemoteControl = Session("remote-control");
    Events->OnSessionCreate = Session("create");
    Events->OnSessionTerminate = Session("terminate");
    Events->OnSuspend = Power("suspend");
    Events->OnResumeSuspend = Power("resume-suspend");
    Events->OnResumeAutomatic = Power("resume-automatic");
    Events->OnPowerStatusChange = Power("power-status");
    Events->OnPowerSettingChange =
        TKxOnPowerSettingEvent(nullptr, [this](TObject*, intptr_t LParam) {
          Calls.push_back("power-setting " + std::to_string(LParam));
        });
    Events->OnQueryEndSession =
        TKxOnQueryEndSessionEvent(nullptr, [this](TObject*, TKxEndSessionTypes T, bool& CanEnd) {
          Calls.push_back("query " + Types(T));
          if (Veto) CanEnd = false;
        });
    Events->OnEndSession =
        TKxOnEndSessionEvent(nullptr, [this](TObject*, bool Ending, TKxEndSessionTypes T) {
          Calls.push_back(std::string("end ") + (Ending ? "1 " : "0 ") + Types(T));
        });
  }
  ~TAllHandlers() { Events->Free(); }

  static std::string Types(TKxEndSessionTypes T) {
    return std::string(T.Contains(esCloseApp) ? "C" : "") + (T.Contains(esCritical) ? "R" : "") +
           (T.Contains(esLogoff) ? "L" : "");
  }
};

} // namespace

TEST(SessionEvents, SessionChangeCodesMapInOrderAndOthersAreIgnored) {
  TAllHandlers H;
  for (uint32_t Code = 0; Code <= 13; ++Code) H.Events->TriggerWtsEvent(Code, 100 + Code);
  EXPECT_EQ(H.Calls, std::vector<std::string>(
                         {"console-connect 101", "console-disconnect 102", "remote-connect 103",
                          "remote-disconnect 104", "logon 105", "logoff 106", "lock 107",
                          "unlock 108", "remote-control 109", "create 110", "terminate 111"}));
}

TEST(SessionEvents, PowerCodesMapToTheirHandlers) {
  TAllHandlers H;
  for (uint32_t Code : {4u, 7u, 10u, 18u, 5u, 8u, 32787u}) H.Events->TriggerPwrEvent(Code, 42);
  EXPECT_EQ(H.Calls, std::vector<std::string>({"suspend", "resume-suspend", "power-status",
                                               "resume-automatic", "power-setting 42"}));
}

TEST(SessionEvents, UnassignedHandlersAreSkippedAndTheQueryStaysAllowed) {
  TKxSessionEvents* Events = TKxSessionEvents::Create();
  bool CanEnd = true;
  Events->TriggerQesEvent({esLogoff}, CanEnd);
  Events->TriggerEndSessionEvent(true, {});
  Events->TriggerWtsEvent(7, 1);
  Events->TriggerPwrEvent(4);
  EXPECT_TRUE(CanEnd);
  Events->Free();
}

TEST(SessionEvents, SettingTheSameActiveValueDoesNothing) {
  TKxSessionEvents* Events = TKxSessionEvents::Create();
  EXPECT_FALSE(Events->Active());
  Events->SetActive(false);
  EXPECT_EQ(Events->WindowHandle(), nullptr);
  Events->Free();
}

#if defined(_WIN32)

TEST(SessionEventsWindow, QueryAnswersTheVetoAndReadsTheTypeBits) {
  TAllHandlers H;
  H.Events->SetActive(true);
  HWND Window = static_cast<HWND>(H.Events->WindowHandle());
  ASSERT_TRUE(IsWindow(Window));
  // A top-level window: broadcasts reach it, as they would not reach a message-only one.
  EXPECT_EQ(GetAncestor(Window, GA_PARENT), GetDesktopWindow());
  EXPECT_FALSE(IsWindowVisible(Window));

  EXPECT_EQ(SendMessageW(Window, WM_QUERYENDSESSION, 0, LPARAM(0x80000001u)), 1);
  H.Veto = true;
  EXPECT_EQ(SendMessageW(Window, WM_QUERYENDSESSION, 0, LPARAM(0x40000000u)), 0);
  EXPECT_EQ(SendMessageW(Window, WM_QUERYENDSESSION, 0, 0), 0);
  SendMessageW(Window, WM_ENDSESSION, 0, LPARAM(0xC0000001u));
  SendMessageW(Window, WM_ENDSESSION, 1, 0);
  EXPECT_EQ(H.Calls,
            std::vector<std::string>({"query CL", "query R", "query ", "end 0 CRL", "end 1 "}));
}

TEST(SessionEventsWindow, QueryWithoutHandlerAllowsTheEnd) {
  TKxSessionEvents* Events = TKxSessionEvents::Create();
  Events->SetActive(true);
  EXPECT_EQ(SendMessageW(static_cast<HWND>(Events->WindowHandle()), WM_QUERYENDSESSION, 0, 0), 1);
  Events->Free();
}

TEST(SessionEventsWindow, PowerAndSessionMessagesReachTheirHandlers) {
  TAllHandlers H;
  H.Events->SetNotificationScope(nsAllSessions);
  H.Events->SetActive(true);
  HWND Window = static_cast<HWND>(H.Events->WindowHandle());
  EXPECT_EQ(SendMessageW(Window, WM_POWERBROADCAST, PBT_APMSUSPEND, 0), TRUE);
  EXPECT_EQ(SendMessageW(Window, WM_POWERBROADCAST, PBT_POWERSETTINGCHANGE, 1234), TRUE);
  SendMessageW(Window, WM_WTSSESSION_CHANGE, WTS_SESSION_LOCK, 3);
  SendMessageW(Window, WM_WTSSESSION_CHANGE, 12, 3);
  SendMessageW(Window, WM_WTSSESSION_CHANGE, WTS_SESSION_TERMINATE, 4);
  EXPECT_EQ(H.Calls,
            std::vector<std::string>({"suspend", "power-setting 1234", "lock 3", "terminate 4"}));
}

TEST(SessionEventsWindow, EachComponentHearsOnlyItsOwnWindow) {
  TAllHandlers A, B;
  A.Events->SetActive(true);
  B.Events->SetActive(true);
  ASSERT_NE(A.Events->WindowHandle(), B.Events->WindowHandle());
  SendMessageW(static_cast<HWND>(A.Events->WindowHandle()), WM_WTSSESSION_CHANGE, 7, 1);
  SendMessageW(static_cast<HWND>(B.Events->WindowHandle()), WM_WTSSESSION_CHANGE, 8, 2);
  EXPECT_EQ(A.Calls, std::vector<std::string>({"lock 1"}));
  EXPECT_EQ(B.Calls, std::vector<std::string>({"unlock 2"}));
}

TEST(SessionEventsWindow, DeactivationDestroysTheWindow) {
  TAllHandlers H;
  H.Events->SetActive(true);
  HWND Window = static_cast<HWND>(H.Events->WindowHandle());
  H.Events->SetActive(false);
  EXPECT_FALSE(H.Events->Active());
  EXPECT_EQ(H.Events->WindowHandle(), nullptr);
  EXPECT_FALSE(IsWindow(Window));
  // Activating again makes a new window.
  H.Events->SetActive(true);
  EXPECT_TRUE(IsWindow(static_cast<HWND>(H.Events->WindowHandle())));
}

TEST(SessionEventsWindow, CurrentSessionIsTheProcesssSession) {
  DWORD Session = 0;
  ASSERT_TRUE(ProcessIdToSessionId(GetCurrentProcessId(), &Session));
  EXPECT_EQ(GetCurrentSessionID(), Session);
}

#endif
