// SPDX-License-Identifier: MIT
// Start-up and shut-down of uKxLogger, uKxLogAppenders and uKxLogLayouts.
#include <kx/logging/EventLogAppender.h>
#include <kx/logging/FileAppenders.h>
#include <kx/logging/Layouts.h>
#include <kx/logging/Logger.h>

#include "package/Units.h"

namespace kx::detail {

// The list of live appenders is a function-local static, there from the first use.
void uKxLogger_Initialize() {}

void uKxLogger_Finalize() {
  // Every appender is closed first, so footers are written even for appenders that live
  // outside the tree.
  try {
    CloseLiveAppenders();
    CloseRootLogger();
  } catch (const std::exception&) {
    // The process is going away; a logger still referenced stays as it is.
  }
  FreeLogRegistries();
}

void uKxLogAppenders_Initialize() {
  RegisteredAppenders()->Add(TKxFileAppender::ClassInfo());
  RegisteredAppenders()->Add(TKxRollingFileAppender::ClassInfo());
  RegisteredAppenders()->Add(TKxDailyRollingFileAppender::ClassInfo());
  RegisteredAppenders()->Add(TKxEventLogAppender::ClassInfo());
}

void uKxLogAppenders_Finalize() {}

void uKxLogLayouts_Initialize() {
  RegisteredLayouts()->Add(TKxSimpleLayout::ClassInfo());
  RegisteredLayouts()->Add(TKxXmlLayout::ClassInfo());
}

void uKxLogLayouts_Finalize() {}

} // namespace kx::detail
