#include "tools/zrctl/media_graph.h"

#include <gtest/gtest.h>

#include "tests/tools/camera_graph.h"

namespace ZR::test {
namespace {

using zrctl::MediaGraph;
using zrctl::PadPlace;

constexpr std::size_t many = 1000;

/// Entities with a sink pad 0 and a source pad 1 each, without links.
MediaGraph chainable(std::size_t count) {
    MediaGraph graph{};
    graph.entities.assign(count, {0, "", 0, zrctl::MediaNode::None, "", {{0, true}, {1, false}}});
    return graph;
}

void link(MediaGraph& graph, std::size_t from, std::size_t to) {
    graph.links.push_back({{from, 1}, {to, 0}, true});
}

TEST(MediaGraph_pure, a_path_leads_from_the_decoder_to_the_capture_node) {
    const auto paths = zrctl::enabledPaths(cameraGraph(), many);
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(paths[0], (zrctl::MediaPath{{1, 0}, {3, 1}, {3, 2}, {4, 0}, {4, 1}, {0, 0}}));
}

TEST(MediaGraph_pure, links_that_are_off_make_no_path) {
    MediaGraph graph = cameraGraph();
    for (zrctl::MediaLink& each : graph.links)
        each.isEnabled = false;
    EXPECT_TRUE(zrctl::enabledPaths(graph, many).empty());
}

TEST(MediaGraph_pure, a_path_that_is_enabled_in_part_begins_where_it_is) {
    MediaGraph graph = cameraGraph();
    graph.links[0].isEnabled = false;
    const auto paths = zrctl::enabledPaths(graph, many);
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(paths[0].front(), (PadPlace{3, 2}));
}

TEST(MediaGraph_pure, a_fork_gives_two_paths) {
    MediaGraph graph = chainable(4);
    link(graph, 0, 1);
    link(graph, 1, 2);
    link(graph, 1, 3);
    const auto paths = zrctl::enabledPaths(graph, many);
    ASSERT_EQ(paths.size(), 2U);
    EXPECT_EQ(paths[0].back(), (PadPlace{2, 0}));
    EXPECT_EQ(paths[1].back(), (PadPlace{3, 0}));
}

TEST(MediaGraph_pure, a_ring_ends_where_it_would_begin_again) {
    MediaGraph graph = chainable(3);
    link(graph, 0, 1);
    link(graph, 1, 2);
    link(graph, 2, 1);
    const auto paths = zrctl::enabledPaths(graph, many);
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(paths[0].back(), (PadPlace{2, 0}));
}

TEST(MediaGraph_pure, the_search_ends_with_the_given_number_of_paths) {
    // Two ways at each of 40 steps are more than anybody can wait for.
    MediaGraph graph = chainable(41);
    for (std::size_t entity = 0; entity < 40; ++entity) {
        link(graph, entity, entity + 1);
        link(graph, entity, entity + 1);
    }
    EXPECT_EQ(zrctl::enabledPaths(graph, 32).size(), 32U);
}

TEST(MediaGraph_pure, an_entity_is_on_an_enabled_link_at_either_end) {
    const MediaGraph graph = cameraGraph();
    EXPECT_TRUE(zrctl::isOnEnabledLink(graph, 0));
    EXPECT_TRUE(zrctl::isOnEnabledLink(graph, 1));
    EXPECT_FALSE(zrctl::isOnEnabledLink(graph, 2));
}

}  // namespace
}  // namespace ZR::test
