// The operations behind CRMIConfigLoader's two exports. Like the exports they keep no
// state: each call reads the registry (and the document it is given) afresh, and holds a
// logger and the host's system information only while it runs.
#pragma once

#include "platform/Win32.h"

#include <vector>

namespace tarnix {

// The "serverConfigRegistry" entry of the configuration document in `config` (its text,
// or a DOM document object). 0: found, `*text` is the entry's text. 1: `config` is text
// but not XML, and `*text` is that text as it stands. A document without the entry gives
// 0x80070490 (element not found), anything that is neither text nor a document 0x80004005.
[[nodiscard]] HRESULT FindServerConfigRegistry(VARIANT config, BSTR* text);

// The legacy value's pieces, split at every "|".
std::vector<WString> SplitLegacyValue(const WString& value);

// "Software\Policies\Corvane, Inc.\<product>\Desktop Agent", for this process's product.
WString PolicyKeyPath();

// The server from the legacy value "Zelmar Server URL" (or, failing that, the policy
// key's "MessageServerURL"): url|certificate, or url|serviceValue|...|certificate.
[[nodiscard]] LONG LoadLegacyServerInfo(WCHAR** url, WCHAR** serviceValue, WCHAR** certificate);

// The server from the "MessageServerURL" and "AdapterCertificate" values of the key named
// by `keyPath`; outputs are written only once both are found.
[[nodiscard]] LONG LoadKeyServerInfo(WCHAR* keyPath, WCHAR** url, WCHAR** serviceValue,
                                     WCHAR** certificate);

// Where the message server's configuration was found. The legacy lookup reads the policy
// key's URL as a legacy value when "Zelmar Server URL" is missing, and then wins over the
// policy key itself, certificate or not.
enum class ServerInfoSource { None, LegacyValue, PolicyUrlAsLegacyValue, XmlNamedKey, PolicyKey };

// CRMIConfigLoader::GetConfigContent: the entry's text as a VT_BSTR copied into `*content`.
[[nodiscard]] LONG CopyConfigContent(VARIANT config, VARIANT* content);

// CRMIConfigLoader::GetServerInfo, naming in `*source` (when given) the source whose
// answer is returned: None when every source failed.
[[nodiscard]] LONG LookUpServerInfo(VARIANT config, WCHAR** url, WCHAR** serviceValue,
                                    WCHAR** certificate, ServerInfoSource* source);

}  // namespace tarnix
