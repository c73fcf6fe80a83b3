// SPDX-License-Identifier: MIT
#pragma once
// uKxLogAppenders: the file, size-rolling and daily-rolling appenders and the event log
// appender.

#include <kx/logging/EventLogAppender.h>
#include <kx/logging/FileAppenders.h>
