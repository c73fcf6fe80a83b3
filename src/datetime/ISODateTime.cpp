// SPDX-License-Identifier: MIT
// ISO 8601 date-time text: the structured decoder, the writers and the simple readers.
#include <kx/classes/ClassesConsts.h>
#include <kx/classes/TextParser.h>
#include <kx/datetime/ISODateTime.h>
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/FormatSettings.h>
#include <kx/rtl/SysUtils.h>

#include <cstdint>
#include <limits>

namespace kx {

namespace {

// The decoder's cursor: the text parser's moves over 8-bit text, one byte a character, kept
// inline because a time stamp is decoded per value. A move steps one character and then over
// control characters (below the space); a move at the end raises "Unexpected EOF"; at the end
// the current character reads as 0.
class TISOCursor {
public:
  explicit TISOCursor(const AnsiString& S) : FPos(S.data()), FEnd(S.data() + S.size()) {}

  bool AtEnd() const { return FPos >= FEnd; }
  char Current() const { return FPos < FEnd ? *FPos : '\0'; }
  void Next() {
    if (FPos >= FEnd) throw EKxTextParserEOF(SUnexpectedEOF);
    ++FPos;
    while (FPos < FEnd && uint8_t(*FPos) < uint8_t(' ')) ++FPos;
  }
  void Next2() {
    Next();
    Next();
  }
  void SkipDigits() {
    while (FPos < FEnd && *FPos >= '0' && *FPos <= '9') ++FPos;
  }
  void Mark() { FMark = FPos; }
  bool SelectionEmpty() const { return FPos == FMark; }
  // The selection from the mark to the current character, by the runtime's integer
  // conversion (which raises EConvertError for anything but a number).
  int32_t SelectedInt() const {
    const size_t Length = size_t(FPos - FMark);
    if (Length > 0 && Length <= 9) {
      int32_t Value = 0;
      const char* P = FMark;
      for (; P < FPos && *P >= '0' && *P <= '9'; ++P) Value = Value * 10 + (*P - '0');
      if (P == FPos) return Value;
    }
    return StrToInt(AnsiString(FMark, Length));
  }
  // The digit run from the mark with "00" appended, cut to three: a fraction in milliseconds.
  uint16_t SelectedMSec() const {
    uint16_t Value = 0;
    const char* P = FMark;
    for (int I = 0; I < 3; ++I) Value = uint16_t(Value * 10 + (P < FPos ? *P++ - '0' : 0));
    return Value;
  }

private:
  const char* FPos;
  const char* FEnd;
  const char* FMark = nullptr;
};

// The time from the hour on; the hour's two characters are selected.
void DecodeTime(TISOCursor& C, TKxISODateTime& R) {
  R.HasTime = true;
  R.Hour = uint16_t(C.SelectedInt());
  C.Next(); // the separator, whatever it is
  C.Mark();
  C.Next2();
  R.Minute = uint16_t(C.SelectedInt());
  if (C.AtEnd() || C.Current() == '+' || C.Current() == '-') return;
  C.Next();
  C.Mark();
  C.SkipDigits();
  R.Second = C.SelectionEmpty() ? 0 : uint16_t(C.SelectedInt());
  if (C.Current() == '.' || C.Current() == ',') {
    C.Next();
    C.Mark();
    C.SkipDigits();
    R.MSec = C.SelectedMSec();
  }
}

void DecodeZone(TISOCursor& C, TKxISODateTime& R) {
  const char Designator = C.Current();
  if (Designator == 'Z') {
    R.TimeZone = tzfUTC;
  } else if (Designator == '+' || Designator == '-') {
    R.TimeZone = tzfOffset;
    const int32_t Sign = Designator == '-' ? -1 : 1;
    C.Next();
    C.Mark();
    C.Next2();
    const int32_t Hours = C.SelectedInt();
    C.Next(); // the separator
    C.Mark();
    C.Next2();
    const int32_t Minutes = C.SelectedInt();
    R.OffsetMinutes = int16_t((Hours * 60 + Minutes) * Sign);
  }
}

// Two decimal digits.
char* Put2(char* P, unsigned V) {
  P[0] = char('0' + V / 10);
  P[1] = char('0' + V % 10);
  return P + 2;
}

// A field for the runtime's encoders, which take 16-bit values: a value outside them stands
// as one every encoder refuses, where a narrowing cast could make it a valid one.
uint16_t EncoderField(int32_t V) {
  return V < 0 || V > 0xFFFF ? uint16_t(0xFFFF) : uint16_t(V);
}

bool EndsWithZ(const AnsiString& S) {
  return !S.empty() && S.back() == 'Z';
}

constexpr int64_t RestOfText = std::numeric_limits<int32_t>::max();

} // namespace

// --- structured decoding -------------------------------------------------------------------

TKxISODateTime KxDecodeISODateTime(const AnsiString& S) {
  TKxISODateTime R;
  if (S.empty()) return R;
  TISOCursor C(S);
  if (C.Current() == '-') {
    R.Negative = true;
    C.Next();
  }
  C.Mark();
  C.Next2();
  if (C.Current() != ':') {
    R.HasDate = true;
    C.Next2();
    R.Year = uint16_t(C.SelectedInt());
    if (C.Current() == '-') C.Next();
    C.Mark();
    C.Next2();
    R.Month = uint16_t(C.SelectedInt());
    if (C.Current() == '-') C.Next();
    C.Mark();
    C.Next2();
    R.Day = uint16_t(C.SelectedInt());
    if (C.Current() != 'T') {
      DecodeZone(C, R);
      return R;
    }
    C.Next();
    C.Mark();
    C.Next2();
  }
  DecodeTime(C, R);
  DecodeZone(C, R);
  return R;
}

TKxISODateTime KxDecodeISODateTimeDef(const AnsiString& S, TDateTime Default) {
  try {
    return KxDecodeISODateTime(S);
  } catch (...) {
    // The flags stay clear, so the caller can tell the fallback from a decoded value.
    TKxISODateTime R;
    DecodeDateTime(Default, R.Year, R.Month, R.Day, R.Hour, R.Minute, R.Second, R.MSec);
    return R;
  }
}

// --- writing -------------------------------------------------------------------------------

AnsiString KxDateToISOStr(TDateTime D) {
  uint16_t Year, Month, Day;
  DecodeDate(D, Year, Month, Day);
  char Buffer[16];
  char* P = Buffer;
  if (Year >= 10000) *P++ = char('0' + Year / 10000);
  P = Put2(P, Year / 100 % 100);
  P = Put2(P, Year % 100);
  *P++ = '-';
  P = Put2(P, Month);
  *P++ = '-';
  P = Put2(P, Day);
  return AnsiString(Buffer, size_t(P - Buffer));
}

AnsiString KxDateTimeToISOStr(TDateTime DT, bool WithMSec) {
  uint16_t Year, Month, Day, Hour, Min, Sec, MSec;
  DecodeDateTime(DT, Year, Month, Day, Hour, Min, Sec, MSec);
  char Buffer[32];
  char* P = Buffer;
  if (Year >= 10000) *P++ = char('0' + Year / 10000);
  P = Put2(P, Year / 100 % 100);
  P = Put2(P, Year % 100);
  *P++ = '-';
  P = Put2(P, Month);
  *P++ = '-';
  P = Put2(P, Day);
  *P++ = 'T';
  P = Put2(P, Hour);
  *P++ = ':';
  P = Put2(P, Min);
  *P++ = ':';
  P = Put2(P, Sec);
  if (WithMSec) {
    *P++ = '.';
    *P++ = char('0' + MSec / 100);
    P = Put2(P, MSec % 100);
  }
  return AnsiString(Buffer, size_t(P - Buffer));
}

AnsiString KxTimeToISOStr(TDateTime DT, bool WithMSec) {
  const double Value = DT;
  return KxDateTimeToISOStr(TDateTime(Value - double(int64_t(Value))), WithMSec);
}

// --- simple reading ------------------------------------------------------------------------

TDateTime KxISOStrToDate(const AnsiString& S) {
  if (S.empty()) return 0.0;
  const AnsiString Digits = StringReplace(S, "-", "", TReplaceFlags{rfReplaceAll});
  const int32_t Year = StrToInt(Copy(Digits, 1, 4));
  const int32_t Month = StrToInt(Copy(Digits, 5, 2));
  const int32_t Day = StrToInt(Copy(Digits, 7, 2));
  if (int64_t(Year) + Month + Day == 0) return 0.0;
  return EncodeDate(EncoderField(Year), EncoderField(Month), EncoderField(Day));
}

TDateTime KxISOStrToTime(const AnsiString& S) {
  if (S.empty()) return 0.0;
  const int64_t T = Pos("T", S);
  const int32_t Hour = StrToInt(Copy(S, T + 1, 2));
  const int32_t Min = StrToInt(Copy(S, T + 4, 2));
  const int32_t Sec = StrToInt(Copy(S, T + 7, 2));
  int32_t MSec = 0;
  if (T + 9 <= int64_t(S.size()) && S[size_t(T + 8)] == '.') {
    // The digits are the milliseconds themselves, up to an offset.
    AnsiString Fraction = Copy(S, T + 10, RestOfText);
    int64_t Cut = Pos("-", Fraction);
    if (Cut == 0) Cut = Pos("+", Fraction);
    if (Cut > 0) Fraction = Copy(Fraction, 1, Cut - 1);
    MSec = StrToInt(Fraction);
  }
  TDateTime Result =
      EncodeTime(EncoderField(Hour), EncoderField(Min), EncoderField(Sec), EncoderField(MSec));
  if (EndsWithZ(S)) Result = KxUTCToLocal(Result);
  return Result;
}

TDateTime KxISOStrToDateTime(const AnsiString& S) {
  if (S.empty() || S == "0") return 0.0;
  const int64_t T = Pos("T", S);
  if (T == 0) {
    const TDateTime Result = KxISOStrToDate(S);
    return EndsWithZ(S) ? KxUTCToLocal(Result) : Result;
  }
  const AnsiString DateText = Copy(S, 1, T - 1);
  if (EndsWithZ(S)) {
    const AnsiString TimeText = Copy(S, T + 1, int64_t(S.size()) - T - 1);
    const double Date = KxISOStrToDate(DateText);
    return KxUTCToLocal(Date + double(KxISOStrToTime(TimeText)));
  }
  AnsiString TimeText = Copy(S, T + 1, RestOfText);
  // Only one sign is expected, so the sum of both positions is the position of the one there.
  const int64_t Sign = Pos("+", TimeText) + Pos("-", TimeText);
  if (Sign > 0) {
    const AnsiString Zone = Copy(TimeText, Sign, RestOfText);
    TimeText = Copy(TimeText, 1, Sign - 1);
    int32_t Minutes = StrToInt(Copy(Zone, 2, 2)) * 60 + StrToInt(Copy(Zone, 5, 2));
    // East of UTC is behind it in UTC.
    if (Zone[0] == '+') Minutes = -Minutes;
    const double Date = KxISOStrToDate(DateText);
    const double Time = KxISOStrToTime(TimeText);
    return KxUTCToLocal(Date + Time + Minutes / double(MinsPerDay));
  }
  const double Date = KxISOStrToDate(DateText);
  return Date + double(KxISOStrToTime(TimeText));
}

TDateTime KxStrToDateTime(const AnsiString& S) {
  TFormatSettings Settings = TFormatSettings::Create(LocaleSystemDefault);
  Settings.DateSeparator = '-';
  Settings.ShortDateFormat = "dd-MM-yyyy";
  return StrToDateTime(S, Settings);
}

} // namespace kx
