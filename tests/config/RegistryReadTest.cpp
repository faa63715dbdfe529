// The registry reads of the server configuration, against the real registry (Wine's under
// the Windows build, the hive file natively).
#include <gtest/gtest.h>

#include "config/RegistryRead.h"
#include "fixtures/TestRegistry.h"
#include "platform/RegKey.h"
#include "platform/ScopedSafeArray.h"
#include "platform/WideText.h"

#include <fstream>
#include <vector>

namespace tarnix::testing {
namespace {

const WString kKey = WSTR("Software\\Tarnix Tests\\Registry Read");

std::vector<WString> Strings(const VARIANT& value) {
  EXPECT_EQ(value.vt, VT_ARRAY | VT_BSTR);
  std::vector<WString> strings;
  ScopedSafeArrayAccess<BSTR> elements(value.parray);
  for (BSTR element : elements) strings.emplace_back(element, SysStringLen(element));
  return strings;
}

WString Text(const VARIANT& value) {
  EXPECT_EQ(value.vt, VT_BSTR);
  return value.vt == VT_BSTR ? WString(value.bstrVal, SysStringLen(value.bstrVal)) : WString();
}

// Writes string data exactly as given, without the terminator the registry API adds when
// the character after the data is zero. The key must exist.
void WriteUnterminated(const WString& name, DWORD type, DWORD bytes) {
  const WCHAR data[] = {'a', 'b', 'c', 'd'};
  RegKey key;
  ASSERT_EQ(key.Open(HKEY_LOCAL_MACHINE, kKey.c_str(), KEY_ALL_ACCESS), ERROR_SUCCESS);
  ASSERT_EQ(key.WriteValue(name.c_str(), data, bytes, type), ERROR_SUCCESS);
}

TEST(RegistryPath, RootNamesCountOnlyAtTheStartAndKeepTheRestAsItStands) {
  struct Case {
    const WCHAR* path;
    HKEY root;
    const WCHAR* subkey;
  } const cases[] = {
      {WSTR("HKEY_CLASSES_ROOT\\CLSID"), HKEY_CLASSES_ROOT, WSTR("\\CLSID")},
      {WSTR("HKEY_CURRENT_USER\\Software\\X"), HKEY_CURRENT_USER, WSTR("\\Software\\X")},
      {WSTR("HKEY_LOCAL_MACHINE\\Software"), HKEY_LOCAL_MACHINE, WSTR("\\Software")},
      {WSTR("HKEY_USERS\\.DEFAULT"), HKEY_USERS, WSTR("\\.DEFAULT")},
      {WSTR("HKEY_PERFORMANCE_DATA"), HKEY_PERFORMANCE_DATA, WSTR("")},
      {WSTR("HKEY_PERFORMANCE_TEXT\\x"), HKEY_PERFORMANCE_TEXT, WSTR("\\x")},
      {WSTR("HKEY_PERFORMANCE_NLSTEXT\\x"), HKEY_PERFORMANCE_NLSTEXT, WSTR("\\x")},
      // A prefix match, however the name goes on.
      {WSTR("HKEY_USERSX\\y"), HKEY_USERS, WSTR("X\\y")},
      // Anywhere but the start, in another case, or abbreviated: a subkey of the machine.
      {WSTR("Software\\HKEY_CURRENT_USER\\X"), HKEY_LOCAL_MACHINE,
       WSTR("Software\\HKEY_CURRENT_USER\\X")},
      {WSTR(" HKEY_CURRENT_USER\\X"), HKEY_LOCAL_MACHINE, WSTR(" HKEY_CURRENT_USER\\X")},
      {WSTR("hkey_current_user\\X"), HKEY_LOCAL_MACHINE, WSTR("hkey_current_user\\X")},
      {WSTR("HKCU\\X"), HKEY_LOCAL_MACHINE, WSTR("HKCU\\X")},
      {WSTR(""), HKEY_LOCAL_MACHINE, WSTR("")},
  };
  for (const Case& c : cases) {
    const RegistryPath parsed = ParseRegistryPath(c.path);
    EXPECT_EQ(parsed.root, c.root) << WideToUtf8(c.path);
    EXPECT_EQ(parsed.subkey, WString(c.subkey)) << WideToUtf8(c.path);
  }
  EXPECT_EQ(ParseRegistryPath(nullptr).root, HKEY_LOCAL_MACHINE);
}

TEST(ReadMachineString, AcceptsOnlyWholeTerminatedStrings) {
  TestRegistry registry;
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WSTR("plain"), WSTR("https://server/x"));
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WSTR("expand"), WSTR("%SystemRoot%\\x"),
                     REG_EXPAND_SZ);
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WSTR("empty"), WSTR(""));
  registry.SetRaw(HKEY_LOCAL_MACHINE, kKey, WSTR("two"), REG_SZ, {'a', 0, 0, 0, 'b', 0, 0, 0});
  registry.SetDword(HKEY_LOCAL_MACHINE, kKey, WSTR("number"), 42);
  registry.SetRaw(HKEY_LOCAL_MACHINE, kKey, WSTR("multi"), REG_MULTI_SZ, {'a', 0, 0, 0, 0, 0});
  WriteUnterminated(WSTR("odd"), REG_SZ, 3);
  WriteUnterminated(WSTR("unterminated"), REG_SZ, 4);
  WriteUnterminated(WSTR("unterminated expand"), REG_EXPAND_SZ, 6);
  WriteUnterminated(WSTR("no data"), REG_SZ, 0);

  WString text = WSTR("untouched");
  EXPECT_EQ(ReadMachineString(kKey.c_str(), WSTR("plain"), &text), S_OK);
  EXPECT_EQ(text, WSTR("https://server/x"));
  EXPECT_EQ(ReadMachineString(kKey.c_str(), WSTR("expand"), &text), S_OK);
  EXPECT_EQ(text, WSTR("%SystemRoot%\\x"));
  EXPECT_EQ(ReadMachineString(kKey.c_str(), WSTR("empty"), &text), S_OK);
  EXPECT_EQ(text, WSTR(""));
  EXPECT_EQ(ReadMachineString(kKey.c_str(), WSTR("two"), &text), S_OK);
  EXPECT_EQ(text, WSTR("a"));

  const WCHAR* const invalid[] = {
      WSTR("number"), WSTR("multi"), WSTR("odd"), WSTR("unterminated"), WSTR("unterminated expand"),
      WSTR("no data")};
  for (const WCHAR* name : invalid) {
    text = WSTR("untouched");
    EXPECT_EQ(ReadMachineString(kKey.c_str(), name, &text), static_cast<HRESULT>(0x8007000D))
        << WideToUtf8(name);
    EXPECT_EQ(text, WSTR("untouched"));
  }
  EXPECT_EQ(ReadMachineString(kKey.c_str(), WSTR("missing"), &text),
            static_cast<HRESULT>(0x80070002));
  EXPECT_EQ(ReadMachineString(WSTR("Software\\Tarnix Tests\\No Such Key"), WSTR("plain"), &text),
            static_cast<HRESULT>(0x80070002));
}

