// SPDX-License-Identifier: MIT
// FormatDateTime's pattern language and the readers of date and time texts.
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/SysUtils.h>

#include <cstring>

namespace kx {

namespace {

AnsiChar Upper(AnsiChar C) {
  return C >= 'a' && C <= 'z' ? AnsiChar(C - 32) : C;
}

// Whether the pattern at P starts with Word (upper case), ignoring case.
bool StartsWith(const char* P, const char* End, const char* Word) {
  for (; *Word; ++Word, ++P)
    if (P == End || Upper(*P) != *Word) return false;
  return true;
}

void AppendNumber(AnsiString& Out, unsigned Value, unsigned Digits) {
  char Buf[16];
  int Len = 0;
  do {
    Buf[Len++] = char('0' + Value % 10);
    Value /= 10;
  } while (Value != 0);
  for (unsigned I = unsigned(Len); I < Digits; ++I) Out += '0';
  while (Len > 0) Out += Buf[--Len];
}

struct TDateTimeWriter {
  TDateTime Value;
  const TFormatSettings& Settings;
  AnsiString& Out;
  int Level = 0;

  void Append(std::string_view Format) {
    if (Level >= 2) return;
    ++Level;
    uint16_t Year = 0, Month = 0, Day = 0, Hour = 0, Min = 0, Sec = 0, MSec = 0;
    bool DateDecoded = false, TimeDecoded = false, Use12HourClock = false;
    auto GetDate = [&] {
      if (!DateDecoded) DecodeDate(Value, Year, Month, Day);
      DateDecoded = true;
    };
    auto GetTime = [&] {
      if (!TimeDecoded) DecodeTime(Value, Hour, Min, Sec, MSec);
      TimeDecoded = true;
    };
    AnsiChar LastToken = ' ';
    const char* P = Format.data();
    const char* const End = P + Format.size();
    while (P < End) {
      const AnsiChar Starter = *P++;
      // How many times the character repeats, itself included.
      auto Count = [&] {
        unsigned N = 1;
        while (P < End && *P == Starter) ++P, ++N;
        return N;
      };
      AnsiChar Token = Upper(Starter);
      if (Token >= 'A' && Token <= 'Z') {
        if (Token == 'M' && LastToken == 'H') Token = 'N';
        LastToken = Token;
      }
      switch (Token) {
      case 'Y': {
        const unsigned N = Count();
        GetDate();
        if (N <= 2)
          AppendNumber(Out, Year % 100u, 2);
        else
          AppendNumber(Out, Year, 4);
        break;
      }
      case 'M': {
        const unsigned N = Count();
        GetDate();
        if (N <= 2)
          AppendNumber(Out, Month, N);
        else if (Month >= 1 && Month <= 12)
          Out += N == 3 ? Settings.ShortMonthNames[Month] : Settings.LongMonthNames[Month];
        break;
      }
      case 'D': {
        const unsigned N = Count();
        if (N <= 2) {
          GetDate();
          AppendNumber(Out, Day, N);
        } else if (N <= 4) {
          const int32_t Dow = DayOfWeek(Value);
          Out += N == 3 ? Settings.ShortDayNames[size_t(Dow)] : Settings.LongDayNames[size_t(Dow)];
        } else {
          Append(N == 5 ? Settings.ShortDateFormat : Settings.LongDateFormat);
        }
        break;
      }
      case 'H': {
        const unsigned N = Count();
        GetTime();
        // The 12-hour clock when an am/pm specifier follows before the next hour.
        bool Quoted = false;
        for (const char* Q = P; Q < End; ++Q) {
          const AnsiChar C = *Q;
          if (C == '\'' || C == '"') {
            Quoted = !Quoted;
          } else if (!Quoted && (C == 'A' || C == 'a')) {
            if (StartsWith(Q, End, "AM/PM") || StartsWith(Q, End, "A/P") ||
                StartsWith(Q, End, "AMPM"))
              Use12HourClock = true;
            break;
          } else if (C == 'H' || C == 'h') {
            break;
          }
        }
        unsigned H = Hour;
        if (Use12HourClock) H = H == 0 ? 12 : H > 12 ? H - 12 : H;
        AppendNumber(Out, H, N > 2 ? 2 : N);
        break;
      }
      case 'N':
      case 'S': {
        const unsigned N = Count();
        GetTime();
        AppendNumber(Out, Token == 'N' ? Min : Sec, N > 2 ? 2 : N);
        break;
      }
      case 'Z': {
        const unsigned N = Count();
        GetTime();
        AppendNumber(Out, MSec, N > 3 ? 3 : N);
        break;
      }
      case 'T':
        Append(Count() == 1 ? Settings.ShortTimeFormat : Settings.LongTimeFormat);
        break;
      case 'A': {
        GetTime();
        const char* Q = P - 1;
        if (StartsWith(Q, End, "AM/PM")) {
          Out.append(Q + (Hour >= 12 ? 3 : 0), 2);
          P += 4;
          Use12HourClock = true;
        } else if (StartsWith(Q, End, "A/P")) {
          Out.append(Q + (Hour >= 12 ? 2 : 0), 1);
          P += 2;
          Use12HourClock = true;
        } else if (StartsWith(Q, End, "AMPM")) {
          Out += Hour < 12 ? Settings.TimeAMString : Settings.TimePMString;
          P += 3;
          Use12HourClock = true;
        } else if (StartsWith(Q, End, "AAAA")) {
          Out += Settings.LongDayNames[size_t(DayOfWeek(Value))];
          P += 3;
        } else if (StartsWith(Q, End, "AAA")) {
          Out += Settings.ShortDayNames[size_t(DayOfWeek(Value))];
          P += 2;
        } else {
          Out += Starter;
        }
        break;
      }
      case 'C':
        Count();
        Append(Settings.ShortDateFormat);
        GetTime();
        if (Hour != 0 || Min != 0 || Sec != 0 || MSec != 0) {
          Out += ' ';
          Append(Settings.LongTimeFormat);
        }
        break;
      case '/':
        if (Settings.DateSeparator != 0) Out += Settings.DateSeparator;
        break;
      case ':':
        if (Settings.TimeSeparator != 0) Out += Settings.TimeSeparator;
        break;
      case '\'':
      case '"': {
        const char* Start = P;
        while (P < End && *P != Starter) ++P;
        Out.append(Start, size_t(P - Start));
        if (P < End) ++P;
        break;
      }
      default:
        Out += Starter;
        break;
      }
    }
    --Level;
  }
};

// --- reading ---------------------------------------------------------------------------

enum TDateOrder { doMDY, doDMY, doYMD };

// The order of the first field letter of the short date format.
TDateOrder DateOrderOf(const AnsiString& Format) {
  for (AnsiChar C : Format) {
    switch (Upper(C)) {
    case 'E':
    case 'Y':
      return doYMD;
    case 'M':
      return doMDY;
    case 'D':
      return doDMY;
    default:
      break;
    }
  }
  return doMDY;
}

struct TScanner {
  const AnsiString& S;
  const TFormatSettings& Settings;
  size_t Pos = 0;

