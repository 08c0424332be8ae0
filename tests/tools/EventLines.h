/// Event files as the tests read them.
#pragma once

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::test {

using Events = std::vector<nlohmann::json>;

/// One object a line; fails the test in hand for any other text.
inline Events ParseEvents(const std::string& lines) {
    Events events;
    std::istringstream text(lines);
    for (std::string line; std::getline(text, line);) {
        nlohmann::json event = nlohmann::json::parse(line, nullptr, false);
        EXPECT_TRUE(event.is_object()) << line;
        events.push_back(std::move(event));
    }
    return events;
}

/// Those events that are called `name`.
inline Events Named(const Events& events, std::string_view name) {
    Events named;
    std::copy_if(events.begin(), events.end(), std::back_inserter(named),
                 [name](const nlohmann::json& event) { return event["event"] == name; });
    return named;
}

/// The events without the summary and without `field`.
inline Events Without(Events events, const char* field) {
    events.erase(std::remove_if(events.begin(), events.end(),
                                [](const nlohmann::json& event) { return event["event"] == "summary"; }),
                 events.end());
    for (nlohmann::json& event : events) {
        event.erase(field);
    }
    return events;
}

} // namespace orva::test
