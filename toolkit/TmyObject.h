/// Root class of the toolkit.
#pragma once

#include <cstdint>

namespace orva::toolkit {

/// What every class of the toolkit derives from: it can be deleted through its root, and may trace what it
/// does.
///
/// Every constructor of a toolkit class with an entry in the type registry calls `RegisterType` once its own
/// class is in force.
class TmyObject {
public:
    TmyObject();
    virtual ~TmyObject() = default;
    TmyObject(const TmyObject& other) = default;
    TmyObject& operator=(const TmyObject& other) = default;

    /// Whether `Trace` prints this object's lines: a copy of the switch `TraceLevel()` at construction.
    std::uint32_t traceEnabled;

private:
    [[maybe_unused]] std::uint32_t reserved = 0;
};

} // namespace orva::toolkit
