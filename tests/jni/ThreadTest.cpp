// Host threads entering the real JDK through the bridge.
#include "ProbeClass.h"

#include "convert/ClassTable.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace tarnix::testing;

// What the JVM itself says about the calling thread, not the machine's map.
bool AttachedToJvm(CJavaVM& machine) {
  JNIEnv* env = nullptr;
  return machine.GetJavaVM()->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6) == JNI_OK;
}

using ThreadTest = BridgeTest;

TEST_F(ThreadTest, GuardDetachesEvenWithAJavaExceptionUnread) {
  std::thread([&] {
    {
      auto guard = machine_->AttachForScope();
      ASSERT_TRUE(guard);
      EXPECT_TRUE(AttachedToJvm(*machine_));
      auto probe = probeClass_->NewObject(Probe::ctor);
      ASSERT_TRUE(probe);
      auto message = machine_->NewString(WSTR("left unread"));
      probe->CallVoidMethod(Probe::throwWithFrames, message);
      EXPECT_TRUE(machine_->GetEnv()->ExceptionCheck());
      // Locals made in the scope go before the guard, as declared after it.
    }
    EXPECT_FALSE(AttachedToJvm(*machine_));
    EXPECT_EQ(machine_->GetEnv(), nullptr);
  }).join();
}

TEST_F(ThreadTest, SeveralHostThreadsCallAtOnce) {
  const tarnix::classes::ClassTableRow* metricRow =
      tarnix::classes::FindClassTableRow(tarnix::classes::kBaseMetric);
  auto shared = probeClass_->NewObject(Probe::ctor);
  ASSERT_TRUE(shared);
  constexpr int kThreads = 4;
  constexpr int kRounds = 200;
  std::atomic<int> wrong{0};
  std::atomic<int> stillAttached{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < kRounds; ++round) {
        auto guard = machine_->AttachForScope();
        // Everyone races to load the same class; all get the one cached object.
        auto metric = machine_->LoadClass(metricRow->name, metricRow->methods, metricRow->count);
        if (!metric || metric != machine_->GetClass(metricRow->name)) ++wrong;
        const std::string mine = std::to_string(t) + "/" + std::to_string(round);
        auto text = machine_->NewString(WString(mine.begin(), mine.end()));
        auto value =
            metric ? metric->NewObject(tarnix::methods::BaseMetric::ctorName, text) : nullptr;
        if (value) value->CallVoidMethod(tarnix::methods::BaseMetric::putLongValue, round);
        WString echoed;
        if (!shared->CallStringMethod(Probe::echo, text)->GetText(echoed) ||
            echoed != WString(mine.begin(), mine.end())) {
          ++wrong;
        }
        if (machine_->TakeException()) ++wrong;
      }
      if (AttachedToJvm(*machine_)) ++stillAttached;
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
  EXPECT_EQ(stillAttached.load(), 0);
  EXPECT_NE(machine_->GetEnv(), nullptr);
}

// The objects of one call are local references: another thread gets a Java exception
// instead of a reference into a frame not its own, and one that outlives its thread's
// attachment goes without touching the JVM. A global copy goes anywhere.
TEST_F(ThreadTest, LocalObjectsStayOnTheirThreadAndGlobalCopiesTravel) {
  std::optional<CJavaObject> local = probeClass_->NewLocalObject(Probe::ctor);
  ASSERT_TRUE(local);
  std::shared_ptr<CJavaObject> global = local->MakeGlobal();
  ASSERT_TRUE(global);
  std::thread([&] {
    auto guard = machine_->AttachForScope();
    auto text = machine_->NewString(WSTR("travels"));
    WString answer;
    EXPECT_FALSE(local->CallStringMethod(Probe::echo, text)->GetText(answer));
    const std::optional<WString> failure = machine_->TakeException();
    ASSERT_TRUE(failure);
    EXPECT_EQ(Narrow(*failure).rfind("java.lang.IllegalArgumentException: a local reference of "
                                     "another thread",
                                     0),
              0u)
        << Narrow(*failure);
    ASSERT_TRUE(global->CallStringMethod(Probe::echo, text)->GetText(answer));
    EXPECT_EQ(answer, WSTR("travels"));
    global.reset();

    std::optional<CJavaObject> outlived = probeClass_->NewLocalObject(Probe::ctor);
    ASSERT_TRUE(outlived);
    text.reset();
    guard.reset();
    EXPECT_FALSE(AttachedToJvm(*machine_));
  }).join();
  EXPECT_TRUE(local->CallStringMethod(Probe::answerNull));
  EXPECT_FALSE(machine_->GetEnv()->ExceptionCheck());
}

}  // namespace
