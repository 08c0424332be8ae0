/// A receiver host for tests.
#pragma once

#include "plugin/HostInterface.h"

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace orva::test {

/// Notes every code that an instance sends, with its data, and answers as the test says. One at a time
/// exists.
class FakeHost {
public:
    FakeHost();
    ~FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    struct Call {
        plugin::WindowHandle window;
        std::int32_t code;
        std::uint32_t param;
        std::uint32_t size;
        bool hasData;
        std::vector<std::uint8_t> bytes; ///< `size` of them if there is data
    };

    [[nodiscard]] static plugin::ZemHostCallback Callback() { return &FakeHost::Receive; }

    // What the test says.

    std::map<std::uint32_t, std::uint32_t> queries; ///< answers to code 16386 by param; others unsupported
    std::uint32_t answer = 0;                       ///< to every other code
    /// While a code is being answered, with the data in place.
    std::function<void(const Call& call, void* data)> onCall;
    bool keeps = true; ///< off for tests that count allocations; `onCall` gets no bytes then

    // What was sent.

    std::vector<Call> calls;

    void Clear() { calls.clear(); }
    [[nodiscard]] std::vector<std::int32_t> Codes() const;
    [[nodiscard]] std::vector<Call> Of(std::int32_t code) const;

private:
    static std::uint32_t ORVA_HOST_CALL Receive(plugin::WindowHandle window, std::int32_t code,
                                                std::uint32_t param, std::uint32_t size, void* data);
};

} // namespace orva::test
