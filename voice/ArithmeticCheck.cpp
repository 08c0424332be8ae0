#include "voice/ArithmeticCheck.h"

#ifdef ORVA_CHECKED_ARITHMETIC

namespace orva::voice {

namespace {

thread_local ArithmeticOverflow firstOverflow{nullptr, nullptr, 0, 0};

} // namespace

const ArithmeticOverflow& FirstArithmeticOverflow() {
    return firstOverflow;
}

void ClearArithmeticOverflow() {
    firstOverflow = {nullptr, nullptr, 0, 0};
}

void ReportArithmeticOverflow(const char* operation, std::int64_t value, SourcePlace place) {
    if (firstOverflow.operation == nullptr) {
        firstOverflow = {operation, place.file, place.line, value};
    }
}

} // namespace orva::voice

#endif
