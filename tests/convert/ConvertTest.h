// Converters on the real JVM with the stand-in data model loaded as start-up loads it,
// fake host objects, and the recording logger. Every fake made in a test must be gone
// when it ends, and the client's secrets never reach a log line in any test.
#pragma once

#include "JvmTestSupport.h"

#include "convert/ClassTable.h"
#include "convert/Conversion.h"
#include "convert/JNIConvertor.h"
#include "fixtures/FakeDataObjects.h"
#include "fixtures/HostTest.h"
#include "fixtures/Secrets.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tarnix::testing {

// OLE dates used throughout: 2000-01-01 00:00:00 and 1970-01-01 00:00:00.
inline constexpr DATE kYear2000 = 36526.0;
inline constexpr DATE kUnixEpoch = 25569.0;
// A host failure code no step of the component produces itself.
inline constexpr HRESULT kHostFailure = static_cast<HRESULT>(0x80041234);

class ConvertTest : public HostTest {
 protected:
  void SetUp() override {
    vm_ = CreateTestMachine();
    ASSERT_TRUE(vm_);
    for (const classes::ClassTableRow& row : classes::kClassTable) {
      ASSERT_TRUE(vm_->LoadClass(row.name, row.methods, row.count)) << row.name;
    }
    control_.emplace(*vm_);
    convertor_.emplace(LoggerRef().Get());
  }
  void TearDown() override {
    if (JNIEnv* env = vm_ ? vm_->GetEnv() : nullptr) {
      EXPECT_FALSE(env->ExceptionCheck()) << "a Java exception was left pending";
      env->ExceptionClear();
    }
    convertor_.reset();
    control_.reset();
    HostTest::TearDown();
    // The machine goes last: global references of the test's objects are gone by now.
    vm_.reset();
  }

  CJavaVM& Vm() { return *vm_; }
  std::shared_ptr<CJavaVM> VmRef() { return vm_; }
  const CJNIConvertor& Convertor() { return *convertor_; }
  JavaControl& Java() { return *control_; }

  // Text.of() of the object: its data-model description, "null" for none.
  std::string Describe(const std::shared_ptr<CJavaObject>& object) {
    return Java().Describe(object ? object->Get() : nullptr);
  }
  // The messages of one operation, narrowed.
  std::vector<std::string> Lines(LogOperation operation) {
    std::vector<std::string> lines;
    for (const WString& message : Logger().Messages(operation)) lines.push_back(Narrow(message));
    return lines;
  }
  // The pending exception's text, cleared; empty when none was pending.
  std::string TakeException() { return Narrow(vm_->TakeException().value_or(WString())); }

 private:
  std::shared_ptr<CJavaVM> vm_;
  std::optional<JavaControl> control_;
  std::optional<CJNIConvertor> convertor_;
};

// The date label of `date` as the converters write it.
inline std::string Label(DATE date) { return Narrow(convert::DateLabel(date)); }

// Matches a logged line that ends in a Java exception's text: the fixed part, then the
// exception's toString() and at least one frame.
inline ::testing::AssertionResult EndsWithException(const std::string& line,
                                                    const std::string& fixed,
                                                    const std::string& exception) {
  const std::string start = fixed + exception + "\r\n\t";
  if (line.size() > start.size() && line.compare(0, start.size(), start) == 0) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure()
         << "\"" << line << "\" does not begin with \"" << start << "\"";
}

}  // namespace tarnix::testing
