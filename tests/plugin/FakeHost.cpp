#include "tests/plugin/FakeHost.h"

#include <algorithm>
#include <iterator>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

FakeHost* host = nullptr;

} // namespace

FakeHost::FakeHost() {
    EXPECT_EQ(host, nullptr);
    host = this;
}

FakeHost::~FakeHost() {
    host = nullptr;
}

std::uint32_t ORVA_HOST_CALL FakeHost::Receive(plugin::WindowHandle window, std::int32_t code,
                                               std::uint32_t param, std::uint32_t size, void* data) {
    Call call{window, code, param, size, data != nullptr, {}};
    if (host->keeps) {
        if (data != nullptr) {
            const auto* bytes = static_cast<const std::uint8_t*>(data);
            call.bytes.assign(bytes, bytes + size);
        }
        host->calls.push_back(call);
    }
    if (host->onCall) {
        host->onCall(call, data);
    }
    if (code != static_cast<std::int32_t>(plugin::PluginCode::Query)) {
        return host->answer;
    }
    const auto found = host->queries.find(param);
    return found != host->queries.end() ? found->second : plugin::kUnsupported;
}

std::vector<std::int32_t> FakeHost::Codes() const {
    std::vector<std::int32_t> codes;
    std::transform(calls.begin(), calls.end(), std::back_inserter(codes),
                   [](const Call& call) { return call.code; });
    return codes;
}

std::vector<FakeHost::Call> FakeHost::Of(std::int32_t code) const {
    std::vector<Call> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [code](const Call& call) { return call.code == code; });
    return found;
}

} // namespace orva::test
