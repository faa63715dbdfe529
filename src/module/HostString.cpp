#include "module/HostString.h"

#include "common/HResultError.h"

namespace tarnix {

HostString::HostString(const WCHAR* text) {
  if (!text) return;
  WithResultCodes([&] { text_.emplace(text); });
}

}  // namespace tarnix
