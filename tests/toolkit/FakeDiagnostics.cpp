#include "tests/toolkit/FakeDiagnostics.h"

namespace orva::test {
namespace {

FakeDiagnostics* current = nullptr;

} // namespace

FakeDiagnostics::FakeDiagnostics() : before(toolkit::Diagnostics()) {
    current = this;
    toolkit::Diagnostics().output = [](const char* line) { current->lines.emplace_back(line); };
    toolkit::Diagnostics().ticks = [] { return current->ticks; };
    toolkit::Diagnostics().ticksPerSecond = [] { return current->ticksPerSecond; };
}

FakeDiagnostics::~FakeDiagnostics() {
    toolkit::Diagnostics() = before;
    current = nullptr;
}

std::vector<std::string> FakeDiagnostics::Texts() const {
    std::vector<std::string> texts;
    for (const std::string& line : lines) {
        texts.push_back(line.substr(line.rfind('\t') + 1));
    }
    return texts;
}

} // namespace orva::test
