// SPDX-License-Identifier: MIT
#pragma once
// uKxLogger: the logger tree, log records, the appender lists and the class registries.

#include <kx/logging/IniConfigurator.h>
#include <kx/logging/LogBase.h>
#include <kx/logging/LogIntf.h>
#include <kx/logging/Logger.h>