  bool AtEnd() const { return Pos >= S.size(); }

  void Blanks() {
    while (Pos < S.size() && S[Pos] == ' ') ++Pos;
  }

  // Digits while the value stays below 1000, so a year has at most four.
  bool Number(uint16_t& Value, unsigned& Digits) {
    Blanks();
    size_t I = Pos;
    unsigned N = 0;
    while (I < S.size() && S[I] >= '0' && S[I] <= '9' && N < 1000)
      N = N * 10 + unsigned(S[I++] - '0');
    if (I == Pos) return false;
    Digits = unsigned(I - Pos);
    Pos = I;
    Value = uint16_t(N);
    return true;
  }
  bool Number(uint16_t& Value) {
    unsigned Digits;
    return Number(Value, Digits);
  }

  bool Char(AnsiChar C) {
    Blanks();
    if (Pos < S.size() && S[Pos] == C) {
      ++Pos;
      return true;
    }
    return false;
  }

  bool Word(const AnsiString& Symbol) {
    if (Symbol.empty()) return false;
    Blanks();
    if (AnsiCompareText(Symbol, Copy(S, int64_t(Pos) + 1, int64_t(Symbol.size()))) != 0)
      return false;
    Pos += Symbol.size();
    return true;
  }

  bool Date(TDateTime& Value) {
    const TDateOrder Order = DateOrderOf(Settings.ShortDateFormat);
    uint16_t N1, N2, N3, Y, M, D;
    unsigned L1, L2, L3;
    if (!(Number(N1, L1) && Char(Settings.DateSeparator) && Number(N2, L2))) return false;
    if (Char(Settings.DateSeparator)) {
      if (!Number(N3, L3)) return false;
      unsigned YearLen;
      switch (Order) {
      case doMDY:
        Y = N3, YearLen = L3, M = N1, D = N2;
        break;
      case doDMY:
        Y = N3, YearLen = L3, M = N2, D = N1;
        break;
      default:
        Y = N1, YearLen = L1, M = N2, D = N3;
        break;
      }
      if (YearLen <= 2) {
        const int Window = Settings.TwoDigitYearCenturyWindow;
        const int Base = int(CurrentYear()) - Window;
        int Year = Y + Base / 100 * 100;
        if (Window > 0 && Year < Base) Year += 100;
        Y = uint16_t(Year);
      }
    } else {
      Y = CurrentYear();
      if (Order == doDMY)
        D = N1, M = N2;
      else
        M = N1, D = N2;
    }
    // A separator may close the date ("2024. 01. 05.").
    Char(Settings.DateSeparator);
    Blanks();
    return TryEncodeDate(Y, M, D, Value);
  }

