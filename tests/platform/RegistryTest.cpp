// Written through the API and read back, so that one source serves the POSIX hive and
// Wine's registry alike.
#include <gtest/gtest.h>

#include "PlatformTest.h"
#include "platform/RegKey.h"

#include <algorithm>
#include <vector>

using tarnix::RegKey;
using tarnix::test::Wide;

namespace {

class RegistryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = Wide("Software\\tarnix-test\\" + tarnix::test::UniqueName("registry"));
    ASSERT_EQ(key_.Create(HKEY_CURRENT_USER, path_.c_str(), KEY_ALL_ACCESS), ERROR_SUCCESS);
  }
  void TearDown() override {
    key_.Close();
    RegDeleteKeyW(HKEY_CURRENT_USER, (path_ + WSTR("\\empty")).c_str());
    RegDeleteKeyW(HKEY_CURRENT_USER, path_.c_str());
  }

  void Set(const WCHAR* name, DWORD type, const void* data, DWORD size) {
    ASSERT_EQ(RegSetValueExW(key_.Handle(), name, 0, type, static_cast<const BYTE*>(data), size),
              ERROR_SUCCESS);
  }
  // The stored bytes and type, exactly.
  std::vector<BYTE> Read(const WCHAR* name, DWORD* type) {
    std::vector<BYTE> data;
    EXPECT_EQ(key_.ReadRaw(name, &data, type), ERROR_SUCCESS);
    return data;
  }

  WString path_;
  RegKey key_;
};

std::vector<BYTE> Bytes(const void* data, size_t size) {
  const BYTE* p = static_cast<const BYTE*>(data);
  return std::vector<BYTE>(p, p + size);
}

}  // namespace

TEST_F(RegistryTest, ValuesReadBackWithTheirTypeAndBytes) {
  const WCHAR text[] = WSTR("C:\\Program Files\\Agent");
  const WCHAR expandable[] = WSTR("%SystemRoot%\\jre");
  const WCHAR multi[] = WSTR("one\0two\0");
  const DWORD number = 0x12345678;
  Set(WSTR("Text"), REG_SZ, text, sizeof(text));
  Set(WSTR("Expandable"), REG_EXPAND_SZ, expandable, sizeof(expandable));
  Set(WSTR("Multi"), REG_MULTI_SZ, multi, sizeof(multi));
  Set(WSTR("Number"), REG_DWORD, &number, sizeof(number));
  Set(WSTR("Odd"), REG_SZ, "abc", 3);
  Set(WSTR("Unterminated"), REG_SZ, text, sizeof(text) - sizeof(WCHAR));
  Set(nullptr, REG_SZ, text, sizeof(text));

  DWORD type = 0;
  EXPECT_EQ(Read(WSTR("text"), &type), Bytes(text, sizeof(text)));  // names ignore case
  EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
  EXPECT_EQ(Read(WSTR("Expandable"), &type),
            Bytes(expandable, sizeof(expandable)));  // not expanded
  EXPECT_EQ(type, static_cast<DWORD>(REG_EXPAND_SZ));
  EXPECT_EQ(Read(WSTR("Multi"), &type), Bytes(multi, sizeof(multi)));
  EXPECT_EQ(type, static_cast<DWORD>(REG_MULTI_SZ));
  EXPECT_EQ(Read(WSTR("Number"), &type), Bytes(&number, sizeof(number)));
  EXPECT_EQ(type, static_cast<DWORD>(REG_DWORD));
  EXPECT_EQ(Read(WSTR("Odd"), &type), Bytes("abc", 3));
  // Stored without its terminator; Wine hands one back anyway, so only the stored bytes
  // and the text are compared.
  std::vector<BYTE> unterminated = Read(WSTR("Unterminated"), &type);
  ASSERT_GE(unterminated.size(), sizeof(text) - sizeof(WCHAR));
  unterminated.resize(sizeof(text) - sizeof(WCHAR));
  EXPECT_EQ(unterminated, Bytes(text, sizeof(text) - sizeof(WCHAR)));
  EXPECT_EQ(Read(WSTR(""), &type), Bytes(text, sizeof(text)));

  WString read;
  ASSERT_EQ(key_.ReadValue(WSTR("Unterminated"), &read), ERROR_SUCCESS);
  EXPECT_EQ(read, WString(text));
  ASSERT_EQ(key_.ReadValue(WSTR("Expandable"), &read), ERROR_SUCCESS);
  EXPECT_EQ(read, WString(expandable));
  DWORD dword = 0;
  ASSERT_EQ(key_.ReadValueDW(WSTR("Number"), &dword), ERROR_SUCCESS);
  EXPECT_EQ(dword, number);
  std::vector<WString> strings;
  ASSERT_EQ(key_.ReadValues(WSTR("Multi"), &strings), ERROR_SUCCESS);
  EXPECT_EQ(strings, (std::vector<WString>{WSTR("one"), WSTR("two")}));
  EXPECT_EQ(key_.ReadValueDW(WSTR("Text"), &dword), ERROR_INVALID_DATA);
}

