#include "convert/Conversion.h"

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

WString Format(const std::tm& calendar) {
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
  WString label;
  label.reserve(length);
  for (size_t i = 0; i < length; ++i) label += static_cast<WCHAR>(static_cast<unsigned char>(buffer[i]));
  return label;
}

#endif

}  // namespace

WString DateLabel(DATE date) {
  UDATE parts{};
  if (FAILED(VarUdateFromDate(date, 0, &parts))) return WSTR("Invalid DateTime");
  return Format(CalendarOf(parts));
}

}  // namespace tarnix::convert
