// Where there is no memory. The kernel's part needs none here: a device of one entity.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/media.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <memory>

#include "mediactl/mediactl.h"
#include "tests/support/substitutes/operator_new_substitute.h"

namespace {

constexpr unsigned int onlyEntity = 1;

int enumEntities(media_entity_desc& description) {
    if ((description.id & ~MEDIA_ENT_ID_FLAG_NEXT) >= onlyEntity) {
        errno = EINVAL;
        return -1;
    }
    description = {};
    description.id = onlyEntity;
    // Longer than the texts that need no memory.
    std::strcpy(description.name, "an entity of a simulated device");
    description.type = MEDIA_ENT_T_V4L2_SUBDEV;
    description.pads = 2;
    description.links = 1;
    description.dev = {81, 7};
    return 0;
}

int enumLinks(const media_links_enum& wanted) {
    wanted.links[0] = {};
    wanted.links[0].source.entity = onlyEntity;
    wanted.links[0].sink.entity = onlyEntity;
    return 0;
}

}  // namespace

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    std::va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    switch (request) {
        case MEDIA_IOC_DEVICE_INFO:
            return 0;
        case MEDIA_IOC_ENUM_ENTITIES:
            return enumEntities(*static_cast<media_entity_desc*>(argument));
        case MEDIA_IOC_ENUM_LINKS:
            return enumLinks(*static_cast<media_links_enum*>(argument));
        default:
            return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    }
}

namespace ZR::test {
namespace {

struct UnrefDevice {
    void operator()(media_device* media) const { media_device_unref(media); }
};

// A node that can be opened anywhere; its path is longer than the texts that need no memory.
constexpr char node[] = "/dev/../dev/../dev/../dev/null";

/// Runs @p function with 0, 1, 2, ... allocations that succeed, until it needs no more; how often it
/// was refused one.
template <typename Function>
int refusals(Function function) {
    int refused = 0;
    for (std::size_t allowed = 0;; ++allowed) {
        OperatorNewSubstitute::allowedBefore = allowed;
        OperatorNewSubstitute::failNext = true;
        function();
        if (OperatorNewSubstitute::failNext)
            break;
        ++refused;
    }
    OperatorNewSubstitute::failNext = false;
    OperatorNewSubstitute::allowedBefore = 0;
    return refused;
}

TEST(MediaOutOfMemory, makes_no_handle) {
    media_device* last = nullptr;
    int made = 0;
    const int refused = refusals([&] {
        last = media_device_new(node);
        made += last != nullptr ? 1 : 0;
        media_device_unref(last);
    });
    EXPECT_EQ(refused, 2);  // the path and the handle
    EXPECT_EQ(made, 1);
}

TEST(MediaOutOfMemory, ends_an_enumeration_that_can_be_tried_again) {
    const std::unique_ptr<media_device, UnrefDevice> media(media_device_new(node));
    int result = 0;
    int ended = 0;
    const int refused = refusals([&] {
        result = media_device_enumerate(media.get());
        ended += result == -ENOMEM && media_get_entities_count(media.get()) == 0 ? 1 : 0;
    });
    EXPECT_GT(refused, 3);
    EXPECT_EQ(ended, refused);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(media_get_entities_count(media.get()), 1U);
}

}  // namespace
}  // namespace ZR::test
