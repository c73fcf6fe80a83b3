// SPDX-License-Identifier: MIT
// date: instants converted between ISO 8601 text, the LUO layout and Unix time. Every value
// is taken to a UTC date-time first, so each pair of forms goes through one path.
#include "Commands.h"

#include <kx/uKxDateTimeUtils.h>

#include <cmath>
#include <cstdio>

namespace kxtool {

namespace {

// Instants are milliseconds on a plain count (the time stamp's days since year 1 and time of
// day): the date-time type's days before 1899 carry their time of day with the wrong sign for
// simple arithmetic.
constexpr int64_t MSecsPerDay = 86400000;
// Years 1 to 9999, as the date-time type can write them.
constexpr int64_t MaxMSecs = 3652059 * MSecsPerDay - 1; // 9999-12-31T23:59:59.999

int64_t MSecsOf(kx::TDateTime DT) {
  const kx::TTimeStamp T = kx::DateTimeToTimeStamp(DT);
  return (int64_t(T.Date) - 1) * MSecsPerDay + T.Time;
}

kx::TDateTime DateTimeOf(int64_t MSecs) {
  if (MSecs < 0 || MSecs > MaxMSecs) throw TToolError{"outside the years 1 to 9999"};
  return kx::TimeStampToDateTime({int32_t(MSecs % MSecsPerDay), int32_t(MSecs / MSecsPerDay + 1)});
}

// Local time's lead on UTC. The library converts every value by the zone's current offset,
// so one reading serves all values.
int64_t LocalLeadMSecs() {
  static const int64_t Lead = [] {
    const kx::TDateTime Now = kx::Now();
    return 60000 * int64_t(std::llround((double(kx::KxUTCToLocal(Now)) - double(Now)) * 1440));
  }();
  return Lead;
}

TDateForm Detect(const std::string& V) {
  if (V[0] == '@') return TDateForm::Unix;
  const size_t Digits = V[0] == '-' ? 1 : 0;
  if (V.size() > Digits && V.find_first_not_of("0123456789", Digits) == std::string::npos)
    return TDateForm::Unix;
  const char C = V[0];
  if ((C >= 'A' && C <= 'Z') || (C >= 'a' && C <= 'z')) return TDateForm::Luo;
  return TDateForm::Iso;
}

int64_t ParseUnix(std::string V) {
  if (!V.empty() && V[0] == '@') V.erase(0, 1);
  const size_t Sign = !V.empty() && V[0] == '-' ? 1 : 0;
  // 12 digits reach far past year 9999 and cannot overflow.
  if (V.size() == Sign || V.size() > Sign + 12 ||
      V.find_first_not_of("0123456789", Sign) != std::string::npos)
    throw TToolError{"not a Unix time (whole seconds, optionally after - or @)"};
  return std::stoll(V);
}

// ISO 8601 text as UTC: a "Z" or an offset says which instant the text means; without one it
// is a wall-clock reading.
int64_t IsoToUtc(const std::string& V, bool Utc) {
  const kx::TKxISODateTime R = kx::KxDecodeISODateTime(V);
  if (!R.HasDate) throw TToolError{"not an ISO 8601 date and time"};
  if (R.Negative) throw TToolError{"outside the years 1 to 9999"};
  const int64_t Wall = MSecsOf(kx::EncodeDate(R.Year, R.Month, R.Day)) +
                       MSecsOf(kx::EncodeTime(R.Hour, R.Minute, R.Second, R.MSec)) - MSecsOf(0.0);
  switch (R.TimeZone) {
  case kx::tzfUTC:
    return Wall;
  case kx::tzfOffset:
    return Wall - int64_t(R.OffsetMinutes) * 60000;
  default:
    return Wall - (Utc ? 0 : LocalLeadMSecs());
  }
}

int64_t ToUtc(TDateForm Form, const std::string& V, bool Utc) {
  switch (Form) {
  case TDateForm::Unix:
    return MSecsOf(kx::UnixToDateTime(ParseUnix(V)));
  case TDateForm::Luo: {
    // The reader adds the encoded date and time: before 1899, where the date is negative, the
    // sum is no date-time in the usual sense, so it is taken apart as the sum it is.
    const double Sum = double(kx::ConvertLUOToDateTime(V));
    const double Day = std::floor(Sum);
    const int64_t Wall = MSecsOf(Day) + std::llround((Sum - Day) * double(MSecsPerDay));
    return Wall - (Utc ? 0 : LocalLeadMSecs());
  }
  default:
    return IsoToUtc(V, Utc);
  }
}

// "+hh:mm" or "-hh:mm": how far local time runs ahead of UTC.
std::string Offset(int64_t LeadMSecs) {
  const int64_t Minutes = LeadMSecs / 60000;
  const int64_t A = Minutes < 0 ? -Minutes : Minutes;
  char Text[24];
  std::snprintf(Text, sizeof Text, "%c%02lld:%02lld", Minutes < 0 ? '-' : '+',
                static_cast<long long>(A / 60), static_cast<long long>(A % 60));
  return Text;
}

std::string FromUtc(TDateForm Form, int64_t Utc, const TDateOptions& O) {
  if (Form == TDateForm::Unix) return std::to_string(kx::DateTimeToUnix(DateTimeOf(Utc)));
  const int64_t Lead = O.Utc ? 0 : LocalLeadMSecs();
  const kx::TDateTime DT = DateTimeOf(Utc + Lead);
  if (Form == TDateForm::Luo) return std::string(kx::ConvertDateTimeToLUO(DT));
  return std::string(kx::KxDateTimeToISOStr(DT, O.MSec)) + (O.Utc ? "Z" : Offset(Lead));
}

std::string Trimmed(const std::string& S) {
  const size_t B = S.find_first_not_of(" \t\r");
  if (B == std::string::npos) return std::string();
  return S.substr(B, S.find_last_not_of(" \t\r") - B + 1);
}

} // namespace

int DateConvert(const TDateOptions& O, TToolIO& IO) {
  std::vector<std::string> Values;
  if (!O.Values.empty()) {
    Values = O.Values;
  } else {
    // One value a line; blank lines are skipped.
    const std::string Text = ReadAll(IO.In);
    size_t Start = 0;
    while (Start < Text.size()) {
      size_t End = Text.find('\n', Start);
      if (End == std::string::npos) End = Text.size();
      std::string Line = Trimmed(Text.substr(Start, End - Start));
      if (!Line.empty()) Values.push_back(std::move(Line));
      Start = End + 1;
    }
  }
  int Status = 0;
  for (const std::string& V : Values) {
    try {
      if (V.empty()) throw TToolError{"empty value"};
      const TDateForm From = O.From == TDateForm::Auto ? Detect(V) : O.From;
      WriteText(IO.Out, FromUtc(O.To, ToUtc(From, V, O.Utc), O) + "\n");
    } catch (const TToolError& E) {
      WriteText(IO.Err, "kx date: " + V + ": " + E.Message + "\n");
      Status = 1;
    } catch (const kx::Exception& E) {
      WriteText(IO.Err, "kx date: " + OneLine(V) + ": " + OneLine(E.Message()) + "\n");
      Status = 1;
    }
  }
  return Status;
}

} // namespace kxtool
