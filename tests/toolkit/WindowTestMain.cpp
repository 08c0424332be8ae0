/// The window tests, and the scenarios of which they watch the end from outside.

#include "tests/toolkit/WindowSupport.h"
#include "toolkit/Trace.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

std::FILE* debugFile = nullptr; ///< left open: the last lines come when the application's object goes

std::string ValueOf(int count, char** arguments, const std::string& option) {
    for (int index = 1; index < count; ++index) {
        const std::string argument = arguments[index];
        if (argument.rfind(option, 0) == 0) {
            return argument.substr(option.size());
        }
    }
    return "";
}

void SendDebugOutputTo(const std::string& file) {
    debugFile = std::fopen(file.c_str(), "wb");
    Diagnostics().output = [](const char* line) {
        const std::size_t length = std::strlen(line);
        std::fwrite(line, 1, length, debugFile);
        if (length == 0 || line[length - 1] != '\n') {
            std::fputc('\n', debugFile);
        }
        std::fflush(debugFile);
    };
}

int RunScenario(const std::string& scenario) {
    if (scenario == "leak") {
        new TmyComponent(nullptr, "", kPopupHidden, 0, kPlace);
        new TmyComponent(nullptr, "", kPopupHidden, 0, kPlace);
        return 0;
    }
    if (scenario == "memory-map") {
        SetTraceLevel(2);
    }
    const TmyComponent top(nullptr, "", kPopupHidden, 0, kPlace);
    const auto first = std::make_unique<TmyComponent>(nullptr, "", kPopupHidden, 0, kPlace);
    const auto second = std::make_unique<TmyComponent>(nullptr, "", kPopupHidden, 0, kPlace);
    return 0;
}

} // namespace
} // namespace orva::toolkit

int main(int count, char** arguments) {
    using namespace orva::toolkit;
    const std::string scenario = ValueOf(count, arguments, "--scenario=");
    if (!scenario.empty()) {
        SendDebugOutputTo(ValueOf(count, arguments, "--debug-output="));
        return RunScenario(scenario);
    }
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    ::testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
