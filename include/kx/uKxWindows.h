// SPDX-License-Identifier: MIT
// uKxWindows: files, folders and paths over the platform's services.
#pragma once

#include <kx/windows/Directories.h>
#include <kx/windows/FilePaths.h>
#include <kx/windows/Resources.h>
