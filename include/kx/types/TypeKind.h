// SPDX-License-Identifier: MIT
#pragma once
// The library-level kind of a type, in the order its ordinals are stored.

#include <cstdint>

namespace kx {

enum TKxTypeKind : uint8_t {
  rtkUnknown,
  rtkByte,
  rtkWord,
  rtkLongWord,
  rtkUInt64,
  rtkShortInt,
  rtkSmallInt,
  rtkLongInt,
  rtkInt64,
  rtkSingle,
  rtkDouble,
  rtkExtended,
  rtkChar,
  rtkAChar,
  rtkWChar,
  rtkString,
  rtkAString,
  rtkWString,
  rtkBoolean,
  rtkEnumeration,
  rtkSet,
  rtkDate,
  rtkTime,
  rtkDatetime,
  rtkVariant,
  rtkArray,
  rtkDynArray,
  rtkRecord,
  rtkClass,
  rtkInterface,
  rtkPointer,
  rtkMethod,
  rtkProcedure,
  rtkException,
  rtkClassRef
};

} // namespace kx
