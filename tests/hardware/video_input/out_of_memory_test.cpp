#include <memory>
#include <string>
#include <utility>

#include "tests/hardware/video_input/capture_board.h"
#include "tests/support/substitutes/operator_new_substitute.h"

// Where there is no memory: nothing is raised, and what needs none goes on.

namespace ZR::test {
namespace {

using Input = ZRGstreamerVideoInput;

class CaptureOutOfMemory : public CaptureTest {
  protected:
    CaptureOutOfMemory() { CaptureCallLog::recording = false; }

    ~CaptureOutOfMemory() override {
        OperatorNewSubstitute::failNext = false;
        CaptureCallLog::recording = true;
    }

    /// Runs @p operation again and again, each time with a later allocation refused, until one is
    /// left alone; @p judge looks at what each left. Returns how many were refused.
    template <typename Operation, typename Judge>
    static std::size_t refuseEachAllocation(Operation operation, Judge judge) {
        for (std::size_t refused = 0;; ++refused) {
            OperatorNewSubstitute::allowedBefore = refused;
            OperatorNewSubstitute::failNext = true;
            EXPECT_NO_THROW(operation()) << refused;
            const bool wasLeftAlone = std::exchange(OperatorNewSubstitute::failNext, false);
            if (wasLeftAlone)
                return refused;
            judge(refused);
        }
    }
};

/// No text has memory of its own any more, so that each needs some again.
void forgetTexts() {
    for (int i = 0; i < Input::inputCount; ++i) {
        std::string().swap(Input::videoDevices[i]);
        std::string().swap(Input::videoSubDevices[i]);
    }
    std::string().swap(Input::twName);
    std::string().swap(Input::advName);
}

int descriptorOf(const std::string& path) {
    const auto found = Devices::paths.find(path);
    return found == Devices::paths.end() ? -1 : found->second;
}

/// Whether all that is kept of an input's decoder is there.
bool isDecoderWhole(const std::string& name, int input) {
    return !name.empty() && descriptorOf(Input::videoSubDevices[input]) > 0;
}

void expectOpenedWhatWasFound(std::size_t refused) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Input::fileDescriptors[i], descriptorOf(Input::videoDevices[i])) << refused;
        EXPECT_EQ(Input::fileDescriptorsSub[i], descriptorOf(Input::videoSubDevices[i])) << refused;
    }
    EXPECT_EQ(Input::fileDescriptors[2], Input::fileDescriptors[0]) << refused;
    EXPECT_EQ(Input::fileDescriptorsSub[2], Input::fileDescriptorsSub[0]) << refused;
}

TEST_F(CaptureOutOfMemory, discovery_raises_nothing_and_opens_what_it_has_found) {
    Media::entities[1].name = "tw9912 of a long name";
    Media::entities[4].name = "adv7180 of a long name";
    const std::size_t refused = refuseEachAllocation(
        [] {
            forgetTexts();
            Input::initialSetupPending = true;
            Input::doInitialSetup();
        },
        [](std::size_t each) {
            EXPECT_FALSE(Input::initialSetupPending) << each;
            expectOpenedWhatWasFound(each);
            EXPECT_TRUE(isDecoderWhole(Input::twName, 0) || isDecoderWhole(Input::advName, 1))
                << "one entity without room ended the walk at " << each;
        });
    EXPECT_GT(refused, 10U);
    expectOpenedWhatWasFound(refused);
}

TEST_F(CaptureOutOfMemory, a_device_tree_that_does_not_fit_keeps_the_routing) {
    setDeviceTree(treeText(quadTree));
    OperatorNewSubstitute::failNext = true;
    Input::doInitialSetup();
    EXPECT_FALSE(OperatorNewSubstitute::failNext) << "no memory was needed";
    EXPECT_FALSE(Input::runningOnQuadCore);
    EXPECT_EQ(Input::advName, "adv7180 2-0021");
}

/// An object of Qt that gets no memory ends the process by itself: what Qt asks for is granted.
class InstanceOutOfMemory : public CaptureOutOfMemory {
  protected:
    InstanceOutOfMemory() {
        Input::doInitialSetup();
        OperatorNewSubstitute::spared = "libQt5";
    }

    ~InstanceOutOfMemory() override { OperatorNewSubstitute::spared = nullptr; }

    const std::string name_ = "an input with a long name";
};

TEST_F(InstanceOutOfMemory, getInstance_returns_null_and_keeps_nothing) {
    Input::busThreadLaunched = true;
    const Input* made = nullptr;
    const std::size_t refused = refuseEachAllocation([&] { made = Input::getInstance(name_); },
                                                     [&](std::size_t each) {
                                                         EXPECT_EQ(made, nullptr) << each;
                                                         EXPECT_TRUE(Input::instances.empty());
                                                     });
    // The object, its name, the key and the entry of the map.
    EXPECT_GE(refused, 3U);
    EXPECT_NE(made, nullptr);
    EXPECT_EQ(Input::getInstance(name_), made);
}

TEST_F(InstanceOutOfMemory, a_start_up_thread_without_room_is_started_by_the_next_object) {
    bool threadWasRefused = false;
    for (std::size_t allowed = 0; !threadWasRefused && allowed < 20; ++allowed) {
        Input::instances.clear();
        OperatorNewSubstitute::allowedBefore = allowed;
        OperatorNewSubstitute::failNext = true;
        const Input* const made = Input::getInstance(name_);
        OperatorNewSubstitute::failNext = false;
        EXPECT_FALSE(Input::busThreadLaunched) << allowed;
        threadWasRefused = made != nullptr;
    }
    EXPECT_TRUE(threadWasRefused);
    EXPECT_NE(Input::getInstance("next"), nullptr);
    EXPECT_TRUE(Input::busThreadLaunched);
}

TEST_F(CaptureOutOfMemory, what_could_not_be_set_up_is_set_up_by_the_next_start) {
    Input::doInitialSetup();
    for (int input = 0; input < Input::inputCount; ++input) {
        std::unique_ptr<OpenInput> object;
        const std::size_t refused = refuseEachAllocation(
            [&] {
                const bool fails = std::exchange(OperatorNewSubstitute::failNext, false);
                object = std::make_unique<OpenInput>();
                OperatorNewSubstitute::failNext = fails;
                object->setupCameraInput(input);
            },
            [&](std::size_t each) {
                CaptureCallLog::recording = true;
                (void)takeCalls();
                object->applyDetectedVideoStandard(input);
                EXPECT_EQ(calls().size(), 3U) << input << " at " << each;
                CaptureCallLog::recording = false;
            });
        // The records of both inputs that share a decoder, or the one of input 1, and the text.
        EXPECT_EQ(refused, input == 1 ? 2U : 3U) << input;
    }
}

TEST_F(CaptureOutOfMemory, a_record_that_cannot_be_made_is_made_by_the_next_start) {
    Input::doInitialSetup();
    CaptureCallLog::recording = true;
    (void)takeCalls();
    OpenInput input;
    OperatorNewSubstitute::failNext = true;
    input.applyDetectedVideoStandard(1);
    EXPECT_FALSE(OperatorNewSubstitute::failNext) << "no memory was needed";
    EXPECT_EQ(calls(), Calls{});
    input.applyDetectedVideoStandard(1);
    EXPECT_EQ(calls().size(), 3U);
}

}  // namespace
}  // namespace ZR::test
