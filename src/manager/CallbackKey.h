#pragma once

#include "common/HResultError.h"
#include "platform/Win32.h"

#include <tuple>

namespace tarnix {

// The three strings of a manager call. They name the message server a call is meant for,
// and the host registers its callbacks under them.
struct CallbackKey {
  WString serverUrl;
  WString secondValue;
  WString certificate;

  // A null string is held as empty. A copy that cannot be made throws HResultError.
  static CallbackKey From(const WCHAR* serverUrl, const WCHAR* secondValue,
                          const WCHAR* certificate) {
    return WithResultCodes([&] {
      return CallbackKey{CopyOrEmpty(serverUrl), CopyOrEmpty(secondValue),
                         CopyOrEmpty(certificate)};
    });
  }
  static WString CopyOrEmpty(const WCHAR* text) {
    return WithResultCodes([text] { return text ? WString(text) : WString(); });
  }

  // Code unit by code unit, first string first: no locale and no case folding, so two
  // keys are the same key only when the host passed the same texts.
  friend bool operator<(const CallbackKey& a, const CallbackKey& b) {
    return std::tie(a.serverUrl, a.secondValue, a.certificate) <
           std::tie(b.serverUrl, b.secondValue, b.certificate);
  }
  friend bool operator==(const CallbackKey& a, const CallbackKey& b) {
    return std::tie(a.serverUrl, a.secondValue, a.certificate) ==
           std::tie(b.serverUrl, b.secondValue, b.certificate);
  }
};

}  // namespace tarnix