TEST_F(RegistryTest, MissingValuesAndShortBuffersAnswerAsWindowsDoes) {
  DWORD type = 0, size = 0;
  EXPECT_EQ(RegQueryValueExW(key_.Handle(), WSTR("Missing"), nullptr, &type, nullptr, &size),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegQueryValueExW(key_.Handle(), nullptr, nullptr, &type, nullptr, &size),
            ERROR_FILE_NOT_FOUND);

  const WCHAR text[] = WSTR("twelve chars");
  Set(WSTR("Text"), REG_SZ, text, sizeof(text));
  BYTE small[4];
  size = sizeof(small);
  EXPECT_EQ(RegQueryValueExW(key_.Handle(), WSTR("Text"), nullptr, &type, small, &size),
            ERROR_MORE_DATA);
  EXPECT_EQ(size, sizeof(text));
  size = 0;
  EXPECT_EQ(RegQueryValueExW(key_.Handle(), WSTR("Text"), nullptr, nullptr, nullptr, &size),
            ERROR_SUCCESS);
  EXPECT_EQ(size, sizeof(text));

  HKEY missing = nullptr;
  EXPECT_EQ(RegOpenKeyExW(key_.Handle(), WSTR("no\\such\\key"), 0, KEY_READ, &missing),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegDeleteValueW(key_.Handle(), WSTR("Missing")), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryTest, EnumerationGivesEachValueOnceWithItsData) {
  const DWORD one = 1, two = 2;
  Set(WSTR("b"), REG_DWORD, &two, sizeof(two));
  Set(WSTR("a"), REG_DWORD, &one, sizeof(one));
  std::vector<std::pair<WString, DWORD>> seen;
  for (DWORD index = 0;; ++index) {
    WCHAR name[261];
    DWORD length = 261, type = 0, value = 0, size = sizeof(value);
    const LONG result = RegEnumValueW(key_.Handle(), index, name, &length, nullptr, &type,
                                      reinterpret_cast<BYTE*>(&value), &size);
    if (result == ERROR_NO_MORE_ITEMS) break;
    ASSERT_EQ(result, ERROR_SUCCESS);
    EXPECT_EQ(length, 1u);
    seen.emplace_back(WString(name), value);
  }
  // The order differs between systems; the content does not.
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<std::pair<WString, DWORD>>{{WSTR("a"), 1}, {WSTR("b"), 2}}));

  // A key without values ends at once.
  RegKey empty;
  ASSERT_EQ(empty.Create(key_.Handle(), WSTR("empty"), KEY_ALL_ACCESS), ERROR_SUCCESS);
  WCHAR name[261];
  DWORD length = 261;
  EXPECT_EQ(RegEnumValueW(empty.Handle(), 0, name, &length, nullptr, nullptr, nullptr, nullptr),
            ERROR_NO_MORE_ITEMS);
}

TEST_F(RegistryTest, KeysOpenRegardlessOfCaseAndRespectTheirAccess) {
  const DWORD one = 1;
  Set(WSTR("Value"), REG_DWORD, &one, sizeof(one));
  WString upper = path_;
  for (WCHAR& c : upper) {
    if (c >= u'a' && c <= u'z') c = static_cast<WCHAR>(c - 32);
  }
  RegKey reader;
  ASSERT_EQ(reader.Open(HKEY_CURRENT_USER, upper.c_str(), KEY_READ), ERROR_SUCCESS);
  DWORD value = 0;
  EXPECT_EQ(reader.ReadValueDW(WSTR("VALUE"), &value), ERROR_SUCCESS);
  EXPECT_EQ(value, one);
  EXPECT_EQ(reader.WriteValue(WSTR("Other"), one), ERROR_ACCESS_DENIED);

  DWORD disposition = 0;
  HKEY again = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, upper.c_str(), 0, nullptr, 0, KEY_READ, nullptr,
                            &again, &disposition),
            ERROR_SUCCESS);
  EXPECT_EQ(disposition, static_cast<DWORD>(REG_OPENED_EXISTING_KEY));
  EXPECT_EQ(RegCloseKey(again), ERROR_SUCCESS);
}
