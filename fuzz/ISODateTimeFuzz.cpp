// SPDX-License-Identifier: MIT
// The date-time text readers over fuzzed text: the structured ISO decoder and its defaulting
// form, the local-time ISO reader and the LUO reader. Only the library's exceptions may come
// out, the defaulting form agrees with the raising one, and what the LUO reader accepts is
// written back to the same value. A second mode builds an instant from the input and reads
// the writers' text back.
#include <kx/datetime/DateTimeUtils.h>
#include <kx/datetime/ISODateTime.h>

#include "FuzzSupport.h"

#include <cmath>

using namespace kx;

namespace {

constexpr double Fallback = 45000.25;

bool SameRecord(const TKxISODateTime& A, const TKxISODateTime& B) {
  return A.HasDate == B.HasDate && A.Year == B.Year && A.Month == B.Month && A.Day == B.Day &&
         A.HasTime == B.HasTime && A.Hour == B.Hour && A.Minute == B.Minute &&
         A.Second == B.Second && A.MSec == B.MSec && A.Negative == B.Negative &&
         A.TimeZone == B.TimeZone && A.OffsetMinutes == B.OffsetMinutes;
}

void CheckText(const AnsiString& S) {
  const auto Decoded = kxfuzz::Try([&] { return KxDecodeISODateTime(S); });
  const TKxISODateTime Def = KxDecodeISODateTimeDef(S, Fallback);
  if (Decoded.Value) {
    KX_FUZZ_CHECK(SameRecord(*Decoded.Value, Def));
  } else {
    KX_FUZZ_CHECK(!Def.HasDate && !Def.HasTime && Def.TimeZone == tzfNA);
    uint16_t Y, Mo, D, H, Mi, Se, Ms;
    DecodeDateTime(Fallback, Y, Mo, D, H, Mi, Se, Ms);
    KX_FUZZ_CHECK(Def.Year == Y && Def.Month == Mo && Def.Day == D && Def.Hour == H &&
                  Def.Minute == Mi && Def.Second == Se && Def.MSec == Ms);
  }

  const auto Local = kxfuzz::Try([&] { return double(KxISOStrToDateTime(S)); });
  if (Local.Value) KX_FUZZ_CHECK(std::isfinite(*Local.Value));

  const auto Luo = kxfuzz::Try([&] { return double(ConvertLUOToDateTime(S)); });
  if (Luo.Value) {
    KX_FUZZ_CHECK(std::isfinite(*Luo.Value));
    // Before 1899-12-30 the reader adds the time to a negative day, which is another instant
    // than the one the fields name; from there on, the value is written back as read.
    if (*Luo.Value >= 0)
      KX_FUZZ_CHECK(double(ConvertLUOToDateTime(ConvertDateTimeToLUO(*Luo.Value))) == *Luo.Value);
  }
}

void CheckInstant(FuzzedDataProvider& In) {
  const uint16_t Year = In.ConsumeIntegralInRange<uint16_t>(1, 9999);
  const uint16_t Month = In.ConsumeIntegralInRange<uint16_t>(1, 12);
  const uint16_t Day = In.ConsumeIntegralInRange<uint16_t>(1, DaysInAMonth(Year, Month));
  const uint16_t Hour = In.ConsumeIntegralInRange<uint16_t>(0, 23);
  const uint16_t Min = In.ConsumeIntegralInRange<uint16_t>(0, 59);
  const uint16_t Sec = In.ConsumeIntegralInRange<uint16_t>(0, 59);
  const uint16_t MSec = In.ConsumeIntegralInRange<uint16_t>(0, 999);
  const TDateTime DT = EncodeDateTime(Year, Month, Day, Hour, Min, Sec, MSec);

  for (const bool WithMSec : {true, false}) {
    const AnsiString Text = KxDateTimeToISOStr(DT, WithMSec);
    const TKxISODateTime R = KxDecodeISODateTime(Text);
    KX_FUZZ_CHECK(R.HasDate && R.HasTime && !R.Negative && R.TimeZone == tzfNA);
    KX_FUZZ_CHECK(R.Year == Year && R.Month == Month && R.Day == Day);
    KX_FUZZ_CHECK(R.Hour == Hour && R.Minute == Min && R.Second == Sec);
    KX_FUZZ_CHECK(R.MSec == (WithMSec ? MSec : 0));
    if (double(DT) >= 0 && WithMSec) KX_FUZZ_CHECK(double(KxISOStrToDateTime(Text)) == double(DT));
  }
  if (double(DT) >= 0)
    KX_FUZZ_CHECK(double(ConvertLUOToDateTime(ConvertDateTimeToLUO(DT))) == double(DT));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  if (Data[0] & 1) {
    FuzzedDataProvider In(Data + 1, Size - 1);
    CheckInstant(In);
  } else {
    CheckText(AnsiString(reinterpret_cast<const char*>(Data) + 1, Size - 1));
  }
  return 0;
}
