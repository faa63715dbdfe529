// OLE dates (days since 30 December 1899; for dates before it the fraction still counts
// forward from midnight) and FILETIME (100 ns ticks since 1 January 1601, UTC).
#include "platform/Win32.h"
#include "Internal.h"

#include <chrono>
#include <cmath>

namespace {

constexpr double kMinDate = -657434.0;           // 1 January 100
constexpr double kMaxDateExclusive = 2958466.0;  // 1 January 10000
constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kTicksPerSecond = 10000000;
// Days from 1 January 1970 back to the two epochs.
constexpr int64_t kOleEpochDays = -25569;        // 30 December 1899
constexpr int64_t kFileTimeEpochDays = -134774;  // 1 January 1601

// Days since 1 January 1970 of a proleptic Gregorian date (H. Hinnant's algorithm).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int64_t* year, unsigned* month, unsigned* day) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  *day = doy - (153 * mp + 2) / 5 + 1;
  *month = mp < 10 ? mp + 3 : mp - 9;
  *year = static_cast<int64_t>(yoe) + era * 400 + (*month <= 2);
}

bool IsLeap(int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

unsigned DaysInMonth(int64_t y, unsigned m) {
  static const unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && IsLeap(y) ? 29 : kDays[m - 1];
}

// Fills the calendar fields of a day count since 1970 and a second of that day.
void FillSystemTime(int64_t days, int64_t second, SYSTEMTIME* out) {
  int64_t year;
  unsigned month, day;
  CivilFromDays(days, &year, &month, &day);
  out->wYear = static_cast<WORD>(year);
  out->wMonth = static_cast<WORD>(month);
  out->wDay = static_cast<WORD>(day);
  out->wDayOfWeek = static_cast<WORD>(((days % 7) + 11) % 7);  // 1970-01-01 was a Thursday
  out->wHour = static_cast<WORD>(second / 3600);
  out->wMinute = static_cast<WORD>(second / 60 % 60);
  out->wSecond = static_cast<WORD>(second % 60);
  out->wMilliseconds = 0;
}

bool ValidSystemTime(const SYSTEMTIME& st, int minYear, int maxYear) {
  return st.wYear >= minYear && st.wYear <= maxYear && st.wMonth >= 1 && st.wMonth <= 12 &&
         st.wDay >= 1 && st.wDay <= DaysInMonth(st.wYear, st.wMonth) && st.wHour < 24 &&
         st.wMinute < 60 && st.wSecond < 60 && st.wMilliseconds < 1000;
}

}  // namespace

namespace tarnix::posix {

// Whole seconds, rounded half up; the fraction of a negative date counts forward from the
// midnight of its whole-day part, so -1.25 is 29 December 1899, 06:00.
bool OleDateToSystemTime(double date, SYSTEMTIME* out) {
  if (!(date >= kMinDate && date < kMaxDateExclusive)) return false;
  const double whole = std::trunc(date);
  int64_t days = static_cast<int64_t>(whole) + kOleEpochDays;
  // Windows adds a hair to the fraction before it rounds, so a time a hair under half a
  // second (as a computed date often is) already counts as the next second.
  constexpr double kHair = 1e-11;
  double fraction = std::fabs(date - whole) + kHair;
  if (fraction >= 1.0) fraction -= kHair;
  int64_t second = static_cast<int64_t>(std::floor(fraction * kSecondsPerDay + 0.5));
  if (second >= kSecondsPerDay) {
    second -= kSecondsPerDay;
    ++days;
  }
  FillSystemTime(days, second, out);
  return true;
}

}  // namespace tarnix::posix

INT VariantTimeToSystemTime(DOUBLE vtime, LPSYSTEMTIME lpSystemTime) {
  if (!lpSystemTime) return FALSE;
  return tarnix::posix::OleDateToSystemTime(vtime, lpSystemTime) ? TRUE : FALSE;
}

