/// orva-host: a bench host that starts a receiver plug-in and shows every code in both directions.
#include "tools/orva-host/BenchHost.h"
#include "tools/orva-host/HostOptions.h"

#include <cstdio>
#include <exception>

int main(int argumentCount, char** arguments) {
    try {
        orva::tools::HostOptions options;
        int exitCode = 0;
        if (!orva::tools::ReadHostOptions(argumentCount, arguments, options, exitCode)) {
            return exitCode;
        }
        return orva::tools::BenchHost(options).Run() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orva-host: %s\n", error.what());
        return 1;
    }
}
