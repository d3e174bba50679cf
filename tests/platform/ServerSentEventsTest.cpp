#include "platform/ServerSentEvents.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ombrel {
namespace {

std::vector<std::string> eventsOf(std::string_view stream, std::size_t pieceLength) {
    ServerSentEvents events;
    std::vector<std::string> found;
    for (std::size_t i = 0; i < stream.size(); i += pieceLength) {
        events.take(stream.substr(i, pieceLength), [&](const std::string& data) {
            found.push_back(data);
            return true;
        });
    }
    return found;
}

TEST(ServerSentEvents, GivesTheSameEventsHoweverTheyAreCut) {
    const std::string stream = ": ping\n\ndata: {\"a\":\"h\xC3\xA9\"}\n\ndata:two\ndata:  lines\n\n"
                               "event: note\nid: 7\ndata: third\r\n\r\ndata: fourth\r\rdata: \n\n";
    const std::vector<std::string> expected = {"{\"a\":\"h\xC3\xA9\"}", "two\n lines", "third",
                                               "fourth", ""};
    for (std::size_t length = 1; length <= stream.size(); length++) {
        EXPECT_EQ(eventsOf(stream, length), expected) << length;
    }
}

TEST(ServerSentEvents, KeepsAnUnfinishedEventForItsRest) {
    ServerSentEvents events;
    const auto fail = [](const std::string&) {
        ADD_FAILURE();
        return true;
    };
    events.take("data: {\"half", fail);
    EXPECT_EQ(events.rest(), "{\"half");
    EXPECT_EQ(events.rest(), "");
    events.take("data: whole\n", fail);
    EXPECT_EQ(events.rest(), "whole");
}

TEST(ServerSentEvents, StopsWhenTheReceiverHasEnough) {
    ServerSentEvents events;
    int count = 0;
    events.take("data: 1\n\ndata: 2\n\n", [&](const std::string&) {
        count++;
        return false;
    });
    EXPECT_EQ(count, 1);
}

} // namespace
} // namespace ombrel
