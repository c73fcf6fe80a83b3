// SPDX-License-Identifier: MIT
#pragma once
// uKxNetworkListManager: networks and connections with their connectivity, and their changes.

#include <kx/network/NetworkListManager.h>
