// SPDX-License-Identifier: MIT
#pragma once
// uKxSystemEvents: logon, network and power notifications through subscriptions.

#include <kx/events/SystemEvents.h>
