// The controller's answer, without a socket.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hardware/netlink/family_resolution_internal.h"
#include "tests/hardware/netlink/message.h"

namespace ZR::test {
namespace {

using namespace std::string_view_literals;

constexpr int controller = 0x10;
constexpr int idType = 1;
constexpr int nameType = 2;
constexpr int groupsType = 7;
constexpr int groupNameType = 1;
constexpr int groupIdType = 2;

struct Answer {
    int familyId;
    std::string groupName;
    int groupId;
};

bool operator==(const Answer& left, const Answer& right) {
    return left.familyId == right.familyId && left.groupName == right.groupName &&
           left.groupId == right.groupId;
}

std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
    return stream << answer.familyId << " \"" << answer.groupName << "\" " << answer.groupId;
}

/// What an answer that is refused leaves behind.
const Answer refused{-1, "before", -2};

Answer parse(const std::string& bytes, std::int64_t count) {
    char groupName[MessageBuffer::size] = "before";
    Answer answer{0, {}, -2};
    answer.familyId = parseFamilyReply(received(bytes), count, groupName, &answer.groupId);
    answer.groupName = groupName;
    return answer;
}

Answer parse(const std::string& bytes) {
    return parse(bytes, static_cast<std::int64_t>(bytes.size()));
}

std::string group(std::string_view parts) {
    return attribute(1, parts);
}

const std::string goodGroup =
    group(attribute(groupIdType, 9U) + attribute(groupNameType, "events\0"sv));

/// The five attributes in front of the operations and groups.
std::string head(const std::string& id = attribute(idType, bytesOf(std::uint16_t{0x1A}))) {
    return attribute(nameType, "ZR_DI\0"sv) + id + attribute(3, 1U) + attribute(4, 0U) +
           attribute(5, 3U);
}

std::string reply(std::string_view attributes) {
    return message(controller, attributes);
}

std::string replyWithGroups(std::string_view groups) {
    return reply(head() + attribute(groupsType, groups));
}

TEST(FamilyReply_pure, gives_family_group_and_name) {
    EXPECT_EQ(parse(replyWithGroups(goodGroup)), (Answer{0x1A, "events", 9}));
}

TEST(FamilyReply_pure, groups_may_come_after_the_operations_and_later) {
    const std::string groups = attribute(groupsType, goodGroup);
    EXPECT_EQ(parse(reply(head() + attribute(6, 1U) + groups)), (Answer{0x1A, "events", 9}));
    EXPECT_EQ(parse(reply(head() + attribute(6, 1U) + attribute(8, 1U) + groups)),
              (Answer{0x1A, "events", 9}));
}

TEST(FamilyReply_pure, groups_in_front_of_index_5_are_not_looked_at) {
    const std::string early = attribute(nameType, "ZR_DI\0"sv) +
                              attribute(idType, bytesOf(std::uint16_t{0x1A})) + attribute(3, 1U) +
                              attribute(4, 0U) + attribute(groupsType, goodGroup);
    EXPECT_EQ(parse(reply(early)), refused);
    const std::string later = attribute(
        groupsType, group(attribute(groupIdType, 5U) + attribute(groupNameType, "later")));
    EXPECT_EQ(parse(reply(early + later)), (Answer{0x1A, "later", 5}));
}

TEST(FamilyReply_pure, the_first_groups_attribute_from_index_5_on_counts) {
    const std::string second = attribute(
        groupsType, group(attribute(groupIdType, 5U) + attribute(groupNameType, "second")));
    EXPECT_EQ(parse(reply(head() + attribute(groupsType, goodGroup) + second)),
              (Answer{0x1A, "events", 9}));
}

TEST(FamilyReply_pure, without_groups_there_is_no_family) {
    EXPECT_EQ(parse(reply(head())), refused);
    EXPECT_EQ(parse(reply(head() + attribute(6, 1U))), refused);
    EXPECT_EQ(parse(reply("")), refused);
}

TEST(FamilyReply_pure, the_id_is_0_when_it_is_not_at_index_1) {
    EXPECT_EQ(parse(reply(head(attribute(9, bytesOf(std::uint16_t{0x1A}))) +
                          attribute(groupsType, goodGroup))),
              (Answer{0, "events", 9}));
    const std::string idFirst =
        attribute(idType, bytesOf(std::uint16_t{0x1A})) + attribute(nameType, "ZR_DI\0"sv) +
        attribute(3, 1U) + attribute(4, 0U) + attribute(5, 3U) + attribute(groupsType, goodGroup);
    EXPECT_EQ(parse(reply(idFirst)), (Answer{0, "events", 9}));
}

TEST(FamilyReply_pure, an_id_is_read_from_two_bytes_and_more) {
    const auto withId = [](std::string_view payload) {
        return parse(reply(head(attribute(idType, payload)) + attribute(groupsType, goodGroup)));
    };
    EXPECT_EQ(withId("\x1A"sv).familyId, 0);
    EXPECT_EQ(withId(""sv).familyId, 0);
    EXPECT_EQ(withId("\xFF\xFF"sv).familyId, 0xFFFF);
    EXPECT_EQ(withId("\x1A\0\1\1"sv).familyId, 0x1A);
}

TEST(FamilyReply_pure, types_are_compared_as_they_come_with_their_flags) {
    constexpr int nested = NLA_F_NESTED;
    EXPECT_EQ(parse(reply(head() + attribute(groupsType | nested, goodGroup))), refused);
    EXPECT_EQ(parse(reply(head(attribute(idType | NLA_F_NET_BYTEORDER, "\x1A\0"sv)) +
                          attribute(groupsType, goodGroup))),
              (Answer{0, "events", 9}));
    EXPECT_EQ(parse(replyWithGroups(
                  group(attribute(groupIdType | nested, 9U) + attribute(groupNameType, "events")))),
              refused);
    EXPECT_EQ(parse(replyWithGroups(
                  group(attribute(groupIdType, 9U) + attribute(groupNameType | nested, "events")))),
              refused);
}

TEST(FamilyReply_pure, only_the_first_group_counts_whatever_its_type) {
    const std::string other =
        attribute(2, attribute(groupIdType, 5U) + attribute(groupNameType, "other"));
    EXPECT_EQ(parse(replyWithGroups(goodGroup + other)), (Answer{0x1A, "events", 9}));
    EXPECT_EQ(parse(replyWithGroups(other + goodGroup)), (Answer{0x1A, "other", 5}));
    EXPECT_EQ(parse(replyWithGroups(group("") + goodGroup)), refused);
}

TEST(FamilyReply_pure, a_group_needs_its_number_first_and_its_name_second) {
    const std::string id = attribute(groupIdType, 9U);
    const std::string name = attribute(groupNameType, "events\0"sv);
    EXPECT_EQ(parse(replyWithGroups(group(name + id))), refused);
    EXPECT_EQ(parse(replyWithGroups(group(id))), refused);
    EXPECT_EQ(parse(replyWithGroups(group(name))), refused);
    EXPECT_EQ(parse(replyWithGroups(group(id + id + name))), refused);
    EXPECT_EQ(parse(replyWithGroups(group(id + attribute(3, 1U) + name))), refused);
    EXPECT_EQ(parse(replyWithGroups(group(id + name + attribute(3, 1U)))),
              (Answer{0x1A, "events", 9}));
    EXPECT_EQ(parse(replyWithGroups(group(""))), refused);
    EXPECT_EQ(parse(replyWithGroups("")), refused);
}

TEST(FamilyReply_pure, a_group_number_needs_four_bytes) {
    const std::string name = attribute(groupNameType, "events");
    EXPECT_EQ(parse(replyWithGroups(group(attribute(groupIdType, "\1\2\3"sv) + name))), refused);
    EXPECT_EQ(parse(replyWithGroups(group(attribute(groupIdType, "\1\2\0\0\5"sv) + name))),
              (Answer{0x1A, "events", 0x201}));
}

TEST(FamilyReply_pure, a_group_name_ends_at_its_first_nul_or_with_its_payload) {
    const auto named = [](std::string_view name) {
        return parse(replyWithGroups(
                         group(attribute(groupIdType, 9U) + attribute(groupNameType, name))))
            .groupName;
    };
    EXPECT_EQ(named("events"sv), "events");
    EXPECT_EQ(named("eve\0nts\0"sv), "eve");
    EXPECT_EQ(named(""sv), "");
    EXPECT_EQ(named("\0"sv), "");
    EXPECT_EQ(named(std::string(100, 'x')), std::string(100, 'x'));
}

TEST(FamilyReply_pure, nothing_is_stored_behind_the_nul_of_a_group_name) {
    const std::string bytes = replyWithGroups(
        group(attribute(groupIdType, 9U) + attribute(groupNameType, "eve\0nts\0"sv)));
    char groupName[] = "----------";
    int groupId = 0;
    EXPECT_EQ(parseFamilyReply(received(bytes), static_cast<std::int64_t>(bytes.size()), groupName,
                               &groupId),
              0x1A);
    EXPECT_EQ(std::string_view(groupName, sizeof groupName), "eve\0------\0"sv);
}

TEST(FamilyReply_pure, nested_attributes_that_leave_their_nest_are_refused) {
    const std::string id = attribute(groupIdType, 9U);
    for (const std::string& groups :
         {attributeHeader(40, 1) + id, attributeHeader(0, 1) + id, attributeHeader(3, 1) + id,
          std::string("ab"), group(attributeHeader(9, groupIdType) + "1234"),
          group(attributeHeader(0, groupIdType) + "1234"), group("abc"),
          group(id + attributeHeader(12, groupNameType) + "1234"),
          group(id + attributeHeader(3, groupNameType)), group(id + "x")})
        EXPECT_EQ(parse(replyWithGroups(groups)), refused) << groups;
}

TEST(FamilyReply_pure, an_attribute_that_leaves_the_message_is_refused) {
    const std::string good = head() + attribute(groupsType, goodGroup);
    EXPECT_EQ(parse(reply(head() + attributeHeader(200, groupsType) + goodGroup)), refused);
    EXPECT_EQ(parse(reply(good + "x")), refused);
    EXPECT_EQ(parse(reply(good + attributeHeader(3, 8))), refused);
    EXPECT_EQ(parse(reply(good + attributeHeader(0, 8))), refused);
}

TEST(FamilyReply_pure, an_error_is_no_answer) {
    EXPECT_EQ(parse(message(NLMSG_ERROR, head() + attribute(groupsType, goodGroup))), refused);
}

TEST(FamilyReply_pure, the_type_of_an_answer_is_not_looked_at_otherwise) {
    EXPECT_EQ(parse(message(0x11, head() + attribute(groupsType, goodGroup))),
              (Answer{0x1A, "events", 9}));
}

TEST(FamilyReply_pure, another_command_is_no_answer) {
    for (const int command : {0, 2, 3, 7, 255})
        EXPECT_EQ(parse(message(controller, head() + attribute(groupsType, goodGroup), command)),
                  refused)
            << command;
}

TEST(FamilyReply_pure, a_message_that_did_not_come_whole_is_no_answer) {
    const std::string good = replyWithGroups(goodGroup);
    const auto size = static_cast<std::int64_t>(good.size());
    EXPECT_EQ(parse(good, size).familyId, 0x1A);
    EXPECT_EQ(parse(good, size + 1).familyId, 0x1A);
    for (const std::int64_t count : {size - 1, std::int64_t{20}, std::int64_t{16}, std::int64_t{15},
                                     std::int64_t{1}, std::int64_t{0}, std::int64_t{-1}})
        EXPECT_EQ(parse(good, count), refused) << count;
}

TEST(FamilyReply_pure, a_length_field_below_the_headers_is_refused) {
    const std::string good = replyWithGroups(goodGroup);
    for (const std::uint32_t length : {0U, 8U, 15U, 16U, 19U, 20U})
        EXPECT_EQ(parse(withLength(good, length)), refused) << length;
}

TEST(FamilyReply_pure, a_length_field_beyond_what_came_is_refused) {
    const std::string good = replyWithGroups(goodGroup);
    for (const std::uint32_t length :
         {static_cast<std::uint32_t>(good.size() + 1), 277U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(parse(withLength(good, length)), refused) << length;
}

TEST(FamilyReply_pure, an_answer_may_fill_the_buffer_and_not_one_byte_more) {
    const std::string front = head() + attribute(groupsType, goodGroup);
    const std::size_t room = MessageBuffer::size - 20 - front.size() - 4;
    const std::string full = reply(front + attribute(8, std::string(room, 'x')));
    ASSERT_EQ(full.size(), MessageBuffer::size);
    EXPECT_EQ(parse(full), (Answer{0x1A, "events", 9}));
    EXPECT_EQ(parse(withLength(full, 277)), refused);
}

}  // namespace
}  // namespace ZR::test
