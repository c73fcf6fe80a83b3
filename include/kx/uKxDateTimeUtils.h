// SPDX-License-Identifier: MIT
#pragma once
// uKxDateTimeUtils: ISO 8601 date-time text, local time and UTC, and the date-time utilities
// (work days, durations as text, the LUO layout, periods and weeks).

#include <kx/datetime/DateTimeUtils.h>
#include <kx/datetime/ISODateTime.h>
#include <kx/datetime/TimeZone.h>
