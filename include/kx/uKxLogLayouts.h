// SPDX-License-Identifier: MIT
#pragma once
// uKxLogLayouts: the plain text and the XML layouts.

#include <kx/logging/Layouts.h>
