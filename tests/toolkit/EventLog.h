/// A list of what happened, for tests of order.
#pragma once

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace orva::toolkit {

/// Notes calls as "name.call(arguments)", of all calls or of those that it was told to watch.
class EventLog {
public:
    using Entries = std::vector<std::string>;

    EventLog() = default;
    explicit EventLog(std::set<std::string> watchedCalls) : watched(std::move(watchedCalls)) {}

    template <typename... Arguments>
    void Note(const std::string& name, const std::string& call, const Arguments&... arguments) {
        if (!watched.empty() && watched.count(call) == 0) {
            return;
        }
        std::ostringstream entry;
        entry << name << '.' << call << '(';
        [[maybe_unused]] const char* separator = "";
        ((entry << separator << arguments, separator = ","), ...);
        entry << ')';
        entries.push_back(entry.str());
    }

    /// The entries so far, which are forgotten.
    Entries Take() {
        Entries taken;
        taken.swap(entries);
        return taken;
    }

private:
    std::set<std::string> watched;
    Entries entries;
};

} // namespace orva::toolkit
