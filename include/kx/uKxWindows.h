// SPDX-License-Identifier: MIT
// uKxWindows: files, folders and paths over the platform's services (path text, file state
// and times, temporary names, folders and resources), and the environment: the system, the
// user, processes.
#pragma once

#include <kx/windows/ContentType.h>
#include <kx/windows/Directories.h>
#include <kx/windows/Drives.h>
#include <kx/windows/Environment.h>
#include <kx/windows/FilePaths.h>
#include <kx/windows/FileState.h>
#include <kx/windows/FileVersion.h>
#include <kx/windows/Modules.h>
#include <kx/windows/Processes.h>
#include <kx/windows/Registry.h>
#include <kx/windows/Resources.h>
#include <kx/windows/ShellExecution.h>
