#include <gtest/gtest.h>

#include <string>

#include "board.h"
#include "events_application.h"
#include "hardware/netlink/zr_netlink.h"
#include "tests/hardware/netlink/dispatcher.h"

// A board whose outputs and analog channels tell of nothing; ZR_QUIET is there besides.

namespace ZR::test {
namespace {

bool isConnected(const std::string& family) {
    return endPointOf(*ZRNetlink::instance(), family)->isConnected();
}

class PartialBoardEvents : public testing::Test {
  protected:
    void TearDown() override {
        turn("notify/ZR_DO/registered", "0");
        turn("zr_di.0/state/value", "0");
    }
};

}  // namespace

TEST_F(PartialBoardEvents, the_board_has_the_families_that_it_was_given) {
    EXPECT_GT(seenByGenl(inputs).id, 0);
    EXPECT_GT(seenByGenl("ZR_QUIET").id, 0);
    EXPECT_EQ("", seenByGenl("ZR_QUIET").groupName);
    EXPECT_EQ(-1, seenByGenl(outputs).id);
    EXPECT_EQ(-1, seenByGenl(analog).id);
}

TEST_F(PartialBoardEvents, what_is_missing_leaves_the_other_family_alone) {
    for (const char* missing : {analog, outputs, "ZR_QUIET"}) {
        EXPECT_EQ(connectionFailureOf(missing), printedByAdding(missing));
        EXPECT_FALSE(isConnected(missing)) << missing;
    }
    Application application({inputs});
    EXPECT_TRUE(isConnected(inputs));
    turn("zr_di.0/state/value", "1");
    EXPECT_EQ((Told{0, 1}), application.next());
    EXPECT_TRUE(restsWhileIdle());
    turn("zr_do.0/state/value", "1");
    turn("zr_do.0/state/value", "0");
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(PartialBoardEvents, a_driver_that_comes_later_is_not_heard_on_an_inert_end_point) {
    printedByAdding(outputs);
    Application application({inputs});
    turn("notify/ZR_DO/registered", "1");
    turn("notify/ZR_DO/flood", "10");
    EXPECT_TRUE(restsWhileIdle());
    EXPECT_FALSE(isConnected(outputs));
    EXPECT_EQ(Tale{}, application.heard());
}

TEST_F(PartialBoardEvents, a_driver_that_comes_before_its_family_is_added_is_heard) {
    turn("notify/ZR_DO/registered", "1");
    Application application({inputs, outputs});
    turn("zr_do.0/state/value", "1");
    EXPECT_EQ((Told{16, 1}), application.next());
    turn("zr_do.0/state/value", "0");
    EXPECT_EQ((Told{16, 0}), application.next());
}

TEST_F(PartialBoardEvents, a_family_without_events_of_its_own_can_be_added) {
    Application application({inputs});
    ZRNetlink& dispatcher = *ZRNetlink::instance();
    EXPECT_EQ(0U, dispatcher.addFamily("nlctrl"));
    EXPECT_TRUE(isConnected("nlctrl"));
    dispatcher.onEndPointReadable(endPointOf(dispatcher, "nlctrl"), nullptr);
    EXPECT_EQ(Tale{}, application.heard());
}

}  // namespace ZR::test
