// SPDX-License-Identifier: MIT
#pragma once
// The whole runtime layer.

#include <kx/rtl/Component.h>
#include <kx/rtl/DateTime.h>
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Files.h>
#include <kx/rtl/FloatText.h>
#include <kx/rtl/Format.h>
#include <kx/rtl/FormatSettings.h>
#include <kx/rtl/InterfacedObject.h>
#include <kx/rtl/Interfaces.h>
#include <kx/rtl/Lists.h>
#include <kx/rtl/Method.h>
#include <kx/rtl/Object.h>
#include <kx/rtl/Persistent.h>
#include <kx/rtl/Set.h>
#include <kx/rtl/Streams.h>
#include <kx/rtl/StringList.h>
#include <kx/rtl/Strings.h>
#include <kx/rtl/SyncObjs.h>
#include <kx/rtl/SysUtils.h>
#include <kx/rtl/System.h>
#include <kx/rtl/TypInfo.h>
#include <kx/rtl/Variants.h>
