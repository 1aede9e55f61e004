#include "platform/media_controller/pad_text_internal.h"

#include <gtest/gtest.h>

namespace ZR::media_controller {
namespace {

media_entity entity(unsigned int id, const std::string& name, std::size_t pads) {
    media_entity made;
    made.info.id = id;
    made.name = name;
    made.pads.resize(pads);
    return made;
}

class MediaPadText_pure : public testing::Test {
  protected:
    MediaPadText_pure() {
        media_.entities.push_back(entity(1, "tw9912 1-0044", 1));
        media_.entities.push_back(entity(5, "mux", 6));
        media_.entities.push_back(entity(9, "", 1));
        media_link_desc link{};
        link.source = {1, 0, MEDIA_PAD_FL_SOURCE, {}};
        link.sink = {5, 4, MEDIA_PAD_FL_SINK, {}};
        media_.entities[0].links.push_back(link);
    }

    /// "entity:pad" of what was taken, or "none", and what is left of the text.
    std::string pad(const char* text) {
        Text cursor(text);
        const Pad taken = takePad(media_, cursor);
        const std::string name =
            taken ? std::to_string(taken.entity->info.id) + ':' + std::to_string(taken.index)
                  : "none";
        return name + " left \"" + cursor.position() + '"';
    }

    bool hasLink(const char* text) {
        Text cursor(text);
        return takeLink(media_, cursor) == media_.entities[0].links.data();
    }

    media_device media_{"/dev/media0"};
};

TEST_F(MediaPadText_pure, takes_a_name_in_either_quotes) {
    EXPECT_EQ(pad("'tw9912 1-0044':0 ->"), "1:0 left \"->\"");
    EXPECT_EQ(pad("\"mux\":4["), "5:4 left \"[\"");
    EXPECT_EQ(pad("'mux\":4"), "5:4 left \"\"");
    EXPECT_EQ(pad("'':0"), "9:0 left \"\"");
}

TEST_F(MediaPadText_pure, takes_a_number_of_an_entity) {
    EXPECT_EQ(pad("5:2"), "5:2 left \"\"");
    EXPECT_EQ(pad("05:2"), "5:2 left \"\"");
}

TEST_F(MediaPadText_pure, takes_the_entity_behind_a_number_with_the_kernels_mark) {
    EXPECT_EQ(pad("2147483648:0"), "1:0 left \"\"");
    EXPECT_EQ(pad("2147483649:0"), "5:0 left \"\"");
    EXPECT_EQ(pad("2147483657:0"), "none left \"2147483657:0\"");
}

TEST_F(MediaPadText_pure, takes_blanks_around_each_part) {
    EXPECT_EQ(pad(" \t'mux' : 3  x"), "5:3 left \"x\"");
    EXPECT_EQ(pad(" 5 :\n3 "), "5:3 left \"\"");
}

TEST_F(MediaPadText_pure, a_pad_without_a_number_is_pad_0) {
    EXPECT_EQ(pad("5:"), "5:0 left \"\"");
    EXPECT_EQ(pad("5:x"), "5:0 left \"x\"");
}

TEST_F(MediaPadText_pure, stops_where_it_cannot_go_on) {
    EXPECT_EQ(pad("'mux"), "none left \"\"");
    EXPECT_EQ(pad("'nope':0"), "none left \"nope':0\"");
    EXPECT_EQ(pad("'mux ':0"), "none left \"mux ':0\"");
    EXPECT_EQ(pad(" 2:0"), "none left \"2:0\"");
    EXPECT_EQ(pad("mux:0"), "none left \"mux:0\"");
    EXPECT_EQ(pad("'mux' x:0"), "none left \"x:0\"");
    EXPECT_EQ(pad("5 "), "none left \"\"");
    EXPECT_EQ(pad("'mux': 6 "), "none left \"6 \"");
    EXPECT_EQ(pad("5:4294967295"), "none left \"4294967295\"");
    EXPECT_EQ(pad(""), "none left \"\"");
}

TEST_F(MediaPadText_pure, of_two_entities_with_one_name_the_first_is_meant) {
    media_.entities.push_back(entity(12, "mux", 9));
    EXPECT_EQ(pad("'mux':1"), "5:1 left \"\"");
    EXPECT_EQ(pad("'mux':8"), "none left \"8\"");
}

TEST_F(MediaPadText_pure, finds_a_link_with_any_blanks_around_its_arrow) {
    EXPECT_TRUE(hasLink("'tw9912 1-0044':0 -> 'mux':4[1]"));
    EXPECT_TRUE(hasLink("1:0->5:4"));
    EXPECT_TRUE(hasLink(" 1 : 0\t->\n 5 : 4 "));
}

TEST_F(MediaPadText_pure, finds_no_link_between_pads_that_are_not_linked_this_way) {
    EXPECT_FALSE(hasLink("1:0->5:3[1]"));
    EXPECT_FALSE(hasLink("5:4->1:0[1]"));
    EXPECT_FALSE(hasLink("1:0->9:0[1]"));
    EXPECT_FALSE(hasLink("1:0 => 5:4[1]"));
    EXPECT_FALSE(hasLink("1:0 - > 5:4[1]"));
    EXPECT_FALSE(hasLink("1:0 ->"));
}

TEST(MediaLinkFlags_pure, are_a_decimal_number_in_brackets) {
    unsigned int flags = 7;
    Text text(" [ 1 ] ,");
    EXPECT_TRUE(takeLinkFlags(text, flags));
    EXPECT_EQ(flags, 1U);
    EXPECT_STREQ(text.position(), ",");
    Text none("[]");
    EXPECT_TRUE(takeLinkFlags(none, flags));
    EXPECT_EQ(flags, 0U);
}

TEST(MediaLinkFlags_pure, are_refused_without_their_brackets) {
    unsigned int flags = 0;
    for (const char* const bad : {"", "1]", "[1", "[0x1]", "[1,2]", "[1 2]", "(1)"}) {
        Text text(bad);
        EXPECT_FALSE(takeLinkFlags(text, flags)) << bad;
    }
}

}  // namespace
}  // namespace ZR::media_controller