TEST(ReadKeyValues, ConvertsStringsNumbersAndListsAndLeavesOtherTypesOut) {
  TestRegistry registry;
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WSTR("messageServerUrl"), WSTR("https://s/x"));
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WSTR("expand"), WSTR("%TEMP%"), REG_EXPAND_SZ);
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WSTR(""), WSTR("default"));
  registry.SetDword(HKEY_LOCAL_MACHINE, kKey, WSTR("number"), 0xFFFFFFFEu);
  registry.SetRaw(HKEY_LOCAL_MACHINE, kKey, WSTR("short number"), REG_DWORD, {1, 2, 3});
  registry.SetRaw(HKEY_LOCAL_MACHINE, kKey, WSTR("binary"), REG_BINARY, {1, 2});
  registry.SetRaw(HKEY_LOCAL_MACHINE, kKey, WSTR("qword"), 11, {1, 0, 0, 0, 0, 0, 0, 0});
  // "ab", "c", then an empty string that ends the list before "ignored".
  registry.SetRaw(HKEY_LOCAL_MACHINE, kKey, WSTR("multi"), REG_MULTI_SZ,
                  {'a', 0, 'b', 0, 0, 0, 'c', 0, 0, 0, 0, 0, 'i', 0, 0, 0, 0, 0});
  registry.SetRaw(HKEY_LOCAL_MACHINE, kKey, WSTR("empty multi"), REG_MULTI_SZ, {0, 0});
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WString(260, WCHAR('n')), WSTR("longest"));
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WString(261, WCHAR('m')), WSTR("too long"));
#ifndef _WIN32
  // A name with a zero inside, which only the hive file can hold: it is listed whole but
  // cannot be read by that name, and the walk goes on past it.
  std::ofstream(registry.FilePath(), std::ios::app) << "\n[HKEY_LOCAL_MACHINE\\" << WideToUtf8(kKey)
                                                    << "]\n\"x" << '\0' << "y\"=\"unreadable\"\n";
  ASSERT_EQ(tarnix::posix::ReloadRegistry(), 0u);
