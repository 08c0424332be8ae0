#include "toolkit/CommandLine.h"

namespace orva::toolkit {

namespace {

bool IsSpace(char character) {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

const char* SkipSpace(const char* at) {
    while (IsSpace(*at)) {
        ++at;
    }
    return at;
}

/// Reads the argument that begins at `at`, into `argument` unless that is null.
///
/// \return where the reading stopped
const char* ReadArgument(const char* at, std::string* argument) {
    bool quoted = false;
    while (*at != '\0' && (quoted || !IsSpace(*at))) {
        if (at[0] == '"' && at[1] == '"') {
            at += 2;
        } else if (*at == '"') {
            quoted = !quoted;
            ++at;
        } else {
            if (argument != nullptr && argument->size() < kLongestArgument) {
                argument->push_back(*at);
            }
            ++at;
        }
    }
    return at;
}

} // namespace

int CountArguments(const char* line) {
    int count = 0;
    if (line != nullptr) {
        for (const char* at = SkipSpace(line); *at != '\0'; at = SkipSpace(ReadArgument(at, nullptr))) {
            ++count;
        }
    }
    return count;
}

std::string ArgumentOf(const char* line, int index) {
    std::string argument;
    if (line == nullptr || index < 0) {
        return argument;
    }
    const char* at = SkipSpace(line);
    for (int skipped = 0; skipped < index && *at != '\0'; ++skipped) {
        at = SkipSpace(ReadArgument(at, nullptr));
    }
    ReadArgument(at, &argument);
    return argument;
}

} // namespace orva::toolkit
