// What only the POSIX layer has: the hive file, built-in classes, the rebuilt command line
// and events shared with another process.
#ifndef _WIN32

#  include <gtest/gtest.h>

#  include "PlatformTest.h"
#  include "platform/ComPtr.h"
#  include "platform/RegKey.h"

#  include <sys/wait.h>
#  include <unistd.h>

#  include <cstdlib>
#  include <fstream>
#  include <sstream>
#  include <vector>

using tarnix::RegKey;
using tarnix::test::ScopedTempDir;
using tarnix::test::Wide;

namespace {

// Points the registry at a hive file for the length of a test.
class HiveFile {
 public:
  explicit HiveFile(const std::string& bytes) : path_((dir_.path() / "hive.reg").string()) {
    Write(bytes);
    setenv(tarnix::posix::kRegistryFileVariable, path_.c_str(), 1);
    skipped_ = tarnix::posix::ReloadRegistry();
  }
  ~HiveFile() {
    unsetenv(tarnix::posix::kRegistryFileVariable);
    tarnix::posix::ReloadRegistry();
  }
  void Write(const std::string& bytes) { std::ofstream(path_, std::ios::binary) << bytes; }
  std::string Read() const {
    std::ifstream in(path_, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }
  size_t skipped() const { return skipped_; }

 private:
  ScopedTempDir dir_;
  std::string path_;
  size_t skipped_ = 0;
};

std::vector<BYTE> Raw(HKEY root, const char* key, const char* value, DWORD* type) {
  RegKey open;
  std::vector<BYTE> data;
  if (open.Open(root, Wide(key).c_str(), KEY_READ) != ERROR_SUCCESS) return data;
  const WString name = value ? Wide(value) : WString();
  *type = REG_NONE;
  std::ignore = open.ReadRaw(value ? name.c_str() : nullptr, &data, type);
  return data;
}

WString Text(HKEY root, const char* key, const char* value) {
  RegKey open;
  WString text;
  if (open.Open(root, Wide(key).c_str(), KEY_READ) == ERROR_SUCCESS) {
    std::ignore = open.ReadValue(value ? Wide(value).c_str() : nullptr, &text);
  }
  return text;
}

std::vector<BYTE> Utf16(const std::u16string& text) {
  std::vector<BYTE> bytes;
  for (char16_t c : text) {
    bytes.push_back(static_cast<BYTE>(c & 0xFF));
    bytes.push_back(static_cast<BYTE>(c >> 8));
  }
  return bytes;
}

const char kHive[] =
    "Windows Registry Editor Version 5.00\r\n"
    "\r\n"
    "; a comment\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Agent]\r\n"
    "@=\"default\"\r\n"
    "\"Path\"=\"C:\\\\Program Files\\\\Agent \\\"quoted\\\"\"\r\n"
    "\"Count\"=dword:0000002a\r\n"
    "\"Blob\"=hex:01,02,ff\r\n"
    "\"Expand\"=hex(2):25,00,41,00,25,00,00,00\r\n"
    "\"Multi\"=hex(7):61,00,00,00,62,00,63,00,00,00,\\\r\n"
    "  00,00\r\n"
    "\"Odd\"=hex(1):61,00,62\r\n"
    "this line means nothing\r\n"
    "\"Broken\"=dword:xyz\r\n"
    "\"Unclosed\"=\"text\r\n"
    "\"Gone\"=\"soon\"\r\n"
    "\"Gone\"=-\r\n"
    "\r\n"
    "[HKEY_NOWHERE\\Key]\r\n"
    "\"Lost\"=\"value\"\r\n"
    "\r\n"
    "[HKEY_CURRENT_USER\\Software\\Old]\r\n"
    "\"x\"=\"y\"\r\n"
    "[-HKEY_CURRENT_USER\\Software\\Old]\r\n"
    "\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Agent\\Empty]\r\n";

}  // namespace

TEST(RegFile, ExportFormatIsReadWithEscapesHexTypesAndContinuations) {
  HiveFile hive(kHive);
  // The nonsense line, the bad dword, the unclosed text, the unknown root and its value.
  EXPECT_EQ(hive.skipped(), 5u);
  const HKEY hklm = HKEY_LOCAL_MACHINE;
  EXPECT_EQ(Text(hklm, "software\\agent", nullptr), WSTR("default"));
  EXPECT_EQ(Text(hklm, "SOFTWARE\\Agent", "Path"), WSTR("C:\\Program Files\\Agent \"quoted\""));
  DWORD type = 0;
  EXPECT_EQ(Raw(hklm, "SOFTWARE\\Agent", "Count", &type), (std::vector<BYTE>{0x2a, 0, 0, 0}));
  EXPECT_EQ(type, static_cast<DWORD>(REG_DWORD));
  EXPECT_EQ(Raw(hklm, "SOFTWARE\\Agent", "Blob", &type), (std::vector<BYTE>{1, 2, 0xff}));
  EXPECT_EQ(type, static_cast<DWORD>(REG_BINARY));
  EXPECT_EQ(Raw(hklm, "SOFTWARE\\Agent", "Expand", &type), Utf16(std::u16string(u"%A%\0", 4)));
  EXPECT_EQ(type, static_cast<DWORD>(REG_EXPAND_SZ));
  EXPECT_EQ(Raw(hklm, "SOFTWARE\\Agent", "Multi", &type), Utf16(std::u16string(u"a\0bc\0\0", 6)));
  EXPECT_EQ(type, static_cast<DWORD>(REG_MULTI_SZ));
  EXPECT_EQ(Raw(hklm, "SOFTWARE\\Agent", "Odd", &type), (std::vector<BYTE>{0x61, 0, 0x62}));
  EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
  EXPECT_TRUE(Raw(hklm, "SOFTWARE\\Agent", "Gone", &type).empty());
  RegKey key;
  EXPECT_EQ(key.Open(HKEY_CURRENT_USER, WSTR("Software\\Old"), KEY_READ), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(key.Open(hklm, WSTR("SOFTWARE\\Agent\\Empty"), KEY_READ), ERROR_SUCCESS);
}

TEST(RegFile, BrokenLinesAreSkippedAndTheGoodOnesStillServed) {
  HiveFile hive(
      "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Broken\r\n"
      "a line without an equals sign\r\n\"unclosed=\"x\r\n\"bad list\"=hex(7):zz,00,\\\r\n"
      "\"bad number\"=dword:nothex\r\n" +
      std::string(1 << 20, '[') +
      "\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Good]\r\n\"v\"=\"kept\"\r\n");
  EXPECT_GT(hive.skipped(), 0u);
  EXPECT_EQ(Text(HKEY_LOCAL_MACHINE, "Software\\Good", "v"), WSTR("kept"));
}

TEST(RegFile, Utf16FilesWithAByteOrderMarkAreRead) {
  const WString text = Wide(
      "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CLASSES_ROOT\\My.Prog\\CLSID]\r\n"
      "@=\"{2D6D321D-3A1D-4BB9-9161-2191D701011D}\"\r\n\"N\xC3\xA4me\"=\"\xE2\x82\xAC\"\r\n");
  std::string bytes = "\xFF\xFE";
  for (WCHAR c : text) {
    bytes.push_back(static_cast<char>(c & 0xFF));
    bytes.push_back(static_cast<char>(c >> 8));
  }
  HiveFile hive(bytes);
  EXPECT_EQ(hive.skipped(), 0u);
  EXPECT_EQ(Text(HKEY_CLASSES_ROOT, "My.Prog\\CLSID", "N\xC3\xA4me"), Wide("\xE2\x82\xAC"));
  // HKEY_CLASSES_ROOT shows HKLM\SOFTWARE\Classes, and ProgIDs are found through it.
  EXPECT_EQ(Text(HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes\\My.Prog\\CLSID", nullptr),
            WSTR("{2D6D321D-3A1D-4BB9-9161-2191D701011D}"));
  CLSID clsid = {};
  ASSERT_EQ(CLSIDFromProgID(WSTR("my.prog"), &clsid), S_OK);
  EXPECT_EQ(clsid.Data1, 0x2D6D321Du);
}

TEST(RegFile, ChangesAreWrittenBackAndReadAgainExactly) {
  HiveFile hive(kHive);
  {
    RegKey key;
    ASSERT_EQ(key.Create(HKEY_CLASSES_ROOT, WSTR("Interface\\{92AFA5E6}\\ProxyStubClsid32"),
                         KEY_ALL_ACCESS),
              ERROR_SUCCESS);
    ASSERT_EQ(key.WriteValue(nullptr, WSTR("{00020424-0000-0000-C000-000000000046}")),
              ERROR_SUCCESS);
    ASSERT_EQ(key.WriteValue(WSTR("Tricky \"name\" \\"), "x\0y", 3, REG_SZ), ERROR_SUCCESS);
    std::vector<BYTE> big(100, 0xAB);
    ASSERT_EQ(key.WriteValue(WSTR("Big"), big.data(), 100, REG_BINARY), ERROR_SUCCESS);
    // A name with an "=" of its own, and data that goes on over several lines.
    ASSERT_EQ(key.WriteValue(WSTR("Size=Big"), big.data(), 100, REG_BINARY), ERROR_SUCCESS);
    RegKey scratch;
    ASSERT_EQ(
        scratch.Create(HKEY_CURRENT_USER, WSTR("Volatile"), KEY_ALL_ACCESS, REG_OPTION_VOLATILE),
        ERROR_SUCCESS);
    ASSERT_EQ(scratch.WriteValue(WSTR("v"), 1), ERROR_SUCCESS);
  }
  const std::string saved = hive.Read();
  EXPECT_NE(saved.find(
                "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\Interface\\{92AFA5E6}\\ProxyStubClsid32]\n"
                "@=\"{00020424-0000-0000-C000-000000000046}\""),
            std::string::npos)
      << saved;
  EXPECT_EQ(saved.find("Volatile"), std::string::npos) << saved;
  const std::string before = tarnix::posix::RegistryText();

  // Read the file back: the same hive, byte for byte, volatile keys gone.
  EXPECT_EQ(tarnix::posix::ReloadRegistry(), 0u);
  EXPECT_EQ(tarnix::posix::RegistryText(), before);
  DWORD type = 0;
  const auto stored = [&type](const char* name) {
    return Raw(HKEY_CLASSES_ROOT, "Interface\\{92AFA5E6}\\ProxyStubClsid32", name, &type);
  };
  EXPECT_EQ(stored("Tricky \"name\" \\"), (std::vector<BYTE>{'x', 0, 'y'}));
  EXPECT_EQ(stored("Big").size(), 100u);
  EXPECT_EQ(stored("Size=Big").size(), 100u);
  EXPECT_EQ(Raw(HKEY_LOCAL_MACHINE, "SOFTWARE\\Agent", "Multi", &type),
            Utf16(std::u16string(u"a\0bc\0\0", 6)));
  RegKey gone;
  EXPECT_EQ(gone.Open(HKEY_CURRENT_USER, WSTR("Volatile"), KEY_READ), ERROR_FILE_NOT_FOUND);
}

namespace {

const CLSID kBuiltin = {
    0x88D96A05, 0xF192, 0x11D4, {0xA6, 0x5F, 0x00, 0x50, 0xDA, 0x2D, 0x17, 0x01}};

}  // namespace

TEST(BuiltinClass, IsCreatableByProgIdWithoutRegistrationAndSurvivesAReload) {
  static const auto factory = tarnix::host::MakeHostObject<tarnix::test::CountingFactory>();
  ASSERT_EQ(tarnix::posix::RegisterBuiltinClass(kBuiltin, WSTR("Test.Builtin.1"), factory.Get()),
            S_OK);
  for (int round = 0; round < 2; ++round) {
    CLSID clsid = {};
    ASSERT_EQ(CLSIDFromProgID(WSTR("Test.Builtin.1"), &clsid), S_OK);
    EXPECT_TRUE(IsEqualCLSID(clsid, kBuiltin));
    tarnix::ComPtr<IUnknown> object;
    ASSERT_EQ(CoCreateInstance(clsid, nullptr, 0x17, IID_IUnknown, object.ReceiveVoid()), S_OK);
    EXPECT_EQ(object.Get(), factory->product.Get());
    tarnix::posix::ReloadRegistry();
  }
  // Never saved into a hive file.
  EXPECT_EQ(tarnix::posix::RegistryText().find("Test.Builtin.1"), std::string::npos);
}

TEST(CommandLine, ArgumentsAreQuotedTheWindowsWay) {
  ScopedTempDir dir;
  const std::string out = (dir.path() / "line.txt").string();
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    setenv("TARNIX_COMMAND_LINE_OUT", out.c_str(), 1);
    execl("/proc/self/exe", "platform test", "--gtest_filter=CommandLineChild.*", "a b", "plain",
          "q\"uote", "", "tail\\", "sp ace\\", static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  ASSERT_EQ(WEXITSTATUS(status), 0);
  std::ifstream in(out);
  std::string line;
  std::getline(in, line);
  EXPECT_EQ(
      line,
      "\"platform test\" --gtest_filter=CommandLineChild.* \"a b\" plain \"q\\\"uote\" \"\" tail\\ "
      "\"sp ace\\\\\"");
}

// Run by the test above in a process of its own; does nothing otherwise.
TEST(CommandLineChild, WritesTheCommandLine) {
  const char* out = std::getenv("TARNIX_COMMAND_LINE_OUT");
  if (!out) GTEST_SKIP() << "only run as a child of CommandLine.ArgumentsAreQuotedTheWindowsWay";
  std::ofstream(out) << tarnix::WideToUtf8(GetCommandLineW()) << "\n";
}

TEST(Event, AnotherProcessCanOpenAndSetANamedEvent) {
  const WString name = Wide(tarnix::test::UniqueName("tarnix-shared"));
  HANDLE event = CreateEventW(nullptr, FALSE, FALSE, name.c_str());
  ASSERT_NE(event, nullptr);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    HANDLE opened = OpenEventW(EVENT_MODIFY_STATE, FALSE, name.c_str());
    _exit(opened && SetEvent(opened) ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(WaitForSingleObject(event, 5000), static_cast<DWORD>(WAIT_OBJECT_0));
  CloseHandle(event);
}

TEST(CodePage, AnsiCodePagesAreUtf8) {
  for (UINT codePage : {UINT(CP_ACP), UINT(CP_THREAD_ACP), UINT(CP_OEMCP)}) {
    char narrow[8];
    const WCHAR wide[] = {0xE9, 0};
    ASSERT_EQ(WideCharToMultiByte(codePage, 0, wide, -1, narrow, 8, nullptr, nullptr), 3);
    EXPECT_STREQ(narrow, "\xC3\xA9");
  }
}

#endif  // _WIN32