#endif
  registry.SetString(HKEY_LOCAL_MACHINE, kKey, WSTR("zzz after the long names"), WSTR("kept"));

  RegistryValues values;
  ASSERT_EQ(ReadKeyValues(HKEY_LOCAL_MACHINE, kKey.c_str(), &values), S_OK);
  // The registry finds names in any case; the map keeps each as the registry spells it.
  EXPECT_EQ(Text(values[WSTR("messageServerUrl")].Get()), WSTR("https://s/x"));
  EXPECT_EQ(values.count(WSTR("MessageServerURL")), 0u);
  EXPECT_EQ(Text(values[WSTR("expand")].Get()), WSTR("%TEMP%"));
  EXPECT_EQ(Text(values[WSTR("")].Get()), WSTR("default"));
  EXPECT_EQ(values[WSTR("number")].Get().vt, VT_UI4);
  EXPECT_EQ(values[WSTR("number")].Get().ulVal, 0xFFFFFFFEu);
  EXPECT_EQ(Strings(values[WSTR("multi")].Get()), (std::vector<WString>{WSTR("ab"), WSTR("c")}));
  EXPECT_TRUE(Strings(values[WSTR("empty multi")].Get()).empty());
  EXPECT_EQ(Text(values[WString(260, WCHAR('n'))].Get()), WSTR("longest"));
  EXPECT_EQ(Text(values[WSTR("zzz after the long names")].Get()), WSTR("kept"));
  for (const WString& absent :
       {WString(WSTR("short number")), WString(WSTR("binary")), WString(WSTR("qword")),
        WString(261, WCHAR('m')), WString(WSTR("x\0y"), 3)}) {
    EXPECT_EQ(values.count(absent), 0u) << WideToUtf8(absent);
  }
}

TEST(ReadKeyValues, AKeyWithoutValuesIsEmptyAndAMissingKeyFails) {
  TestRegistry registry;
  registry.CreateKey(HKEY_LOCAL_MACHINE, kKey);
  RegistryValues values;
  EXPECT_EQ(ReadKeyValues(HKEY_LOCAL_MACHINE, kKey.c_str(), &values), S_OK);
  EXPECT_TRUE(values.empty());
  EXPECT_EQ(ReadKeyValues(HKEY_LOCAL_MACHINE, WSTR("Software\\Tarnix Tests\\Missing"), &values),
            static_cast<HRESULT>(0x80070002));
  // The leading backslash a root name leaves behind is handed to the registry as it is.
  EXPECT_LT(ReadKeyValues(HKEY_LOCAL_MACHINE, (WSTR("\\") + kKey).c_str(), &values), 0);
}

}  // namespace
}  // namespace tarnix::testing
