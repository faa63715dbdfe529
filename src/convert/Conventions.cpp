#include "convert/Conversion.h"

namespace tarnix::convert {
namespace {

// 100-nanosecond ticks from 1601-01-01 to 1970-01-01.
constexpr ULONGLONG kUnixEpochTicks = 116444736000000000ULL;
constexpr ULONGLONG kTicksPerSecond = 10000000ULL;

void LogStringFailure(const HostLog& log, CJavaVM& vm, WStringView text, TextInLog visibility) {
  const WString exception = vm.TakeException().value_or(WString());
  if (visibility == TextInLog::Hidden) {
    log.Error(WSTR("Failed to create a new Java string.  %s"), exception);
  } else if (log.HasLogger()) {
    log.Error(WSTR("Failed to create a new Java string for %s.  %s"), WString(text), exception);
  }
}

}  // namespace

// One return of one object, so that the string is made where the caller keeps it.
LocalString GetJavaString(const HostLog& log, CJavaVM& vm, WStringView text, TextInLog visibility) {
  LocalString string = vm.NewLocalString(text);
  if (!string) LogStringFailure(log, vm, text, visibility);
  return string;
}

ULONGLONG ToJavaTime(DATE date) {
  // A date the platform refuses leaves the calendar time zeroed, which converts to no
  // ticks at all: a defined (if odd) answer instead of stack garbage.
  SYSTEMTIME calendar{};
  VariantTimeToSystemTime(date, &calendar);
  FILETIME ticks{};
  SystemTimeToFileTime(&calendar, &ticks);
  const ULONGLONG count =
      (static_cast<ULONGLONG>(ticks.dwHighDateTime) << 32) | ticks.dwLowDateTime;
  return (count - kUnixEpochTicks) / kTicksPerSecond;
}

void Conversion::LookUp(DataClass which) {
  const size_t index = static_cast<size_t>(which);
  classes_[index] = vm_.GetClass(classes::kClassTable[index].name);
  looked_[index] = true;
}

void Conversion::LogWithException(const WCHAR* format) {
  const std::optional<WString> exception = TakeException();
  log_.Error(format, exception ? *exception : WString());
}

WString Conversion::TimeLabelOf(IHostSample* source) {
  DATE time = 0;
  if (source) source->get_time(&time);
  return log_.HasLogger() ? DateLabel(time) : WString();
}

}  // namespace tarnix::convert
