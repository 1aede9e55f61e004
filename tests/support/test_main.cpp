#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "tests/support/private_machine.h"

namespace {

/// Suites of this name touch nothing of the machine and run without a private one too.
constexpr char pureSuffix[] = "_pure";

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool needsPrivateMachine(const testing::TestSuite& suite) {
    return suite.should_run() && !endsWith(suite.name(), pureSuffix);
}

/// Skips the whole program: no test may touch the machine's real /sys.
class SkipEverything : public testing::Environment {
  public:
    explicit SkipEverything(std::string reason) : reason_(std::move(reason)) {}

    void SetUp() override {
        const testing::UnitTest& tests = *testing::UnitTest::GetInstance();
        for (int i = 0; i < tests.total_test_suite_count(); ++i)
            if (needsPrivateMachine(*tests.GetTestSuite(i)))
                GTEST_SKIP() << "[  SKIPPED ] no private machine: " << reason_;
    }

  private:
    std::string reason_;
};

bool isListing(int count, char** arguments) {
    for (int i = 1; i < count; ++i)
        if (std::strncmp(arguments[i], "--gtest_list_tests", std::strlen("--gtest_list_tests")) ==
            0)
            return true;
    return false;
}

}  // namespace

int main(int count, char** arguments) {
    const std::string reason =
        isListing(count, arguments) ? "" : ZR::test::enterPrivateMachine(arguments);
    testing::InitGoogleTest(&count, arguments);
    testing::GTEST_FLAG(death_test_style) = "fast";
    if (!reason.empty())
        testing::AddGlobalTestEnvironment(new SkipEverything(reason));
    return RUN_ALL_TESTS();
}
