// SPDX-License-Identifier: MIT
#pragma once
// uKxDateTimeUtils: ISO 8601 date-time text, local time and UTC.

#include <kx/datetime/ISODateTime.h>
#include <kx/datetime/TimeZone.h>
