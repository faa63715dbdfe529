#include "convert/Conversion.h"

#include "common/FormatText.h"

#include <ctime>

#ifndef _WIN32
#  include <locale.h>
#endif

namespace tarnix::convert {
namespace {

constexpr size_t kLabelCapacity = 256;

std::tm CalendarOf(const UDATE& parts) {
  std::tm calendar{};
  calendar.tm_sec = parts.st.wSecond;
  calendar.tm_min = parts.st.wMinute;
  calendar.tm_hour = parts.st.wHour;
  calendar.tm_mday = parts.st.wDay;
  calendar.tm_mon = parts.st.wMonth - 1;
  calendar.tm_year = parts.st.wYear - 1900;
  calendar.tm_wday = parts.st.wDayOfWeek;
  calendar.tm_yday = parts.wDayOfYear - 1;
  calendar.tm_isdst = 0;
  return calendar;
}

#ifdef _WIN32

// Microsoft's runtime may treat a year before 1900 as an invalid parameter, whose default
// handler ends the process. Such a date (the host's "no time", 1899-12-30, among them) is
// written here instead, in the layout the runtime's C locale gives "%c".
WString FormatBefore1900(const std::tm& calendar) {
  return FormatText(WSTR("%02d/%02d/%02d %02d:%02d:%02d"), calendar.tm_mon + 1, calendar.tm_mday,
                    (calendar.tm_year + 1900) % 100, calendar.tm_hour, calendar.tm_min,
                    calendar.tm_sec);
}

WString Format(const std::tm& calendar) {
  if (calendar.tm_year < 0) return FormatBefore1900(calendar);
  wchar_t buffer[kLabelCapacity] = {};
  wcsftime(buffer, kLabelCapacity, L"%c", &calendar);
  return buffer;
}

#else

// There is no UTF-16 wcsftime here. The C locale's "%c" is plain ASCII, so it widens code
// unit by code unit; the host's locale is deliberately not consulted, so that the label
// does not change with the process's settings.
WString Format(const std::tm& calendar) {
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
  char buffer[kLabelCapacity] = {};
  const size_t length = cLocale ? strftime_l(buffer, kLabelCapacity, "%c", &calendar, cLocale)
                                : strftime(buffer, kLabelCapacity, "%c", &calendar);
  const auto* bytes = reinterpret_cast<const unsigned char*>(buffer);
  return WString(bytes, bytes + length);
}

#endif

}  // namespace

WString DateLabel(DATE date) {
  UDATE parts{};
  if (FAILED(VarUdateFromDate(date, 0, &parts))) return WSTR("Invalid DateTime");
  return Format(CalendarOf(parts));
}

}  // namespace tarnix::convert
