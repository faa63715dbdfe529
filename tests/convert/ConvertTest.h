// Converters on the real JVM with the stand-in data model loaded as start-up loads it,
// fake host objects, and the recording logger. Every fake made in a test must be gone
// when it ends, and the client's secrets never reach a log line in any test.
#pragma once

#include "JvmTestSupport.h"

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
  void SetUp() override;
  void TearDown() override;

  CJavaVM& Vm() { return *vm_; }
  std::shared_ptr<CJavaVM> VmRef() { return vm_; }
  const CJNIConvertor& Convertor() { return *convertor_; }
  JavaControl& Java() { return *control_; }

  // Text.of() of the object: its data-model description, "null" for none.
  std::string Describe(const std::shared_ptr<CJavaObject>& object);
  // The messages of one operation, narrowed.
  std::vector<std::string> Lines(LogOperation operation);
  // The pending exception's text, cleared; empty when none was pending.
  std::string TakeException();

 private:
  std::shared_ptr<CJavaVM> vm_;
  std::optional<JavaControl> control_;
  std::optional<CJNIConvertor> convertor_;
};

// The date label of `date` as the converters write it.
std::string Label(DATE date);

// Matches a logged line that ends in a Java exception's text: the fixed part, then the
// exception's toString() and at least one frame.
::testing::AssertionResult EndsWithException(const std::string& line, const std::string& fixed,
                                             const std::string& exception);

}  // namespace tarnix::testing
