// Where the message server is, end to end: the registry as each build has it, the real DOM
// and the "serverConfigRegistry" entry read through it, and a fake host for the logger and
// the machine's unique id.
#include <gtest/gtest.h>

#include "config/ServerConfig.h"
#include "fixtures/CommandLineOverride.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"
#include "platform/WideText.h"
#include "platform/XmlDom.h"
#include "tarnix/RMICommManager.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace tarnix::testing {
namespace {

const HRESULT kNotFound = static_cast<HRESULT>(0x80070490);
const WString kLegacyKey = WSTR("Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager");
const WString kLegacyValue = WSTR("Zelmar Server URL");
const WString kPolicyKey = WSTR("Software\\Policies\\Corvane, Inc.\\TarnixTest\\Desktop Agent");
const WString kNamedKey = WSTR("Software\\Tarnix Tests\\Xml Named");
const WString kUrl = WSTR("MessageServerURL");
const WString kCertificate = WSTR("AdapterCertificate");

// Each failure line names the loader's function as the host's readers know it.
const std::string kInLegacy =
    " in function long __cdecl CRMIConfigLoader::loadLegancyServerInfo(wchar_t **,wchar_t **,"
    "wchar_t **)";
const std::string kInCommon =
    " in function long __cdecl CRMIConfigLoader::loadCommonServerInfo(wchar_t *,wchar_t **,"
    "wchar_t **,wchar_t **)";
const std::string kInGet =
    " in function long __cdecl CRMIConfigLoader::GetServerInfo(struct tagVARIANT,wchar_t **,"
    "wchar_t **,wchar_t **)";
const std::string kLegacyFailed = "Failed to get the message server configuration" + kInLegacy;
const std::string kLegacySystemFailed = "Failed to get system service" + kInLegacy;
const std::string kReadKeyFailed = "Failed to read Policy key's attributes" + kInCommon;
const std::string kUrlMissing = "Failed to read Adapter URL" + kInCommon;
const std::string kCertificateMissing = "Failed to read Adapter Certificate" + kInCommon;
const std::string kCommonSystemFailed = "Failed to get system service" + kInCommon;
const std::string kXmlSourceFailed = "Failed to load server config" + kInGet;
const std::string kPolicySourceFailed = "Failed to load legancy server config" + kInGet;

// "<prefix>  Error code 0x%08lx", with the system's text or the full stop after it.
std::string WithCode(const std::string& prefix, uint32_t code) {
  char digits[16];
  std::snprintf(digits, sizeof(digits), "%08x", static_cast<unsigned>(code));
  return prefix + "  Error code 0x" + digits;
}

// A document of the real DOM, loaded with the text.
ComPtr<IXMLDOMDocument> Document(const WString& xml) {
  CLSID clsid;
  EXPECT_EQ(CLSIDFromProgID(kXmlDomProgId, &clsid), S_OK);
  ComPtr<IXMLDOMDocument> document;
  EXPECT_EQ(CoCreateInstance(clsid, nullptr, 0x17, IID_IXMLDOMDocument, document.ReceiveVoid()),
            S_OK);
  ScopedBstr text(xml.c_str());
  VARIANT_BOOL loaded = VARIANT_FALSE;
  EXPECT_EQ(document->loadXML(text.Get(), &loaded), S_OK);
  return document;
}

// FindServerConfigRegistry's result, and the text as "<null>" or the text itself.
using Found = std::pair<HRESULT, std::string>;
Found Find(const VARIANT& config) {
  ScopedBstr text;
  const HRESULT hr = FindServerConfigRegistry(config, text.Receive());
  return {hr, text.Get() ? WideToUtf8(text.Text()) : "<null>"};
}
Found Find(const WString& text) { return Find(ScopedVariant(text.c_str()).Get()); }

// The three outputs, each primed with a marker so that an output left alone shows.
class Outputs {
 public:
  Outputs() : marker_(WSTR("<untouched>")) { url = serviceValue = certificate = marker_.Get(); }
  ~Outputs() {
    for (BSTR value : {url, serviceValue, certificate}) {
      if (value != marker_.Get()) SysFreeString(value);
    }
  }

  std::string Url() const { return Text(url); }
  std::string ServiceValue() const { return Text(serviceValue); }
  std::string Certificate() const { return Text(certificate); }

