#include "common/ProductName.h"

#include "fixtures/CommandLineOverride.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

namespace tarnix {
namespace {

// Each line read in turn in one process, so a name kept from an earlier call shows.
TEST(ProductName, TheOptionNamesTheProductAndOtherwiseTheFirstWord) {
  const struct {
    const WCHAR* commandLine;
    const WCHAR* name;  // null: the default name
  } cases[] = {
      {WSTR("agent.exe --product=\"Acme Desk 7\" -x"), WSTR("Acme Desk 7")},
      {WSTR("agent.exe --product=Acme x"), WSTR("Acme")},
      {WSTR("agent.exe --product   Acme  x"), WSTR("Acme")},
      {WSTR("agent.exe --product\t\r\nAcme\tx"), WSTR("Acme")},
      {WSTR("agent.exe --product\f\bAcme\fx"), WSTR("Acme")},
      {WSTR("agent.exe --product=Acme\bx"), WSTR("Acme")},
      {WSTR("agent.exe --product \"Acme Desk\" x"), WSTR("Acme Desk")},
      {WSTR("agent.exe -v --product=Second"), WSTR("Second")},
      // After "=" nothing is skipped: a blank there leaves the name empty.
      {WSTR("agent.exe --product= Acme"), WSTR("")},
      {WSTR("agent.exe --product="), WSTR("")},
      {WSTR("agent.exe --product=\"\""), WSTR("")},
      // "=" wins over a bare option found earlier on the line.
      {WSTR("a --product x --product=Acme"), WSTR("Acme")},
      // Found inside longer words; case matters.
      {WSTR("agent.exe --productline Acme"), WSTR("line")},
      {WSTR("agent.exe x--product=Acme"), WSTR("Acme")},
      {WSTR("agent.exe --PRODUCT=Acme"), WSTR("agent.exe")},
      // Unreadable values, or the line ending before a value begins.
      {WSTR("agent.exe --product=\"Acme"), nullptr},
      {WSTR("agent.exe --product \"Acme Desk"), nullptr},
      {WSTR("agent.exe --product"), nullptr},
      {WSTR("agent.exe --product  \t "), nullptr},
      // Without the option, the first word.
      {WSTR("\"C:\\Program Files\\Agent\\agent.exe\" -x"),
       WSTR("C:\\Program Files\\Agent\\agent.exe")},
      {WSTR("C:\\Agent\\agent.exe -x"), WSTR("C:\\Agent\\agent.exe")},
      {WSTR("\"C:\\Agent\\agent.exe"), nullptr},
  };
  for (const auto& c : cases) {
    testing::CommandLineOverride line(c.commandLine);
    EXPECT_EQ(GetProductName(), c.name ? WString(c.name) : WString(kDefaultProductName))
        << "command line: " << WideToUtf8(c.commandLine);
  }
}

}  // namespace
}  // namespace tarnix
