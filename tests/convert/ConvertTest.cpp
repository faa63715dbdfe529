#include "ConvertTest.h"

#include "convert/Conversion.h"
#include "convert/ClassTable.h"

namespace tarnix::testing {

void ConvertTest::SetUp() {
  vm_ = CreateTestMachine();
  ASSERT_TRUE(vm_);
  for (const classes::ClassTableRow& row : classes::kClassTable) {
    ASSERT_TRUE(vm_->LoadClass(row.name, row.methods, row.count)) << row.name;
  }
  control_.emplace(*vm_);
  convertor_.emplace(LoggerRef().Get());
}

void ConvertTest::TearDown() {
  if (vm_) {
    JNIEnv* env = vm_->GetEnv();
    EXPECT_FALSE(env && env->ExceptionCheck()) << "a Java exception was left pending";
    if (env) env->ExceptionClear();
  }
  convertor_.reset();
  control_.reset();
  HostTest::TearDown();
  // The machine goes last: global references of the test's objects are gone by now.
  vm_.reset();
}

std::string ConvertTest::Describe(const std::shared_ptr<CJavaObject>& object) {
  return Java().Describe(object ? object->Get() : nullptr);
}

std::vector<std::string> ConvertTest::Lines(LogOperation operation) {
  std::vector<std::string> lines;
  for (const WString& message : Logger().Messages(operation)) lines.push_back(Narrow(message));
  return lines;
}

std::string ConvertTest::TakeException() {
  return Narrow(vm_->TakeException().value_or(WString()));
}

std::string Label(DATE date) { return Narrow(convert::DateLabel(date)); }

::testing::AssertionResult EndsWithException(const std::string& line, const std::string& fixed,
                                             const std::string& exception) {
  const std::string start = fixed + exception + "\r\n\t";
  if (line.size() > start.size() && line.compare(0, start.size(), start) == 0) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure()
         << "\"" << line << "\" does not begin with \"" << start << "\"";
}

}  // namespace tarnix::testing
