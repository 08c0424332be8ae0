/// orva-signal: makes P25 calls as a receiver would record them, to try a decoder on.
#include "tools/orva-signal/SignalJob.h"

#include <cstdio>
#include <exception>

int main(int argumentCount, char** arguments) {
    try {
        return orva::tools::RunSignalJob(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orva-signal: %s\n", error.what());
        return orva::tools::kExitFailed;
    }
}
