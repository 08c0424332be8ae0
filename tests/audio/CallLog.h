/// What was called, in order.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace orva::test {

/// Calls of all devices of a test, by name, arguments behind it where they matter.
struct CallLog {
    std::vector<std::string> calls;

    void Add(const std::string& call) { calls.push_back(call); }
    void Clear() { calls.clear(); }
    [[nodiscard]] long Count(const std::string& call) const {
        return static_cast<long>(std::count(calls.begin(), calls.end(), call));
    }
};

} // namespace orva::test
