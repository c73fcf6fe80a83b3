// SPDX-License-Identifier: MIT
#pragma once
// uKxSessionEvents: end of session, session changes and power events as callbacks.

#include <kx/events/SessionEvents.h>
