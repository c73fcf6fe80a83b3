// SPDX-License-Identifier: MIT
#pragma once
// uKxClasses: the library's root classes, free notifications, object lists, streams, string
// lists and memo lists.

#include <kx/classes/BinEncoding.h>
#include <kx/classes/BufferConversions.h>
#include <kx/classes/ClassesConsts.h>
#include <kx/classes/Component.h>
#include <kx/classes/FileStream.h>
#include <kx/classes/FreeNotifies.h>
#include <kx/classes/Interfaces.h>
#include <kx/classes/KeyDescStringList.h>
#include <kx/classes/KxStringList.h>
#include <kx/classes/MemoList.h>
#include <kx/classes/MemoryBuffer.h>
#include <kx/classes/MemoryStream.h>
#include <kx/classes/Object.h>
#include <kx/classes/ObjectAdapter.h>
#include <kx/classes/ObjectEx.h>
#include <kx/classes/ObjectList.h>
#include <kx/classes/PointerArithmetic.h>
#include <kx/classes/StreamStrings.h>
#include <kx/classes/StringStream.h>
#include <kx/classes/TextParser.h>
#include <kx/classes/UTF8StreamAdapter.h>