  BSTR url, serviceValue, certificate;

 private:
  std::string Text(BSTR value) const {
    if (value == marker_.Get()) return "<untouched>";
    return value ? WideToUtf8(WString(value, SysStringLen(value))) : "<null>";
  }
  ScopedBstr marker_;
};

class ServerInfo : public HostTest {
 protected:
  ServerInfo() : product_(WSTR("x --product=TarnixTest")) {
    SystemInfo().SetUniqueId(WSTR("unique-1"));
    // Keys the tests write are removed first, whatever an earlier run left.
    registry_.Own(HKEY_LOCAL_MACHINE, kLegacyKey);
    registry_.Own(HKEY_LOCAL_MACHINE, kPolicyKey);
    registry_.Own(HKEY_LOCAL_MACHINE, kNamedKey);
  }

  LONG GetServerInfo(const VARIANT& config, Outputs* out) {
    return CRMIConfigLoader::GetServerInfo(config, &out->url, &out->serviceValue,
                                           &out->certificate);
  }
  LONG GetServerInfo(const WString& configText, Outputs* out) {
    ScopedVariant config(configText.c_str());
    return GetServerInfo(config.Get(), out);
  }

  void SetMultiString(const WString& key, const WString& name, const std::vector<WString>& parts) {
    WString joined;
    for (const WString& part : parts) joined += part + WCHAR();
    std::vector<BYTE> data;
    for (WCHAR c : joined + WCHAR()) data.insert(data.end(), {BYTE(c & 0xFF), BYTE(c >> 8)});
    registry_.SetRaw(HKEY_LOCAL_MACHINE, key, name, REG_MULTI_SZ, data);
  }

  // Each line as "E: text", "I: text"...
  std::vector<std::string> Lines() {
    std::vector<std::string> lines;
    for (const auto& line : Logger().Lines()) {
      const char* kind = line.operation == LogOperation::Error  ? "E: "
                         : line.operation == LogOperation::Info ? "I: "
                                                                : "?: ";
      lines.push_back(kind + WideToUtf8(line.message));
    }
    return lines;
  }
  void ExpectLines(const std::vector<std::string>& starts) {
    const std::vector<std::string> lines = Lines();
    ASSERT_EQ(lines.size(), starts.size()) << Logger().Dump();
    for (size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(lines[i].substr(0, starts[i].size()), starts[i]) << Logger().Dump();
    }
  }

  TestRegistry registry_;