INT SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, DOUBLE* pvtime) {
  if (!lpSystemTime || !pvtime || !ValidSystemTime(*lpSystemTime, 100, 9999)) return FALSE;
  const SYSTEMTIME& st = *lpSystemTime;
  const double days =
      static_cast<double>(DaysFromCivil(st.wYear, st.wMonth, st.wDay) - kOleEpochDays);
  const double fraction = (st.wHour * 3600.0 + st.wMinute * 60.0 + st.wSecond) / kSecondsPerDay;
  *pvtime = days >= 0 ? days + fraction : days - fraction;
  return TRUE;
}

HRESULT VarUdateFromDate(DATE dateIn, ULONG dwFlags, UDATE* pudateOut) {
  if (!pudateOut) return E_INVALIDARG;
  SYSTEMTIME st;
  if (!tarnix::posix::OleDateToSystemTime(dateIn, &st)) return E_INVALIDARG;
  pudateOut->st = st;
  pudateOut->wDayOfYear = static_cast<USHORT>(DaysFromCivil(st.wYear, st.wMonth, st.wDay) -
                                              DaysFromCivil(st.wYear, 1, 1) + 1);
  return S_OK;
}

HRESULT VarDateFromUdate(UDATE* pudateIn, ULONG dwFlags, DATE* pdateOut) {
  if (!pudateIn || !pdateOut) return E_INVALIDARG;
  SYSTEMTIME st = pudateIn->st;
  st.wMilliseconds = 0;
  if (dwFlags & VAR_TIMEVALUEONLY) st.wYear = 1899, st.wMonth = 12, st.wDay = 30;
  if (dwFlags & VAR_DATEVALUEONLY) st.wHour = st.wMinute = st.wSecond = 0;
  double date = 0;
  if (!SystemTimeToVariantTime(&st, &date)) return E_INVALIDARG;
  *pdateOut = date;
  return S_OK;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime) {
  if (!lpSystemTime || !lpFileTime || !ValidSystemTime(*lpSystemTime, 1601, 30827)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  const SYSTEMTIME& st = *lpSystemTime;
  const int64_t days = DaysFromCivil(st.wYear, st.wMonth, st.wDay) - kFileTimeEpochDays;
  const int64_t seconds = days * kSecondsPerDay + st.wHour * 3600 + st.wMinute * 60 + st.wSecond;
  const uint64_t ticks = static_cast<uint64_t>(seconds) * kTicksPerSecond +
                         static_cast<uint64_t>(st.wMilliseconds) * 10000;
  lpFileTime->dwLowDateTime = static_cast<DWORD>(ticks);
  lpFileTime->dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime) {
  if (!lpFileTime || !lpSystemTime) return FALSE;
  const uint64_t ticks =
      (static_cast<uint64_t>(lpFileTime->dwHighDateTime) << 32) | lpFileTime->dwLowDateTime;
  if (ticks >= 0x8000000000000000ull) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  const int64_t seconds = static_cast<int64_t>(ticks / kTicksPerSecond);
  FillSystemTime(seconds / kSecondsPerDay + kFileTimeEpochDays, seconds % kSecondsPerDay,
                 lpSystemTime);
  lpSystemTime->wMilliseconds = static_cast<WORD>(ticks % kTicksPerSecond / 10000);
  return TRUE;
}

void GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime) {
  if (!lpSystemTimeAsFileTime) return;
  const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
  const int64_t ticks =
      std::chrono::duration_cast<std::chrono::nanoseconds>(since1970).count() / 100 -
      kFileTimeEpochDays * kSecondsPerDay * kTicksPerSecond;
  lpSystemTimeAsFileTime->dwLowDateTime = static_cast<DWORD>(ticks);
  lpSystemTimeAsFileTime->dwHighDateTime = static_cast<DWORD>(static_cast<uint64_t>(ticks) >> 32);
}

void GetSystemTime(LPSYSTEMTIME lpSystemTime) {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  FileTimeToSystemTime(&now, lpSystemTime);
}
