#include "manager/RemoteFailure.h"

bool IsRemoteFailureText(const WString& text) {
  static const WCHAR* const kMarkers[] = {WSTR("rmiURLContext"), WSTR("java.rmi."),
                                          WSTR("java.security.cert.")};
  for (const WCHAR* marker : kMarkers) {
    if (text.find(marker) != WString::npos) return true;
  }
  return false;
}