 private:
  CommandLineOverride product_;
};

TEST_F(ServerInfo, LegacyValueOfOneToFourPiecesAsksTheHostOnlyBelowThree) {
  struct Case {
    const WCHAR* value;
    const char *url, *serviceValue, *certificate;
    int uniqueIdCalls;
  } const cases[] = {
      {WSTR("https://u/x"), "https://u/x", "unique-1", "<untouched>", 1},
      {WSTR("https://u/x|cert"), "https://u/x", "unique-1", "cert", 1},
      {WSTR("https://u/x|svc|cert"), "https://u/x", "svc", "cert", 0},
      {WSTR("https://u/x|svc|ignored|cert"), "https://u/x", "svc", "cert", 0},
      {WSTR("|svc||"), "", "svc", "", 0},
  };
  for (const Case& c : cases) {
    registry_.SetString(HKEY_LOCAL_MACHINE, kLegacyKey, kLegacyValue, c.value);
    Logger().Clear();
    const int callsBefore = SystemInfo().Calls(SystemInfoSlot::UniqueId);
    Outputs out;
    EXPECT_EQ(GetServerInfo(WSTR("<c/>"), &out), S_OK) << WideToUtf8(c.value);
    EXPECT_EQ(out.Url(), c.url);
    EXPECT_EQ(out.ServiceValue(), c.serviceValue);
    EXPECT_EQ(out.Certificate(), c.certificate);
    EXPECT_EQ(SystemInfo().Calls(SystemInfoSlot::UniqueId) - callsBefore, c.uniqueIdCalls);
    ExpectLines({"I: Using message server '" + std::string(c.url) + "'."});
  }
}

// A stand-in for a configuration object that counts every use the component makes of it.
class UntouchableConfig : public HostObject<IUnknown> {
 public:
  UntouchableConfig() : HostObject("UntouchableConfig") {}
};

TEST_F(ServerInfo, AnExistingLegacyValueEndsTheLookupEvenWithoutCertificate) {
  registry_.SetString(HKEY_LOCAL_MACHINE, kLegacyKey, kLegacyValue, WSTR("https://legacy"));
  registry_.SetString(HKEY_LOCAL_MACHINE, kPolicyKey, kCertificate, WSTR("policy cert"));
  auto config = MakeHostObject<UntouchableConfig>();
  const ULONG addRefsBefore = config->AddRefCalls();
  ScopedVariant holder;
  holder.SetUnknown(config.Get());

  Outputs out;
  EXPECT_EQ(GetServerInfo(holder.Get(), &out), S_OK);
  EXPECT_EQ(out.Url(), "https://legacy");
  EXPECT_EQ(out.Certificate(), "<untouched>");
  // SetUnknown's own reference is the only one ever taken.
  EXPECT_EQ(config->AddRefCalls() - addRefsBefore, 1u);
}

TEST_F(ServerInfo, LegacyLookupFallsBackToThePolicyUrlAndTreatsEmptyValuesAsMissing) {
  registry_.SetString(HKEY_LOCAL_MACHINE, kLegacyKey, kLegacyValue, WSTR(""));
  registry_.SetString(HKEY_LOCAL_MACHINE, kPolicyKey, kUrl, WSTR("https://policy|svc|cert"));
  Outputs out;
  EXPECT_EQ(GetServerInfo(WSTR("<c/>"), &out), S_OK);
  EXPECT_EQ(out.Url(), "https://policy");
  EXPECT_EQ(out.ServiceValue(), "svc");
  EXPECT_EQ(out.Certificate(), "cert");
  ExpectLines({"I: Using message server 'https://policy'."});

  // Both empty: the legacy source fails and says so; so does everything after it.
  registry_.SetString(HKEY_LOCAL_MACHINE, kPolicyKey, kUrl, WSTR(""));
  Logger().Clear();
  Outputs none;
  EXPECT_EQ(LoadLegacyServerInfo(&none.url, &none.serviceValue, &none.certificate),
            static_cast<LONG>(0x8007000D));
  EXPECT_EQ(none.Url(), "<untouched>");
  ExpectLines({"E: " + WithCode(kLegacyFailed, 0x8007000D)});
}

TEST_F(ServerInfo, DocumentWithoutTheEntryLeadsStraightToThePolicyKey) {
  // A list-typed URL is no string for the legacy lookup, but the policy key reads it.
  SetMultiString(kPolicyKey, kUrl, {WSTR("https://policy"), WSTR("/path")});
  SetMultiString(kPolicyKey, kCertificate,
                 {WSTR("-----BEGIN-----"), WSTR("MIIB"), WSTR("-----END-----")});
  Outputs out;
  EXPECT_EQ(GetServerInfo(WSTR("<config><other>Software\\X</other></config>"), &out), S_OK);
  EXPECT_EQ(out.Url(), "https://policy/path");
  EXPECT_EQ(out.Certificate(), "-----BEGIN-----MIIB-----END-----");
  EXPECT_EQ(out.ServiceValue(), "unique-1");
  ExpectLines({"E: " + WithCode(kLegacyFailed, 0x8007000D)});
}

TEST_F(ServerInfo, DocumentEntryNamesTheKeyAsTextAsObjectOrAsPlainPath) {
  registry_.SetString(HKEY_LOCAL_MACHINE, kNamedKey, kUrl, WSTR("https://named"));
  registry_.SetString(HKEY_LOCAL_MACHINE, kNamedKey, kCertificate, WSTR("named cert"),
                      REG_EXPAND_SZ);
  const WString xml = WSTR(
      "<config><a><serverConfigRegistry>Software\\<k>Tarnix Tests</k>\\"
      "Xml Named</serverConfigRegistry></a></config>");
  ComPtr<IXMLDOMDocument> document = Document(xml);
  ASSERT_TRUE(document);

  std::vector<ScopedVariant> configs;
  configs.emplace_back(xml.c_str());
  configs.emplace_back(WSTR("Software\\Tarnix Tests\\Xml Named"));
  configs.emplace_back().SetUnknown(document.Get());
  for (const ScopedVariant& config : configs) {
    const VARIANT before = config.Get();
    document->AddRef();
    const ULONG referencesBefore = document->Release();
    Logger().Clear();
    Outputs out;
    EXPECT_EQ(GetServerInfo(config.Get(), &out), S_OK) << "vt " << before.vt;
    EXPECT_EQ(out.Url(), "https://named");
    EXPECT_EQ(out.Certificate(), "named cert");
    EXPECT_EQ(out.ServiceValue(), "unique-1");
    ExpectLines({"E: " + WithCode(kLegacyFailed, 0x80070002)});
    // The caller's value is neither changed nor freed.
    EXPECT_EQ(0, std::memcmp(&before, &config.Get(), sizeof(VARIANT)));
    if (before.vt == VT_BSTR) {
      EXPECT_GT(SysStringLen(before.bstrVal), 0u);
    }
    document->AddRef();
    EXPECT_EQ(document->Release(), referencesBefore);
  }
}

TEST_F(ServerInfo, FailingNamedKeyIsLoggedAndThePolicyKeyDecides) {
  SetMultiString(kPolicyKey, kUrl, {WSTR("https://policy")});
  registry_.SetString(HKEY_LOCAL_MACHINE, kPolicyKey, kCertificate, WSTR("policy cert"));
  Outputs out;
  EXPECT_EQ(GetServerInfo(WSTR("Software\\Tarnix Tests\\No Such Key"), &out), S_OK);
  EXPECT_EQ(out.Url(), "https://policy");
  ExpectLines({"E: " + WithCode(kLegacyFailed, 0x8007000D),
               "E: " + WithCode(kReadKeyFailed, 0x80070002),
               "E: " + WithCode(kXmlSourceFailed, 0x80070002)});

  // A root name leaves its backslash on the subkey, which the registry refuses.
  Logger().Clear();
  Outputs rooted;
  EXPECT_EQ(GetServerInfo(WSTR("HKEY_LOCAL_MACHINE\\") + kPolicyKey, &rooted), S_OK);
  ExpectLines({"E: ", "E: " + kReadKeyFailed, "E: "});
  // A caller that asks for no unique id gets the key's values alone.
  WString path = kPolicyKey;
  Outputs noId;
  EXPECT_EQ(LoadKeyServerInfo(&path[0], &noId.url, nullptr, &noId.certificate), S_OK);
  EXPECT_EQ(noId.Url(), "https://policy");
}

TEST_F(ServerInfo, PolicyKeyNeedsBothValuesBeforeWritingAny) {
  SetMultiString(kPolicyKey, kUrl, {WSTR("https://policy")});
  registry_.CreateKey(HKEY_LOCAL_MACHINE, kNamedKey);
  WString path = kPolicyKey;
  Outputs out;
  EXPECT_EQ(LoadKeyServerInfo(&path[0], &out.url, &out.serviceValue, &out.certificate),
            static_cast<LONG>(E_FAIL));
  EXPECT_EQ(out.Url(), "<untouched>");
  EXPECT_EQ(out.Certificate(), "<untouched>");
  EXPECT_EQ(out.ServiceValue(), "<untouched>");
  // The missing-value lines carry no result code.
  EXPECT_EQ(Lines(), std::vector<std::string>{"E: " + kCertificateMissing});

  // Names count only as spelled: a URL value in another case is no URL.
  registry_.SetString(HKEY_LOCAL_MACHINE, kNamedKey, WSTR("messageserverurl"), WSTR("https://n"));
  registry_.SetString(HKEY_LOCAL_MACHINE, kNamedKey, kCertificate, WSTR("c"));
  Logger().Clear();
  path = kNamedKey;
  EXPECT_EQ(LoadKeyServerInfo(&path[0], &out.url, &out.serviceValue, &out.certificate),
            static_cast<LONG>(E_FAIL));
  EXPECT_EQ(Lines(), std::vector<std::string>{"E: " + kUrlMissing});

  // Every source failing: the last one's code, each failure on its own line, no output.
  Logger().Clear();
  EXPECT_EQ(GetServerInfo(
                WSTR("<c><serverConfigRegistry>") + kNamedKey + WSTR("</serverConfigRegistry></c>"),
                &out),
            static_cast<LONG>(E_FAIL));
  EXPECT_EQ(out.Url(), "<untouched>");
  ExpectLines({"E: " + WithCode(kLegacyFailed, 0x8007000D), "E: " + kUrlMissing,
               "E: " + WithCode(kXmlSourceFailed, 0x80004005), "E: " + kCertificateMissing,
               "E: " + WithCode(kPolicySourceFailed, 0x80004005)});
}

TEST_F(ServerInfo, ResultsAreTheSameWithoutALogger) {
  registry_.SetString(HKEY_LOCAL_MACHINE, kLegacyKey, kLegacyValue, WSTR("https://legacy|c"));
  SystemInfo().Fail(SystemInfoSlot::UniqueId, S_FALSE);
  Outputs logged;
  EXPECT_EQ(GetServerInfo(WSTR("<c/>"), &logged), S_FALSE);
  EXPECT_EQ(logged.ServiceValue(), "unique-1");

  // Without a logger the closing line cannot be written, and the host is told success.
  Service().Withdraw(IID_IHostLogger);
  Logger().Clear();
  Outputs unlogged;
  EXPECT_EQ(GetServerInfo(WSTR("<c/>"), &unlogged), S_OK);
  EXPECT_EQ(unlogged.Url(), "https://legacy");
  EXPECT_EQ(unlogged.ServiceValue(), "unique-1");
  EXPECT_EQ(Logger().Count(), 0u);
}

TEST_F(ServerInfo, WithoutSystemInformationEverySourceFailsAndSaysWhy) {
  registry_.SetString(HKEY_LOCAL_MACHINE, kLegacyKey, kLegacyValue, WSTR("https://legacy|c"));
  Service().Withdraw(IID_ISystemInfo);
  Outputs out;
  const LONG hr = GetServerInfo(WSTR("not a path"), &out);
  EXPECT_EQ(hr, static_cast<LONG>(0x80070002));
  // What the legacy source wrote before it failed stays.
  EXPECT_EQ(out.Url(), "https://legacy");
  EXPECT_EQ(out.Certificate(), "c");
  EXPECT_EQ(out.ServiceValue(), "<untouched>");
  ExpectLines({"E: " + kLegacySystemFailed + "  ", "E: " + kReadKeyFailed, "E: " + kXmlSourceFailed,
               "E: " + kReadKeyFailed, "E: " + WithCode(kPolicySourceFailed, 0x80070002)});

  // The policy key found, the unique id still cannot be asked for: the service's own code.
  registry_.SetString(HKEY_LOCAL_MACHINE, kPolicyKey, kCertificate, WSTR("policy cert"));
  SetMultiString(kPolicyKey, kUrl, {WSTR("https://policy")});
  Logger().Clear();
  Service().ScriptCreate({E_ACCESSDENIED});
  WString path = kPolicyKey;
  Outputs policy;
  EXPECT_EQ(LoadKeyServerInfo(&path[0], &policy.url, &policy.serviceValue, &policy.certificate),
            static_cast<LONG>(E_ACCESSDENIED));
  EXPECT_EQ(policy.Url(), "https://policy");
  ExpectLines({"E: " + WithCode(kCommonSystemFailed, 0x80070005)});
}

TEST_F(ServerInfo, HostileConfigurationGetsDefinedAnswers) {
  const WString longUrl = WSTR("https://") + WString(100000, WCHAR('u'));
  registry_.SetString(HKEY_LOCAL_MACHINE, kPolicyKey, kUrl, longUrl + WSTR("|s|c"));
  Outputs out;
  EXPECT_EQ(GetServerInfo(WSTR("<c/>"), &out), S_OK);
  EXPECT_EQ(SysStringLen(out.url), longUrl.size());

  // No source at all: every configuration shape ends in a failure code, never a crash.
  registry_.SetString(HKEY_LOCAL_MACHINE, kPolicyKey, kUrl, WSTR(""));
  const WString configs[] = {
      WSTR("<config><serverConfigRegistry>"),
      WSTR("<config><serverConfigRegistry>") + WString(70000, WCHAR('k')) +
          WSTR("</serverConfigRegistry></config>"),
      WString(70000, WCHAR('\\')),
  };
  for (const WString& config : configs) {
    Logger().Clear();
    Outputs failed;
    EXPECT_LT(GetServerInfo(config, &failed), 0) << config.size();
    EXPECT_EQ(failed.Url(), "<untouched>") << config.size();
  }
}

TEST_F(ServerInfo, TextIsReadAsADocumentOrElseTakenAsThePathItself) {
  EXPECT_EQ(Find(WSTR("<c><serverConfigRegistry>Software\\X</serverConfigRegistry></c>")),
            Found(S_OK, "Software\\X"));
  EXPECT_EQ(Find(WSTR("<c><serverConfigRegistry/></c>")), Found(S_OK, ""));
  EXPECT_EQ(Find(WSTR("HKEY_LOCAL_MACHINE\\Software\\Corvane, Inc.\\Server")),
            Found(S_FALSE, "HKEY_LOCAL_MACHINE\\Software\\Corvane, Inc.\\Server"));
  EXPECT_EQ(Find(WSTR("<c><serverConfigRegistry>unclosed")),
            Found(S_FALSE, "<c><serverConfigRegistry>unclosed"));
  EXPECT_EQ(Find(WSTR("")), Found(S_FALSE, ""));

  // Loaded, but no entry: a failure of its own, so the caller moves on.
  EXPECT_EQ(Find(WSTR("<c><other>Software\\X</other></c>")), Found(kNotFound, "<null>"));

  // Other values become text first: a number is a path, VT_EMPTY an empty one.
  ScopedVariant number(LONG(42));
  EXPECT_EQ(Find(number.Get()), Found(S_FALSE, "42"));
  EXPECT_EQ(Find(ScopedVariant().Get()), Found(S_FALSE, ""));
}

TEST_F(ServerInfo, DocumentObjectWithoutEntryFailsAndOtherObjectsAreRefused) {
  auto empty = Document(WSTR("<c/>"));
  ScopedVariant emptyDocument;
  emptyDocument.SetUnknown(empty.Get());
  EXPECT_EQ(Find(emptyDocument.Get()), Found(kNotFound, "<null>"));

  auto other = MakeHostObject<UntouchableConfig>();
  ScopedVariant object;
  object.SetUnknown(other.Get());
  EXPECT_EQ(Find(object.Get()), Found(E_FAIL, "<null>"));
  object.Reset();
  // Every reference the lookup took on the object was given back.
  EXPECT_EQ(other->RefCount(), 1u);

  VARIANT odd = {};
  odd.vt = VT_NULL;
  EXPECT_EQ(Find(odd), Found(E_FAIL, "<null>"));
  odd.vt = VT_UNKNOWN;  // and no object
  EXPECT_EQ(Find(odd).first, E_FAIL);
}

TEST_F(ServerInfo, ConfigContentIsTheEntryAsBstrAndLeavesTheCallersValueAlone) {
  // A plain path comes back as it is, the copy's result (success) being the answer; a
  // failure is answered as it is, with the output untouched.
  const struct {
    const WCHAR* config;
    HRESULT hr;
    const char* content;
  } cases[] = {
      {WSTR("<c><serverConfigRegistry>Software\\Content</serverConfigRegistry></c>"), S_OK,
       "Software\\Content"},
      {WSTR("Software\\Plain"), S_OK, "Software\\Plain"},
      {WSTR("<c/>"), kNotFound, "<untouched>"},
  };
  for (const auto& c : cases) {
    ScopedVariant config(c.config);
    const VARIANT before = config.Get();
    ScopedVariant content(WSTR("<untouched>"));
    EXPECT_EQ(
        CRMIConfigLoader::GetConfigContent(config.Get(), const_cast<VARIANT*>(&content.Get())),
        c.hr);
    ASSERT_EQ(content.type(), VT_BSTR);
    EXPECT_EQ(WideToUtf8(WString(content.Get().bstrVal, SysStringLen(content.Get().bstrVal))),
              c.content);
    EXPECT_EQ(0, std::memcmp(&before, &config.Get(), sizeof(VARIANT)));
    EXPECT_EQ(WString(config.Get().bstrVal, SysStringLen(config.Get().bstrVal)), c.config);
  }
}

}  // namespace
}  // namespace tarnix::testing
