// Registry paths as the XML configuration names them: split into root and subkey, then
// every value of the key read, over a small fixed hive.
#include "FuzzSupport.h"

#include "config/RegistryRead.h"

namespace {

const char kHive[] =
    "Windows Registry Editor Version 5.00\n"
    "\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Policies\\Corvane, Inc.\\Lumetra Operations for Published "
    "Apps\\Desktop Agent]\n"
    "\"MessageServerURL\"=\"rmi://127.0.0.1:1099/MessageServer\"\n"
    "\"AdapterCertificate\"=hex(7):4d,00,49,00,49,00,00,00,41,00,42,00,00,00,00,00\n"
    "\"Interval\"=dword:0000003c\n"
    "\"Raw\"=hex:01,02,03\n"
    "\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\Tarnix.Config]\n"
    "@=\"class\"\n"
    "\"Odd\"=hex(1):41,00,42\n"
    "\"Short\"=hex(4):01,02\n"
    "\n"
    "[HKEY_CURRENT_USER\\Software\\Tarnix\\Server]\n"
    "\"MessageServerURL\"=\"rmi://server.example.com:1099/x\"\n"
    "\"AdapterCertificate\"=\"-----BEGIN CERTIFICATE-----\"\n"
    "\n"
    "[HKEY_USERS\\.DEFAULT\\Software\\Tarnix]\n"
    "\"Empty\"=hex(7):\n";

struct RootName {
  const WCHAR* name;
  HKEY root;
};
const RootName kRoots[] = {
    {WSTR("HKEY_CLASSES_ROOT"), HKEY_CLASSES_ROOT},
    {WSTR("HKEY_CURRENT_USER"), HKEY_CURRENT_USER},
    {WSTR("HKEY_LOCAL_MACHINE"), HKEY_LOCAL_MACHINE},
    {WSTR("HKEY_USERS"), HKEY_USERS},
    {WSTR("HKEY_PERFORMANCE_DATA"), HKEY_PERFORMANCE_DATA},
    {WSTR("HKEY_PERFORMANCE_TEXT"), HKEY_PERFORMANCE_TEXT},
    {WSTR("HKEY_PERFORMANCE_NLSTEXT"), HKEY_PERFORMANCE_NLSTEXT},
};

// The path is the root's name and the subkey, put back together.
void CheckSplit(const WString& path, const tarnix::RegistryPath& parsed) {
  for (const RootName& candidate : kRoots) {
    const WString name = candidate.name;
    if (path.compare(0, name.size(), name) == 0) {
      FUZZ_CHECK(parsed.root == candidate.root);
      FUZZ_CHECK(name + parsed.subkey == path);
      return;
    }
  }
  FUZZ_CHECK(parsed.root == HKEY_LOCAL_MACHINE);
  FUZZ_CHECK(parsed.subkey == path);
}

void CheckValues(HRESULT hr, const tarnix::RegistryValues& values) {
  if (FAILED(hr)) {
    FUZZ_CHECK((static_cast<uint32_t>(hr) & 0xFFFF0000u) == 0x80070000u);  // a registry error
    FUZZ_CHECK(values.empty());
    return;
  }
  for (const auto& [name, value] : values) {
    const VARTYPE vt = value.type();
    FUZZ_CHECK(vt == VT_BSTR || vt == VT_UI4 || vt == (VT_ARRAY | VT_BSTR));
    FUZZ_CHECK(vt != VT_BSTR || value.Get().bstrVal != nullptr);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  FUZZ_CHECK(tarnix::fuzz::LoadHive(kHive) == 0);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  WString path = tarnix::fuzz::WideFromBytes(data, size);
  // The path arrives as a zero-terminated string.
  path.resize(std::char_traits<WCHAR>::length(path.c_str()));
  const tarnix::RegistryPath parsed = tarnix::ParseRegistryPath(path.c_str());
  CheckSplit(path, parsed);

  tarnix::RegistryValues values;
  CheckValues(tarnix::ReadKeyValues(parsed.root, parsed.subkey.c_str(), &values), values);
  return 0;
}
