// SPDX-License-Identifier: MIT
#pragma once
// uKxLogAppenders: the file, size-rolling and daily-rolling appenders.

#include <kx/logging/FileAppenders.h>