  bool Mark(int& BaseHour) {
    if (Word(Settings.TimeAMString) || Word("AM"))
      BaseHour = 0;
    else if (Word(Settings.TimePMString) || Word("PM"))
      BaseHour = 12;
    return BaseHour >= 0;
  }

  bool Time(TDateTime& Value) {
    int BaseHour = -1;
    if (Mark(BaseHour)) Blanks();
    uint16_t Hour, Min = 0, Sec = 0, MSec = 0;
    if (!Number(Hour)) return false;
    if (Char(Settings.TimeSeparator)) {
      if (!Number(Min)) return false;
      if (Char(Settings.TimeSeparator)) {
        if (!Number(Sec)) return false;
        if (Char(Settings.DecimalSeparator) && !Number(MSec)) return false;
      }
    }
    if (BaseHour < 0) Mark(BaseHour);
    if (BaseHour >= 0) {
      if (Hour == 0 || Hour > 12) return false;
      Hour = uint16_t((Hour == 12 ? 0 : Hour) + BaseHour);
    }
    Blanks();
    return TryEncodeTime(Hour, Min, Sec, MSec, Value);
  }
};

bool ReadDate(const AnsiString& S, TDateTime& Value, const TFormatSettings& Settings) {
  TScanner Scan{S, Settings};
  TDateTime V;
  if (!Scan.Date(V) || !Scan.AtEnd()) return false;
  Value = V;
  return true;
}

bool ReadTime(const AnsiString& S, TDateTime& Value, const TFormatSettings& Settings) {
  TScanner Scan{S, Settings};
  TDateTime V;
  if (!Scan.Time(V) || !Scan.AtEnd()) return false;
  Value = V;
  return true;
}

bool ReadDateTime(const AnsiString& S, TDateTime& Value, const TFormatSettings& Settings) {
  TScanner Scan{S, Settings};
  TDateTime D, T = 0.0;
  if (!Scan.Date(D) || !(Scan.AtEnd() || (Scan.Time(T) && Scan.AtEnd())))
    return ReadTime(S, Value, Settings);
  Value = D >= 0 ? D + T : D - T;
  return true;
}

template <class Read>
TDateTime ReadOrRaise(Read R, const char* Message, const AnsiString& S,
                      const TFormatSettings& Settings) {
  TDateTime V;
  if (!R(S, V, Settings)) throw EConvertError(Message, {S});
  return V;
}

} // namespace

void DateTimeToString(AnsiString& Result, const AnsiString& Format, TDateTime DateTime,
                      const TFormatSettings& Settings) {
  Result.clear();
  TDateTimeWriter{DateTime, Settings, Result}.Append(Format.empty() ? "C" : Format);
}

void DateTimeToString(AnsiString& Result, const AnsiString& Format, TDateTime DateTime) {
  DateTimeToString(Result, Format, DateTime, FormatSettings());
}

AnsiString FormatDateTime(const AnsiString& Format, TDateTime DateTime,
                          const TFormatSettings& Settings) {
  AnsiString Result;
  DateTimeToString(Result, Format, DateTime, Settings);
  return Result;
}

AnsiString FormatDateTime(const AnsiString& Format, TDateTime DateTime) {
  return FormatDateTime(Format, DateTime, FormatSettings());
}

AnsiString DateToStr(TDateTime Date, const TFormatSettings& Settings) {
  return FormatDateTime("ddddd", Date, Settings);
}
AnsiString DateToStr(TDateTime Date) {
  return DateToStr(Date, FormatSettings());
}
AnsiString TimeToStr(TDateTime Time, const TFormatSettings& Settings) {
  return FormatDateTime("tt", Time, Settings);
}
AnsiString TimeToStr(TDateTime Time) {
  return TimeToStr(Time, FormatSettings());
}
AnsiString DateTimeToStr(TDateTime DateTime, const TFormatSettings& Settings) {
  return FormatDateTime(AnsiString(), DateTime, Settings);
}
AnsiString DateTimeToStr(TDateTime DateTime) {
  return DateTimeToStr(DateTime, FormatSettings());
}

bool TryStrToDate(const AnsiString& S, TDateTime& Value, const TFormatSettings& Settings) {
  return ReadDate(S, Value, Settings);
}
bool TryStrToDate(const AnsiString& S, TDateTime& Value) {
  return ReadDate(S, Value, FormatSettings());
}
bool TryStrToTime(const AnsiString& S, TDateTime& Value, const TFormatSettings& Settings) {
  return ReadTime(S, Value, Settings);
}
bool TryStrToTime(const AnsiString& S, TDateTime& Value) {
  return ReadTime(S, Value, FormatSettings());
}
bool TryStrToDateTime(const AnsiString& S, TDateTime& Value, const TFormatSettings& Settings) {
  return ReadDateTime(S, Value, Settings);
}
bool TryStrToDateTime(const AnsiString& S, TDateTime& Value) {
  return ReadDateTime(S, Value, FormatSettings());
}

TDateTime StrToDate(const AnsiString& S, const TFormatSettings& Settings) {
  return ReadOrRaise(ReadDate, SInvalidDate, S, Settings);
}
TDateTime StrToDate(const AnsiString& S) {
  return StrToDate(S, FormatSettings());
}
TDateTime StrToTime(const AnsiString& S, const TFormatSettings& Settings) {
  return ReadOrRaise(ReadTime, SInvalidTime, S, Settings);
}
TDateTime StrToTime(const AnsiString& S) {
  return StrToTime(S, FormatSettings());
}
TDateTime StrToDateTime(const AnsiString& S, const TFormatSettings& Settings) {
  return ReadOrRaise(ReadDateTime, SInvalidDateTime, S, Settings);
}
TDateTime StrToDateTime(const AnsiString& S) {
  return StrToDateTime(S, FormatSettings());
}

TDateTime StrToDateDef(const AnsiString& S, TDateTime Default) {
  TDateTime V;
  return TryStrToDate(S, V) ? V : Default;
}
TDateTime StrToDateTimeDef(const AnsiString& S, TDateTime Default) {
  TDateTime V;
  return TryStrToDateTime(S, V) ? V : Default;
}

} // namespace kx
