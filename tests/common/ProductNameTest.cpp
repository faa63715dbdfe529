#include "common/ProductName.h"

#include "fixtures/CommandLineOverride.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

namespace tarnix {
namespace {

using testing::CommandLineOverride;

struct Case {
  const WCHAR* commandLine;
  const WCHAR* name;  // null: the default name
};

void ExpectNames(std::initializer_list<Case> cases) {
  for (const Case& c : cases) {
    CommandLineOverride line(c.commandLine);
    const WString expected = c.name ? c.name : kDefaultProductName;
    EXPECT_EQ(GetProductName(), expected) << "command line: " << WideToUtf8(c.commandLine);
  }
}

TEST(ProductName, TheOptionNamesTheProduct) {
  ExpectNames({
      {WSTR("agent.exe --product=\"Acme Desk 7\" -x"), WSTR("Acme Desk 7")},
      {WSTR("agent.exe --product=Acme x"), WSTR("Acme")},
      {WSTR("agent.exe --product   Acme  x"), WSTR("Acme")},
      {WSTR("agent.exe --product\t\r\nAcme\tx"), WSTR("Acme")},
      {WSTR("agent.exe --product\f\bAcme\fx"), WSTR("Acme")},
      {WSTR("agent.exe --product=Acme\bx"), WSTR("Acme")},
      {WSTR("agent.exe --product \"Acme Desk\" x"), WSTR("Acme Desk")},
      {WSTR("agent.exe -v --product=Acme"), WSTR("Acme")},
      // After "=" nothing is skipped: a blank there leaves the name empty.
      {WSTR("agent.exe --product= Acme"), WSTR("")},
      {WSTR("agent.exe --product="), WSTR("")},
      {WSTR("agent.exe --product=\"\""), WSTR("")},
      // "=" wins over a bare option found earlier on the line.
      {WSTR("a --product x --product=Acme"), WSTR("Acme")},
  });
}

TEST(ProductName, TheOptionIsFoundInsideLongerWordsAndCaseMatters) {
  ExpectNames({
      {WSTR("agent.exe --productline Acme"), WSTR("line")},
      {WSTR("agent.exe x--product=Acme"), WSTR("Acme")},
      {WSTR("agent.exe --PRODUCT=Acme"), WSTR("agent.exe")},
  });
}

TEST(ProductName, UnreadableValuesGiveTheDefaultName) {
  ExpectNames({
      {WSTR("agent.exe --product=\"Acme"), nullptr},
      {WSTR("agent.exe --product \"Acme Desk"), nullptr},
      // The line ends before a value begins.
      {WSTR("agent.exe --product"), nullptr},
      {WSTR("agent.exe --product  \t "), nullptr},
  });
}

TEST(ProductName, WithoutTheOptionTheFirstWordIsTaken) {
  ExpectNames({
      {WSTR("\"C:\\Program Files\\Agent\\agent.exe\" -x"),
       WSTR("C:\\Program Files\\Agent\\agent.exe")},
      {WSTR("C:\\Agent\\agent.exe -x"), WSTR("C:\\Agent\\agent.exe")},
      {WSTR("\"C:\\Agent\\agent.exe"), nullptr},
  });
}

TEST(ProductName, EveryCallReadsTheCommandLineAgain) {
  {
    CommandLineOverride line(WSTR("agent.exe --product=First"));
    EXPECT_EQ(GetProductName(), WSTR("First"));
  }
  {
    CommandLineOverride line(WSTR("agent.exe --product=Second"));
    EXPECT_EQ(GetProductName(), WSTR("Second"));
  }
}

}  // namespace
}  // namespace tarnix
