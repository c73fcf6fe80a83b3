// SPDX-License-Identifier: MIT
#pragma once
// A recording appender and a fixture that leaves no root logger behind.

#include <kx/uKxLogger.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kxtest {

struct TRecord {
  std::u16string LoggerName, OwnerName, Msg, Data;
  kx::TKxLogLevel Level;
  kx::TKxLogIndent Indent;
};

// Keeps every write, with the payload already turned to text.
class TRecordingAppender : public kx::TKxBaseAppender {
  KX_CLASS(TRecordingAppender, kx::TKxBaseAppender)
public:
  TRecordingAppender() = default;
  TRecordingAppender(kx::TKxLogger* L, const kx::UnicodeString& N) : TKxBaseAppender(L, N) {}
  void KX_STDCALL Write(const kx::UnicodeString& LoggerName, const kx::UnicodeString& OwnerName,
                        kx::TKxLogLevel Level, const kx::UnicodeString& Msg,
                        const kx::TKxDataRec* Data, kx::TKxLogIndent Indent) override {
    TKxBaseAppender::Write(LoggerName, OwnerName, Level, Msg, Data, Indent);
    Records.push_back({LoggerName, OwnerName, Msg, Data ? kx::KxDataRecToString(Data) : u"<none>",
                       Level, Indent});
    if (Log) Log->push_back(this);
  }
  std::vector<TRecord> Records;
  // Shared by several appenders to see the order of dispatch.
  std::vector<TRecordingAppender*>* Log = nullptr;
};

inline kx::IPtr<kx::IKxLogAppender> AsAppender(TRecordingAppender* A) {
  return kx::IPtr<kx::IKxLogAppender>(static_cast<kx::IKxLogAppender*>(A));
}

class LoggingTest : public ::testing::Test {
protected:
  void TearDown() override { kx::CloseRootLogger(); }
};

} // namespace kxtest
